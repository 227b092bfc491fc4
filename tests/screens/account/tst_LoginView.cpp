#include "LoginViewModel.h"
#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QInputMethodEvent>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

class LoginViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { ServiceTest::init(); }
    void cleanup() { ServiceTest::cleanup(); }

    void startsEmptyWithTheDesignedElements();
    void emptyFieldsAreNamedAndNothingIsSent_data();
    void emptyFieldsAreNamedAndNothingIsSent();
    void signInSendsWhatWasTyped();
    void outcomeOfSigningIn_data();
    void outcomeOfSigningIn();
    void successWritesTheSessionInOrder();
    void successWithoutANumberStaysAndKeepsTheMessage_data();
    void successWithoutANumberStaysAndKeepsTheMessage();
    void successWithoutANameWritesAnEmptyOne();
    void storedEmailIsTheOneShownWhenTheReplyComes();
    void messageStaysUntilTheNextOne();
    void everyPressSendsOneMoreRequest();
    void lateReplyStillSignsIn();
    void unfinishedTextIsSent();
    void returnInAFieldSendsNothing();
    void recoveryAsksWithAnEmptyField();
    void outcomeOfRecovery_data();
    void outcomeOfRecovery();
    void recoveryWithoutAnAddressDoesNothing();
    void cancelledRecoveryDoesNothing();
    void lateRecoveryWritesToTheScreenThatHasGone();
    void messageIsAnnounced();
    void messageThatComesBehindTheAlertIsAnnouncedAfterIt();
    void everythingIsReadInOrder();
    void nothingIsCut_data();
    void nothingIsCut();

private:
    static QByteArray login() { return "LoginView { objectName: 'login' }"; }
    static QString msg(TestScreen &screen) { return screen.find(u"msg"_s)->property("text").toString(); }
    static void fill(TestScreen &screen, const QString &email = u"ana@marovenda.example"_s,
                     const QString &pass = u"Clave.1"_s)
    {
        screen.type(screen.find(u"email"_s), email);
        screen.type(screen.find(u"pass"_s), pass);
    }
    static void press(TestScreen &screen) { screen.tap(screen.find(u"iniciarSesion"_s)); }
    static void openRecovery(TestScreen &screen)
    {
        screen.tap(screen.find(u"recuperar"_s));
        QTRY_COMPARE(screen.find(u"recuperarDialog"_s)->opacity(), 1);
    }
};

void LoginViewTest::startsEmptyWithTheDesignedElements()
{
    TestScreen screen(login());
    const QStringList shown{
        u"Ingresa a tu panel logístico"_s, u"Correo Electrónico"_s, u"Contraseña"_s,
        u"¿Olvidaste tu contraseña?"_s,    u"Iniciar Sesión"_s,     u"¿No tienes cuenta? Regístrate aquí"_s};
    QCOMPARE(screen.texts(), shown);
    QCOMPARE(screen.find(u"email"_s)->property("text").toString(), QString());
    QCOMPARE(screen.find(u"pass"_s)->property("text").toString(), QString());
    QVERIFY(!screen.find(u"email"_s)->property("isDecimal").toBool());
    QVERIFY(!screen.find(u"msg"_s)->isVisible());
    QVERIFY(server.requests().isEmpty());
}

void LoginViewTest::emptyFieldsAreNamedAndNothingIsSent_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("pass");
    QTest::newRow("both") << u""_s << u""_s;
    QTest::newRow("e-mail") << u""_s << u"x"_s;
    QTest::newRow("password") << u"x"_s << u""_s;
}

