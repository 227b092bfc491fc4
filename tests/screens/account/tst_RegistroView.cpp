#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QInputMethodEvent>
#include <QTest>

using namespace Qt::StringLiterals;

class RegistroViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { ServiceTest::init(); }
    void cleanup() { ServiceTest::cleanup(); }

    void startsEmptyWithTheDesignedElements();
    void missingFieldIsNamedBeforeThePassword_data();
    void missingFieldIsNamedBeforeThePassword();
    void passwordMustFollowTheRule_data();
    void passwordMustFollowTheRule();
    void shortPasswordIsEnough();
    void requestIsWrittenToTheByte();
    void blanksAroundAreNotSent_data();
    void blanksAroundAreNotSent();
    void formOfTheEmailIsNotChecked();
    void outcomeOfRegistering_data();
    void outcomeOfRegistering();
    void successWritesTheSessionInOrder();
    void successWithoutANumberStays_data();
    void successWithoutANumberStays();
    void successWithoutANameStoresTheTypedOne_data();
    void successWithoutANameStoresTheTypedOne();
    void storedValuesAreThoseThatWereSent();
    void messageStaysUntilTheNextOne();
    void everyPressSendsOneMoreRequest();
    void lateReplyStillSignsIn();
    void unfinishedTextIsSent();
    void returnInAFieldSendsNothing();
    void goingBackDiscardsWhatWasTyped();
    void messageIsAnnounced();
    void everythingIsReadInOrder();
    void nothingIsCut_data();
    void nothingIsCut();

private:
    static QByteArray registro() { return "RegistroView { objectName: 'registro' }"; }
    static QString msg(TestScreen &screen) { return screen.find(u"msg"_s)->property("text").toString(); }
    static const QStringList &fields()
    {
        static const QStringList all{u"nom"_s, u"email"_s, u"direccion"_s, u"ciudad"_s, u"pass"_s};
        return all;
    }
    /// A text as the input method hands it over, whatever it holds.
    static void commit(TestScreen &screen, const QString &name, const QString &text)
    {
        QQuickItem *const field = screen.find(name);
        screen.type(field, QString());
        QInputMethodEvent event;
        event.setCommitString(text);
        QCoreApplication::sendEvent(field, &event);
        QCOMPARE(field->property("text").toString(), text);
    }
    static const QStringList &typed()
    {
        static const QStringList all{u"Ana"_s, u"ana@x"_s, u"Calle 5"_s, u"Colón"_s, u"Clave.1"_s};
        return all;
    }
    static void fill(TestScreen &screen)
    {
        for (qsizetype i = 0; i < fields().size(); ++i)
            commit(screen, fields()[i], typed()[i]);
    }
    static QStringList inFields(TestScreen &screen)
    {
        QStringList all;
        for (const QString &name : fields())
            all.append(screen.find(name)->property("text").toString());
        return all;
    }
    static void press(TestScreen &screen) { screen.tap(screen.find(u"registrar"_s)); }
    /// Fails unless nothing has been sent: what is sent now is the first that comes.
    void verifyNothingWasSent(TestScreen &screen) const
    {
        fill(screen);
        commit(screen, u"nom"_s, u"Primera"_s);
        press(screen);
        QTRY_VERIFY(!server.requests().isEmpty());
        QCOMPARE(sent("/api_registro.php").first().value("nombre"_L1).toString(), u"Primera"_s);
    }
};

static const QString missing = u"Por favor completa todos los campos"_s;
static const QString weak = u"La contraseña debe incluir al menos una mayúscula y un carácter especial"_s;
static const QString failure = u"Error al registrar"_s;

void RegistroViewTest::startsEmptyWithTheDesignedElements()
{
    Session::instance().setUserNombre(u"Otra"_s);
    Session::instance().setUserEmail(u"otra@x"_s);
    TestScreen screen(registro());
    const QStringList shown{
        u"Crear Cuenta"_s, u"Nombre Completo"_s, u"Correo Electrónico"_s, u"Dirección de Domicilio"_s,
        u"Ciudad"_s,       u"Contraseña"_s,      u"Registrarme"_s};
    QCOMPARE(screen.texts(), shown);
    for (const QString &name : fields()) {
        QCOMPARE(screen.find(name)->property("text").toString(), QString());
        if (name != u"pass"_s)
            QVERIFY(!screen.find(name)->property("isDecimal").toBool());
    }
    QCOMPARE(screen.root()->property("title").toString(), QString());
    QVERIFY(!screen.root()->property("barHidden").toBool());
    QVERIFY(!screen.find(u"msg"_s)->isVisible());
    QVERIFY(server.requests().isEmpty());
}