void LoginViewTest::emptyFieldsAreNamedAndNothingIsSent()
{
    QFETCH(QString, email);
    QFETCH(QString, pass);
    TestScreen screen(login());
    fill(screen, email, pass);
    press(screen);
    QCOMPARE(msg(screen), u"Completa los campos"_s);
    // One that is sent comes after whatever had been sent before.
    fill(screen, u"a"_s, u"b"_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(sent("/api_login.php").first().value("email"_L1).toString(), u"a"_s);
}

void LoginViewTest::signInSendsWhatWasTyped()
{
    server.hold("/api_login.php");
    TestScreen screen(login());
    fill(screen, u" Ana@x/y "_s, u"  "_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().path, "/api_login.php");
    QCOMPARE(server.requests().first().body, R"({"email":" Ana@x\/y ","password":"  "})");
    QCOMPARE(server.requests().first().header("Content-Type"), "application/json");
    // The end of each test relies on this count.
    QCOMPARE(exchangesInFlight(), 1);
    QCOMPARE(msg(screen), QString());
    QVERIFY(screen.find(u"iniciarSesion"_s)->isEnabled());
}

void LoginViewTest::outcomeOfSigningIn_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("shown");
    const QString failure = u"Error de credenciales"_s;
    QTest::newRow("no bytes") << QByteArray() << 200 << failure;
    QTest::newRow("not JSON") << QByteArray("<html>") << 200 << failure;
    QTest::newRow("text before JSON") << QByteArray(R"(Warning {"status":"success","id":"42"})") << 200 << failure;
    QTest::newRow("number for id") << QByteArray(R"({"status":"success","id":42})") << 200 << failure;
    QTest::newRow("empty object") << QByteArray("{}") << 200 << failure;
    QTest::newRow("error without message") << QByteArray(R"({"status":"error"})") << 200 << failure;
    QTest::newRow("error with message") << QByteArray(R"({"status":"error","message":"Cuenta <b>bloqueada</b>"})")
                                        << 200 << u"Cuenta <b>bloqueada</b>"_s;
    QTest::newRow("message with blanks around")
        << QByteArray(R"({"status":"error","message":" \n Dos  renglones\t"})") << 200 << u" \n Dos  renglones\t"_s;
    QTest::newRow("empty message") << QByteArray(R"({"status":"error","message":""})") << 200 << QString();
    QTest::newRow("no status, message") << QByteArray(R"({"message":"Hola","id":"42"})") << 200 << u"Hola"_s;
    QTest::newRow("other letter case") << QByteArray(R"({"status":"Success","id":"42"})") << 200 << failure;
    QTest::newRow("blank after") << QByteArray(R"({"status":"success ","id":"42"})") << 200 << failure;
    QTest::newRow("HTTP 500 with message")
        << QByteArray(R"({"status":"error","message":"Caído"})") << 500 << u"Caído"_s;
}

void LoginViewTest::outcomeOfSigningIn()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, status);
    QFETCH(QString, shown);
    server.reply("/api_login.php", reply, status);
    TestScreen screen(login());
    press(screen); // another message first
    fill(screen);
    press(screen);
    QTRY_COMPARE(msg(screen), shown);
    QCOMPARE(Session::instance().userId(), 0);
    QCOMPARE(Session::instance().userEmail(), QString());
}

void LoginViewTest::successWritesTheSessionInOrder()
{
    server.reply("/api_login.php", R"({"status":"success","message":"Hola","id":"+42","nombre":"Ana Lucía"})", 401);
    QStringList order;
    Session &session = Session::instance();
    const QObject scope;
    connect(&session, &Session::userIdChanged, &scope, [&] { order.append(u"id"_s); });
    connect(&session, &Session::userNombreChanged, &scope, [&] { order.append(u"nombre"_s); });
    connect(&session, &Session::userEmailChanged, &scope, [&] { order.append(u"email"_s); });
    session.setUserAvatarData("photo");
    TestScreen screen(login());
    fill(screen, u" ana@x "_s);
    press(screen);
    QTRY_COMPARE(order, QStringList({u"id"_s, u"nombre"_s, u"email"_s}));
    QCOMPARE(session.userId(), 42);
    QCOMPARE(session.userNombre(), u"Ana Lucía"_s);
    QCOMPARE(session.userEmail(), u" ana@x "_s);
    QCOMPARE(session.userAvatarData(), "photo");
    QCOMPARE(msg(screen), QString());
}