void RegistroViewTest::missingFieldIsNamedBeforeThePassword_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    for (const QString &name : fields()) {
        QTest::addRow("%s empty", qPrintable(name)) << name << QString();
        QTest::addRow("%s blank", qPrintable(name)) << name << u" \u00A0\u2003 "_s;
    }
}

void RegistroViewTest::missingFieldIsNamedBeforeThePassword()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    TestScreen screen(registro());
    fill(screen);
    commit(screen, u"pass"_s, u"corta"_s); // breaks the rule too
    commit(screen, field, text);
    press(screen);
    QCOMPARE(msg(screen), missing);
    verifyNothingWasSent(screen);
}

void RegistroViewTest::passwordMustFollowTheRule_data()
{
    QTest::addColumn<QString>("password");
    QTest::newRow("no capital") << u"clave.1"_s;
    QTest::newRow("no special") << u"Clave1"_s;
    QTest::newRow("accented capital") << u"ÑÉ.clave"_s;
    QTest::newRow("accented small letter") << u"Claveñ"_s;
    QTest::newRow("special only outside") << u" Clave "_s;
}

void RegistroViewTest::passwordMustFollowTheRule()
{
    QFETCH(QString, password);
    TestScreen screen(registro());
    fill(screen);
    commit(screen, u"pass"_s, password);
    press(screen);
    QCOMPARE(msg(screen), weak);
    QCOMPARE(screen.find(u"pass"_s)->property("text").toString(), password);
    verifyNothingWasSent(screen);
}

void RegistroViewTest::shortPasswordIsEnough()
{
    TestScreen screen(registro());
    fill(screen);
    for (const QString &password : {u"A."_s, u"A_"_s}) {
        commit(screen, u"pass"_s, password);
        press(screen);
        QTRY_VERIFY(!sent("/api_registro.php").isEmpty() &&
                    sent("/api_registro.php").last().value("password"_L1).toString() == password);
    }
}

void RegistroViewTest::requestIsWrittenToTheByte()
{
    server.hold("/api_registro.php");
    TestScreen screen(registro());
    screen.type(screen.find(u"nom"_s), uR"( Ana "Lu" Ñ )"_s);
    screen.type(screen.find(u"email"_s), u"ana@x/y"_s);
    screen.type(screen.find(u"direccion"_s), uR"(Calle\5  #2)"_s);
    screen.type(screen.find(u"ciudad"_s), u"Colón"_s);
    screen.type(screen.find(u"pass"_s), u"Clave 1"_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().path, "/api_registro.php");
    QCOMPARE(server.requests().first().header("Content-Type"), "application/json");
    QCOMPARE(server.requests().first().body, R"({"nombre":"Ana \"Lu\" Ñ","email":"ana@x\/y","password":"Clave 1",)"
                                             R"("direccion":"Calle\\5  #2","ciudad":"Colón"})");
    QCOMPARE(msg(screen), QString());
    QVERIFY(screen.find(u"registrar"_s)->isEnabled());
}

void RegistroViewTest::blanksAroundAreNotSent_data()
{
    QTest::addColumn<QString>("blank");
    QTest::addColumn<bool>("trimmed");
    const auto add = [](const char *name, char16_t blank, bool trimmed) {
        QTest::newRow(name) << QString(QChar(blank)) << trimmed;
    };
    add("blank", u' ', true);
    add("tab", u'\t', true);
    add("line feed", u'\n', true);
    add("carriage return", u'\r', true);
    add("next line", u'\u0085', true);
    add("no-break space", u'\u00A0', true);
    add("em space", u'\u2003', true);
    add("narrow no-break space", u'\u202F', true);
    add("ideographic space", u'\u3000', true);
    add("line separator", u'\u2028', true);
    add("paragraph separator", u'\u2029', true);
    add("zero-width space", u'\u200B', false);
    add("zero-width joiner", u'\u200D', false);
    add("word joiner", u'\u2060', false);
}

void RegistroViewTest::blanksAroundAreNotSent()
{
    QFETCH(QString, blank);
    QFETCH(bool, trimmed);
    TestScreen screen(registro());
    fill(screen);
    const QStringList inner{u"A  na"_s, u"a@ x"_s, u"C 5"_s, u"Co lón"_s, u"Cl ave"_s};
    for (qsizetype i = 0; i < fields().size(); ++i)
        commit(screen, fields()[i], blank + blank + inner[i] + blank);
    press(screen);
    waitForRequests(1);
    const QJsonObject body = sent("/api_registro.php").first();
    const QStringList keys{u"nombre"_s, u"email"_s, u"direccion"_s, u"ciudad"_s, u"password"_s};
    for (qsizetype i = 0; i < keys.size(); ++i) {
        QCOMPARE(body.value(keys[i]).toString(), trimmed ? inner[i] : blank + blank + inner[i] + blank);
        // The field keeps what was typed.
        QCOMPARE(screen.find(fields()[i])->property("text").toString(), blank + blank + inner[i] + blank);
    }
}

void RegistroViewTest::formOfTheEmailIsNotChecked()
{
    TestScreen screen(registro());
    fill(screen);
    commit(screen, u"email"_s, u"no es un correo"_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(sent("/api_registro.php").first().value("email"_L1).toString(), u"no es un correo"_s);
}

void RegistroViewTest::outcomeOfRegistering_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("shown");
    QTest::newRow("no bytes") << QByteArray() << 200 << failure;
    QTest::newRow("not JSON") << QByteArray("<html>") << 200 << failure;
    QTest::newRow("number for id") << QByteArray(R"({"status":"success","id":42})") << 200 << failure;
    QTest::newRow("number for name") << QByteArray(R"({"status":"success","id":"42","nombre":1})") << 200 << failure;
    QTest::newRow("empty object") << QByteArray("{}") << 200 << failure;
    QTest::newRow("error without message") << QByteArray(R"({"status":"error"})") << 200 << failure;
    QTest::newRow("null message") << QByteArray(R"({"status":"error","message":null})") << 200 << failure;
    QTest::newRow("error with message") << QByteArray(R"({"status":"error","message":"El <b>correo</b> ya existe"})")
                                        << 200 << u"El <b>correo</b> ya existe"_s;
    QTest::newRow("message with blanks around")
        << QByteArray(R"({"status":"error","message":" \n Dos  renglones\t"})") << 200 << u" \n Dos  renglones\t"_s;
    QTest::newRow("empty message") << QByteArray(R"({"status":"error","message":""})") << 200 << QString();
    QTest::newRow("no status, message") << QByteArray(R"({"message":"Hola","id":"42"})") << 200 << u"Hola"_s;
    QTest::newRow("other letter case") << QByteArray(R"({"status":"Success","id":"42"})") << 200 << failure;
    QTest::newRow("blank after") << QByteArray(R"({"status":"success ","id":"42"})") << 200 << failure;
    QTest::newRow("HTTP 500 with message")
        << QByteArray(R"({"status":"error","message":"Caído"})") << 500 << u"Caído"_s;
}

void RegistroViewTest::outcomeOfRegistering()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, status);
    QFETCH(QString, shown);
    server.reply("/api_registro.php", reply, status);
    TestScreen screen(registro());
    press(screen); // another message first
    QCOMPARE(msg(screen), missing);
    fill(screen);
    press(screen);
    QTRY_COMPARE(msg(screen), shown);
    QCOMPARE(screen.find(u"msg"_s)->isVisible(), !shown.isEmpty());
    QCOMPARE(inFields(screen), typed());
    QCOMPARE(Session::instance().userId(), 0);
    QCOMPARE(Session::instance().userNombre(), QString());
    QCOMPARE(Session::instance().userEmail(), QString());
}

void RegistroViewTest::successWritesTheSessionInOrder()
{
    server.reply("/api_registro.php", R"({"status":"success","message":"Hola","id":"+42","nombre":" Ana Lucía "})",
                 500);
    QStringList order;
    Session &session = Session::instance();
    const QObject scope;
    connect(&session, &Session::userIdChanged, &scope, [&] { order.append(u"id"_s); });
    connect(&session, &Session::userNombreChanged, &scope, [&] { order.append(u"nombre"_s); });
    connect(&session, &Session::userEmailChanged, &scope, [&] { order.append(u"email"_s); });
    session.setUserAvatarData("photo");
    TestScreen screen(registro());
    press(screen);
    fill(screen);
    commit(screen, u"email"_s, u" ana@x "_s);
    press(screen);
    QTRY_COMPARE(order, QStringList({u"id"_s, u"nombre"_s, u"email"_s}));
    QCOMPARE(session.userId(), 42);
    QCOMPARE(session.userNombre(), u" Ana Lucía "_s);
    QCOMPARE(session.userEmail(), u"ana@x"_s);
    QCOMPARE(session.userAvatarData(), "photo");
    QCOMPARE(msg(screen), missing);
}