void LoginViewTest::successWithoutANumberStaysAndKeepsTheMessage_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("absent") << QByteArray();
    QTest::newRow("null") << QByteArray(R"(,"id":null)");
    QTest::newRow("empty") << QByteArray(R"(,"id":"")");
    QTest::newRow("letters") << QByteArray(R"(,"id":"abc")");
    QTest::newRow("blank first") << QByteArray(R"(,"id":" 42")");
}

void LoginViewTest::successWithoutANumberStaysAndKeepsTheMessage()
{
    QFETCH(QByteArray, id);
    server.reply("/api_login.php", R"({"status":"success","message":"Hola","nombre":"Ana")" + id + "}");
    TestScreen screen(login());
    press(screen);
    fill(screen);
    press(screen);
    QTRY_COMPARE(Session::instance().userEmail(), u"ana@marovenda.example"_s);
    QCOMPARE(Session::instance().userNombre(), u"Ana"_s);
    QCOMPARE(Session::instance().userId(), 0);
    QCOMPARE(msg(screen), u"Completa los campos"_s);
}

void LoginViewTest::successWithoutANameWritesAnEmptyOne()
{
    Session::instance().setUserNombre(u"Antes"_s);
    server.reply("/api_login.php", R"({"status":"success","id":"-7"})");
    TestScreen screen(login());
    fill(screen);
    press(screen);
    QTRY_COMPARE(Session::instance().userId(), -7);
    QCOMPARE(Session::instance().userNombre(), QString());
}

void LoginViewTest::storedEmailIsTheOneShownWhenTheReplyComes()
{
    server.hold("/api_login.php");
    TestScreen screen(login());
    fill(screen, u"antes@x"_s);
    press(screen);
    waitForRequests(1);
    screen.type(screen.find(u"email"_s), u"despues@x"_s);
    server.held.first()->send(R"({"status":"success","id":"42"})");
    QTRY_COMPARE(Session::instance().userEmail(), u"despues@x"_s);
}

void LoginViewTest::messageStaysUntilTheNextOne()
{
    server.hold("/api_login.php");
    TestScreen screen(login());
    press(screen);
    fill(screen);
    press(screen);
    waitForRequests(1);
    QCOMPARE(msg(screen), u"Completa los campos"_s);
    server.held.first()->close();
    QTRY_COMPARE(msg(screen), u"Error de credenciales"_s);
}

void LoginViewTest::everyPressSendsOneMoreRequest()
{
    server.hold("/api_login.php");
    TestScreen screen(login());
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

void LoginViewTest::lateReplyStillSignsIn()
{
    server.hold("/api_login.php");
    {
        TestScreen screen(login());
        fill(screen);
        press(screen);
        waitForRequests(1);
    }
    server.held.first()->send(R"({"status":"success","id":"42","nombre":"Ana"})");
    QTRY_COMPARE(Session::instance().userEmail(), u"ana@marovenda.example"_s);
    QCOMPARE(Session::instance().userId(), 42);
    QCOMPARE(Session::instance().userNombre(), u"Ana"_s);
}

void LoginViewTest::unfinishedTextIsSent()
{
    TestScreen screen(login());
    fill(screen, u"ana"_s, u"x"_s);
    screen.find(u"email"_s)->forceActiveFocus();
    QInputMethodEvent unfinished(u"@x.pa"_s, {});
    QCoreApplication::sendEvent(screen.find(u"email"_s), &unfinished);
    QAccessible::queryAccessibleInterface(screen.find(u"iniciarSesion"_s))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    waitForRequests(1);
    QCOMPARE(sent("/api_login.php").first().value("email"_L1).toString(), u"ana@x.pa"_s);
}

void LoginViewTest::returnInAFieldSendsNothing()
{
    TestScreen screen(login());
    fill(screen, u"a"_s, u"b"_s);
    screen.key(Qt::Key_Return);
    QCOMPARE(msg(screen), QString());
    press(screen);
    waitForRequests(1);
}

void LoginViewTest::recoveryAsksWithAnEmptyField()
{
    TestScreen screen(login());
    openRecovery(screen);
    QQuickItem *const alert = screen.find(u"recuperarDialog"_s);
    const QStringList shown{u"Recuperar Contraseña"_s,
                            u"Se enviará una solicitud con el enlace de cambio a soporte@marovenda.example."_s,
                            u"Ingresa tu correo registrado"_s, u"Cancelar"_s, u"Enviar"_s};
    QCOMPARE(screen.texts(alert), shown);
    // The form below can neither be heard nor pressed.
    QVERIFY(!screen.named(u"Iniciar Sesión"_s));
    screen.type(screen.find(u"alertInput"_s), u"x"_s);
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(!alert->isVisible());
    openRecovery(screen);
    QCOMPARE(screen.find(u"alertInput"_s)->property("text").toString(), QString());
}

void LoginViewTest::outcomeOfRecovery_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("shown");
    QTest::newRow("no bytes") << QByteArray() << u"Solicitud procesada"_s;
    QTest::newRow("not JSON") << QByteArray("oops") << u"Solicitud procesada"_s;
    QTest::newRow("success") << QByteArray(R"({"status":"success"})") << u"Solicitud procesada"_s;
    QTest::newRow("failure") << QByteArray(R"({"status":"error"})") << u"Solicitud procesada"_s;
    QTest::newRow("success with message") << QByteArray(R"({"status":"success","message":"Revisa"})") << u"Revisa"_s;
    QTest::newRow("failure with message")
        << QByteArray(R"({"status":"error","message":"No existe"})") << u"No existe"_s;
    QTest::newRow("message with blanks around")
        << QByteArray(R"({"status":"error","message":" \n No existe\t"})") << u" \n No existe\t"_s;
    QTest::newRow("empty message") << QByteArray(R"({"message":""})") << QString();
}