void RegistroViewTest::successWithoutANumberStays_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("absent") << QByteArray();
    QTest::newRow("null") << QByteArray(R"(,"id":null)");
    QTest::newRow("empty") << QByteArray(R"(,"id":"")");
    QTest::newRow("letters") << QByteArray(R"(,"id":"abc")");
    QTest::newRow("blank first") << QByteArray(R"(,"id":" 42")");
}

void RegistroViewTest::successWithoutANumberStays()
{
    QFETCH(QByteArray, id);
    server.reply("/api_registro.php", R"({"status":"success","message":"Hola","nombre":"Ana Lucía")" + id + "}");
    TestScreen screen(registro());
    fill(screen);
    press(screen);
    QTRY_COMPARE(Session::instance().userEmail(), u"ana@x"_s);
    QCOMPARE(Session::instance().userNombre(), u"Ana Lucía"_s);
    QCOMPARE(Session::instance().userId(), 0);
    QCOMPARE(msg(screen), QString());
    QCOMPARE(inFields(screen), typed());
}

void RegistroViewTest::successWithoutANameStoresTheTypedOne_data()
{
    QTest::addColumn<QByteArray>("nombre");
    QTest::addColumn<QString>("stored");
    QTest::newRow("absent") << QByteArray() << u"Ana Lu"_s;
    QTest::newRow("null") << QByteArray(R"(,"nombre":null)") << u"Ana Lu"_s;
    QTest::newRow("empty") << QByteArray(R"(,"nombre":"")") << QString();
}

void RegistroViewTest::successWithoutANameStoresTheTypedOne()
{
    QFETCH(QByteArray, nombre);
    QFETCH(QString, stored);
    server.reply("/api_registro.php", R"({"status":"success","id":"-7")" + nombre + "}");
    TestScreen screen(registro());
    fill(screen);
    commit(screen, u"nom"_s, u"  Ana Lu "_s);
    press(screen);
    QTRY_COMPARE(Session::instance().userEmail(), u"ana@x"_s);
    QCOMPARE(Session::instance().userId(), -7);
    QCOMPARE(Session::instance().userNombre(), stored);
}

void RegistroViewTest::storedValuesAreThoseThatWereSent()
{
    server.hold("/api_registro.php");
    TestScreen screen(registro());
    fill(screen);
    press(screen);
    waitForRequests(1);
    commit(screen, u"nom"_s, u"Otra"_s);
    commit(screen, u"email"_s, u"otra@x"_s);
    server.held.first()->send(R"({"status":"success","id":"42"})");
    QTRY_COMPARE(Session::instance().userEmail(), u"ana@x"_s);
    QCOMPARE(Session::instance().userNombre(), u"Ana"_s);
}

void RegistroViewTest::messageStaysUntilTheNextOne()
{
    server.hold("/api_registro.php");
    TestScreen screen(registro());
    press(screen);
    fill(screen);
    QCOMPARE(msg(screen), missing);
    press(screen);
    waitForRequests(1);
    QCOMPARE(msg(screen), missing);
    server.held.first()->close();
    QTRY_COMPARE(msg(screen), failure);
}

void RegistroViewTest::everyPressSendsOneMoreRequest()
{
    server.hold("/api_registro.php");
    TestScreen screen(registro());
    fill(screen);
    press(screen);
    press(screen);
    press(screen);
    waitForRequests(3);
    server.held[1]->send(R"({"status":"error","message":"dos"})");
    QTRY_COMPARE(msg(screen), u"dos"_s);
    server.held[0]->send(R"({"status":"error","message":"uno"})");
    QTRY_COMPARE(msg(screen), u"uno"_s);
}

void RegistroViewTest::lateReplyStillSignsIn()
{
    server.hold("/api_registro.php");
    {
        TestScreen screen(registro());
        fill(screen);
        press(screen);
        waitForRequests(1);
    }
    server.held.first()->send(R"({"status":"success","id":"42"})");
    QTRY_COMPARE(Session::instance().userEmail(), u"ana@x"_s);
    QCOMPARE(Session::instance().userId(), 42);
    QCOMPARE(Session::instance().userNombre(), u"Ana"_s);
}

void RegistroViewTest::unfinishedTextIsSent()
{
    TestScreen screen(registro());
    fill(screen);
    screen.find(u"ciudad"_s)->forceActiveFocus();
    QInputMethodEvent unfinished(u" Viejo"_s, {});
    QCoreApplication::sendEvent(screen.find(u"ciudad"_s), &unfinished);
    QAccessible::queryAccessibleInterface(screen.find(u"registrar"_s))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    waitForRequests(1);
    QCOMPARE(sent("/api_registro.php").first().value("ciudad"_L1).toString(), u"Colón Viejo"_s);
}

void RegistroViewTest::returnInAFieldSendsNothing()
{
    TestScreen screen(registro());
    for (const QString &name : fields()) {
        screen.find(name)->forceActiveFocus();
        screen.key(Qt::Key_Return);
        screen.key(Qt::Key_Enter);
        QCOMPARE(msg(screen), QString());
        QVERIFY(screen.find(name)->hasActiveFocus());
    }
    fill(screen);
    screen.key(Qt::Key_Return);
    verifyNothingWasSent(screen);
}

void RegistroViewTest::goingBackDiscardsWhatWasTyped()
{
    TestScreen screen("NavigationContainer { root: Component { LoginView {} } }");
    screen.tap(screen.find(u"registro"_s));
    QTRY_VERIFY(screen.settledAt(2));
    screen.type(screen.find(u"nom"_s), u"Ana"_s);
    screen.tap(screen.named(u"Atrás"_s));
    QTRY_VERIFY(screen.settledAt(1));
    QVERIFY(screen.named(u"Iniciar Sesión"_s));
    screen.tap(screen.find(u"registro"_s));
    QTRY_VERIFY(screen.settledAt(2));
    QCOMPARE(screen.find(u"nom"_s)->property("text").toString(), QString());
}

void RegistroViewTest::messageIsAnnounced()
{
    TestScreen screen(registro());
    QVERIFY(!screen.names().contains(missing));
    press(screen);
    QQuickItem *const line = screen.named(missing);
    QVERIFY(line);
    QCOMPARE(line, screen.find(u"msg"_s));
    QCOMPARE(QAccessible::queryAccessibleInterface(line)->role(), QAccessible::AlertMessage);
}

void RegistroViewTest::everythingIsReadInOrder()
{
    TestScreen screen(registro());
    const QStringList order{
        u"Crear Cuenta"_s, u"Nombre Completo"_s, u"Correo Electrónico"_s, u"Dirección de Domicilio"_s,
        u"Ciudad"_s,       u"Contraseña"_s,      u"Registrarme"_s};
    QCOMPARE(screen.names(), order);
    QStringList walked;
    for (qsizetype i = 1; i < order.size(); ++i) {
        screen.key(Qt::Key_Tab);
        walked.append(
            QAccessible::queryAccessibleInterface(screen.window().activeFocusItem())->text(QAccessible::Name));
    }
    QCOMPARE(walked, order.sliced(1));
    // What was typed changes no name.
    fill(screen);
    QCOMPARE(screen.names(), order);
}

void RegistroViewTest::nothingIsCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("narrow") << QSize(320, 480);
    QTest::newRow("phone") << QSize(390, 844);
    QTest::newRow("wide") << QSize(1280, 800);
}

void RegistroViewTest::nothingIsCut()
{
    QFETCH(QSize, size);
    server.reply("/api_registro.php",
                 R"({"message":")" + QByteArray("Un mensaje bastante largo. ").repeated(8) + "\"}");
    TestScreen screen(registro(), size);
    fill(screen);
    press(screen);
    QTRY_VERIFY(screen.find(u"msg"_s)->isVisible());
    for (const QString &name : fields() + QStringList{u"registrar"_s, u"msg"_s}) {
        const QRectF box = TestScreen::box(screen.find(name));
        QVERIFY2(box.left() >= 0 && box.right() <= size.width(), qUtf8Printable(name));
        QVERIFY2(box.width() <= 600 - 48, qUtf8Printable(name));
    }
    // The last line can be scrolled to.
    screen.scrollTo(screen.find(u"msg"_s));
    QVERIFY(TestScreen::box(screen.find(u"msg"_s)).bottom() <= size.height());
    QVERIFY(!screen.find(u"msg"_s)->property("truncated").toBool());
}

MAROVENDA_TEST_MAIN(RegistroViewTest)
#include "tst_RegistroView.moc"