void LoginViewTest::outcomeOfRecovery()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, shown);
    server.reply("/api_recuperar.php", reply);
    TestScreen screen(login());
    press(screen); // another message first
    openRecovery(screen);
    screen.type(screen.find(u"alertInput"_s), u" yo@x "_s);
    screen.tap(screen.named(u"Enviar"_s));
    QTRY_COMPARE(msg(screen), shown);
    QTRY_VERIFY(!screen.find(u"recuperarDialog"_s)->isVisible());
    QCOMPARE(server.requests().size(), 1);
    QCOMPARE(server.requests().first().path, "/api_recuperar.php");
    QCOMPARE(server.requests().first().body, R"({"email":" yo@x "})");
}

void LoginViewTest::recoveryWithoutAnAddressDoesNothing()
{
    TestScreen screen(login());
    openRecovery(screen);
    screen.tap(screen.named(u"Enviar"_s));
    QTRY_VERIFY(!screen.find(u"recuperarDialog"_s)->isVisible());
    QCOMPARE(msg(screen), QString());
    fill(screen);
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().path, "/api_login.php");
}

void LoginViewTest::cancelledRecoveryDoesNothing()
{
    TestScreen screen(login());
    openRecovery(screen);
    screen.type(screen.find(u"alertInput"_s), u"yo@x"_s);
    screen.tap(screen.named(u"Cancelar"_s));
    QTRY_VERIFY(!screen.find(u"recuperarDialog"_s)->isVisible());
    fill(screen);
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().path, "/api_login.php");
}

void LoginViewTest::lateRecoveryWritesToTheScreenThatHasGone()
{
    server.hold("/api_recuperar.php");
    TestScreen screen("Loader { sourceComponent: Component { LoginView {} } }");
    openRecovery(screen);
    screen.type(screen.find(u"alertInput"_s), u"yo@x"_s);
    screen.tap(screen.named(u"Enviar"_s));
    waitForRequests(1);
    const QPointer<LoginViewModel> gone = qobject_cast<LoginViewModel *>(screen.viewModelOf(u"msg"_s));
    QVERIFY(gone);
    QString written;
    connect(gone, &LoginViewModel::msgChanged, this, [&] { written = gone->msgValue(); });
    const QPointer<QQuickItem> page = screen.find(u"msg"_s);
    screen.root()->setProperty("active", false);
    QTRY_VERIFY(!page);
    QVERIFY(gone);
    // As after signing in and out again.
    screen.root()->setProperty("active", true);
    server.held.first()->send(R"({"message":"Revisa"})");
    QTRY_COMPARE(written, u"Revisa"_s);
    QTRY_VERIFY(!gone);
    QCOMPARE(msg(screen), QString());
    QCOMPARE(Session::instance().userId(), 0);
    QCOMPARE(Session::instance().userEmail(), QString());
}

void LoginViewTest::messageIsAnnounced()
{
    TestScreen screen(login());
    QVERIFY(!screen.names().contains(u"Completa los campos"_s));
    press(screen);
    QQuickItem *const line = screen.named(u"Completa los campos"_s);
    QCOMPARE(line, screen.find(u"msg"_s));
    QCOMPARE(QAccessible::queryAccessibleInterface(line)->role(), QAccessible::AlertMessage);
}

void LoginViewTest::messageThatComesBehindTheAlertIsAnnouncedAfterIt()
{
    TestScreen screen(login());
    press(screen);
    QQuickItem *const line = screen.find(u"msg"_s);
    screen.tap(screen.find(u"recuperar"_s));
    QQuickItem *const alert = screen.find(u"recuperarDialog"_s);
    QTRY_COMPARE(alert->opacity(), 1);
    server.reply("/api_recuperar.php", R"({"message":"Revisa tu correo"})");
    screen.type(screen.find(u"alertInput"_s), u"a@b"_s);
    // It begins to show anew each time that it has something to tell.
    QStringList told;
    connect(line, &QQuickItem::visibleChanged, this, [&] {
        if (line->isVisible() && line->isEnabled())
            told.append(line->property("text").toString());
    });
    screen.key(Qt::Key_Return);
    QTRY_VERIFY(screen.named(u"Revisa tu correo"_s));
    QVERIFY(!alert->isVisible());
    QTRY_COMPARE(told, QStringList(u"Revisa tu correo"_s));
}

void LoginViewTest::everythingIsReadInOrder()
{
    TestScreen screen(login());
    const QStringList order{
        u"Ingresa a tu panel logístico"_s, u"Correo Electrónico"_s, u"Contraseña"_s,
        u"¿Olvidaste tu contraseña?"_s,    u"Iniciar Sesión"_s,     u"¿No tienes cuenta? Regístrate aquí"_s};
    QCOMPARE(screen.names(), order);
    QStringList walked;
    for (qsizetype i = 1; i < order.size(); ++i) {
        screen.key(Qt::Key_Tab);
        walked.append(
            QAccessible::queryAccessibleInterface(screen.window().activeFocusItem())->text(QAccessible::Name));
    }
    QCOMPARE(walked, order.sliced(1));
}

void LoginViewTest::nothingIsCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("narrow") << QSize(320, 480);
    QTest::newRow("phone") << QSize(390, 844);
    QTest::newRow("wide") << QSize(1280, 800);
}

void LoginViewTest::nothingIsCut()
{
    QFETCH(QSize, size);
    server.reply("/api_login.php", R"({"message":")" + QByteArray("Un mensaje bastante largo. ").repeated(8) + "\"}");
    TestScreen screen(login(), size);
    fill(screen);
    press(screen);
    QTRY_VERIFY(screen.find(u"msg"_s)->isVisible());
    for (const QString &name : {u"logo"_s, u"email"_s, u"iniciarSesion"_s, u"msg"_s, u"registro"_s}) {
        const QRectF box = TestScreen::box(screen.find(name));
        QVERIFY2(box.left() >= 0 && box.right() <= size.width(), qUtf8Printable(name));
    }
    QVERIFY(screen.find(u"email"_s)->width() <= 600 - 64);
    // What does not fit can be reached.
    screen.find(u"registro"_s)->forceActiveFocus();
    QVERIFY(TestScreen::box(screen.find(u"registro"_s)).bottom() <= size.height());
}

MAROVENDA_TEST_MAIN(LoginViewTest)
#include "tst_LoginView.moc"
