#include "MarovendaTest.h"
#include "PerfilTest.h"

#include <QInputMethodEvent>

class PerfilViewTest : public PerfilTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { PerfilTest::init(); }
    void cleanup() { ServiceTest::cleanup(); }

    void startsWithTheStoredNameAlone();
    void savingUntouchedSendsTheStoredName();
    void savingSendsWhatIsTyped();
    void nameIsStoredKeystrokeByKeystroke();
    void nameFollowsTheSession();
    void outcomeOfSaving_data();
    void outcomeOfSaving();
    void leavingDiscardsAllButTheName();
    void messageStaysUntilTheNextOne();
    void everyPressSendsOneMoreRequest();
    void unfinishedTextIsSent();
    void returnInAFieldSendsNothing();
    void messageIsAnnounced();
    void everythingIsReadInOrder();
    void nothingIsCut_data();
    void nothingIsCut();
};

static const QColor blue(0x00, 0x7A, 0xFF);

void PerfilViewTest::startsWithTheStoredNameAlone()
{
    TestScreen screen(perfil());
    QCOMPARE(screen.find(u"nombre"_s)->property("text").toString(), u"Ana"_s);
    QCOMPARE(screen.find(u"nombre"_s)->property("hint").toString(), u"Nombre Completo"_s);
    QCOMPARE(screen.find(u"email"_s)->property("text").toString(), QString());
    QVERIFY(!screen.find(u"nombre"_s)->property("isDecimal").toBool());
    QVERIFY(!screen.find(u"email"_s)->property("isDecimal").toBool());
    const QStringList shown{u"Mi Perfil"_s, u"Toca la imagen para cambiar foto"_s, u"Correo"_s, u"Guardar Cambios"_s};
    QCOMPARE(screen.texts(), shown);
    QVERIFY(!decoded(screen));
    QVERIFY(!screen.find(u"picker"_s)->isVisible());
    // An empty message keeps its line.
    QVERIFY(screen.find(u"msg"_s)->isVisible());
    QCOMPARE(screen.find(u"msg"_s)->height(), 22);
    QVERIFY(server.requests().isEmpty());
}

void PerfilViewTest::savingUntouchedSendsTheStoredName()
{
    server.hold("/api_perfil.php");
    Session::instance().setUserNombre(u" \tAna \"Lu\" / Ñ  "_s);
    TestScreen screen(perfil());
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().path, "/api_perfil.php");
    QCOMPARE(server.requests().first().header("Content-Type"), "application/json");
    QCOMPARE(server.requests().first().body,
             R"({"user_id":42,"nombre":" \tAna \"Lu\" \/ Ñ  ","email":"","password":"","avatar_base64":""})");
    QCOMPARE(msg(screen), QString());
    QVERIFY(screen.find(u"guardar"_s)->isEnabled());
}

void PerfilViewTest::savingSendsWhatIsTyped()
{
    TestScreen screen(perfil());
    screen.type(screen.find(u"nombre"_s), QString());
    screen.type(screen.find(u"email"_s), u" no es correo "_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().body,
             R"({"user_id":42,"nombre":"","email":" no es correo ","password":"","avatar_base64":""})");
    QCOMPARE(Session::instance().userEmail(), u"ana@x"_s);
}

void PerfilViewTest::nameIsStoredKeystrokeByKeystroke()
{
    QStringList stored;
    const QObject scope;
    Session &session = Session::instance();
    TestScreen screen(perfil());
    connect(&session, &Session::userNombreChanged, &scope, [&] { stored.append(session.userNombre()); });
    screen.type(screen.find(u"nombre"_s), u"Bé "_s);
    QCOMPARE(stored, QStringList({u"B"_s, u"Bé"_s, u"Bé "_s}));
    screen.type(screen.find(u"nombre"_s), QString());
    QCOMPARE(stored.last(), QString());
    QCOMPARE(session.userNombre(), QString());
    QVERIFY(server.requests().isEmpty());
}

void PerfilViewTest::nameFollowsTheSession()
{
    TestScreen screen(perfil());
    screen.type(screen.find(u"nombre"_s), u"Bea"_s);
    Session::instance().setUserNombre(u"Carla"_s);
    QCOMPARE(screen.find(u"nombre"_s)->property("text").toString(), u"Carla"_s);
}

void PerfilViewTest::outcomeOfSaving_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("success");
    const auto add = [](const char *name, const QByteArray &reply, bool success, int status = 200) {
        QTest::newRow(name) << reply << status << success;
    };
    add("success", R"({"status":"success"})", true);
    add("success with message", R"({"status":"success","message":"Hola"})", true);
    add("HTTP 500 with success", R"({"status":"success"})", true, 500);
    add("no bytes", "", false);
    add("not JSON", "<html>", false);
    add("text before JSON", R"(Warning {"status":"success"})", false);
    add("empty object", "{}", false);
    add("null status", R"({"status":null})", false);
    add("number for message", R"({"status":"success","message":1})", false);
    add("error", R"({"status":"error"})", false);
    add("error with message", R"({"status":"error","message":"Correo en uso"})", false);
    add("no status, message", R"({"message":"Hola"})", false);
    add("other letter case", R"({"status":"Success"})", false);
    add("blank after", R"({"status":"success "})", false);
}

void PerfilViewTest::outcomeOfSaving()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, status);
    QFETCH(bool, success);
    server.reply("/api_perfil.php", reply, status);
    const QByteArray old = picture(Qt::green);
    const QByteArray picked = picture(Qt::red);
    Session::instance().setUserAvatarData(old);
    TestScreen screen(perfil());
    pick(screen, file(u"a.png"_s, picked));
    QVERIFY(comesToShow(screen, picked));
    screen.type(screen.find(u"nombre"_s), u" Bea "_s);
    screen.type(screen.find(u"email"_s), u" bea@x "_s);
    const QVariantMap expected = state(screen);
    press(screen);
    QVERIFY(comesToSay(screen, success ? saved : failure));
    QCOMPARE(state(screen), expected);
    QCOMPARE(expected.value(u"avatarBase64"_s).toString(), QString::fromLatin1(picked.toBase64()));
    QCOMPARE(screen.find(u"msg"_s)->property("color").value<QColor>(), blue);
    QCOMPARE(Session::instance().userAvatarData(), success ? picked : old);
    QCOMPARE(photo(screen), picked);
    QCOMPARE(Session::instance().userNombre(), u" Bea "_s);
    QCOMPARE(Session::instance().userEmail(), u"ana@x"_s);
    QCOMPARE(Session::instance().userId(), 42);
}

void PerfilViewTest::leavingDiscardsAllButTheName()
{
    const QByteArray stored = picture(Qt::green);
    Session::instance().setUserAvatarData(stored);
    server.reply("/api_perfil.php", R"({"status":"error"})");
    TestScreen screen(opened());
    open(screen);
    screen.type(screen.find(u"nombre"_s), QString());
    screen.type(screen.find(u"email"_s), u"otra@x"_s);
    const QByteArray picked = picture(Qt::red);
    const QUrl item = file(u"a.png"_s, picked);
    pick(screen, item);
    QVERIFY(comesToShow(screen, picked));
    press(screen);
    QVERIFY(comesToSay(screen, failure));
    leave(screen);
    QCOMPARE(Session::instance().userNombre(), QString());
    QTRY_VERIFY(screen.all(u"guardar"_s).isEmpty());
    open(screen);
    QCOMPARE(screen.find(u"email"_s)->property("text").toString(), QString());
    QCOMPARE(msg(screen), QString());
    QCOMPARE(photo(screen), stored);
    press(screen);
    waitForRequests(2);
    QCOMPARE(server.requests().last().body,
             R"({"user_id":42,"nombre":"","email":"","password":"","avatar_base64":""})");
    // The file of the last visit is a new pick.
    pick(screen, item);
    QVERIFY(comesToShow(screen, picked));
}

void PerfilViewTest::messageStaysUntilTheNextOne()
{
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    server.hold("/api_perfil.php");
    press(screen);
    waitForRequests(2);
    QCOMPARE(msg(screen), saved);
    server.held.first()->close();
    QVERIFY(comesToSay(screen, failure));
}

void PerfilViewTest::everyPressSendsOneMoreRequest()
{
    server.hold("/api_perfil.php");
    TestScreen screen(perfil());
    press(screen);
    press(screen);
    press(screen);
    waitForRequests(3);
    server.held[2]->send(R"({"status":"success"})");
    QVERIFY(comesToSay(screen, saved));
    server.held[0]->send(R"({"status":"error"})");
    QVERIFY(comesToSay(screen, failure));
}

void PerfilViewTest::unfinishedTextIsSent()
{
    TestScreen screen(perfil());
    int requests = 0;
    for (const QString &name : {u"nombre"_s, u"email"_s}) {
        QQuickItem *const field = screen.find(name);
        screen.type(field, u"a"_s);
        TestScreen::compose(field, u"ñ"_s);
        pressAtOnce(screen);
        // Two at once would come in any order.
        waitForRequests(++requests);
    }
    QCOMPARE(sent("/api_perfil.php").last().value("nombre"_L1).toString(), u"añ"_s);
    QCOMPARE(sent("/api_perfil.php").last().value("email"_L1).toString(), u"añ"_s);
    QCOMPARE(Session::instance().userNombre(), u"añ"_s);
}

void PerfilViewTest::returnInAFieldSendsNothing()
{
    TestScreen screen(perfil());
    for (const QString &name : {u"nombre"_s, u"email"_s}) {
        screen.find(name)->forceActiveFocus();
        screen.key(Qt::Key_Return);
        screen.key(Qt::Key_Enter);
        QVERIFY(screen.find(name)->hasActiveFocus());
    }
    screen.type(screen.find(u"email"_s), u"primero"_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(sent("/api_perfil.php").first().value("email"_L1).toString(), u"primero"_s);
}

void PerfilViewTest::messageIsAnnounced()
{
    TestScreen screen(perfil());
    press(screen);
    QTRY_VERIFY(screen.named(failure));
    QQuickItem *const line = screen.named(failure);
    QCOMPARE(line, screen.find(u"msg"_s));
    QCOMPARE(QAccessible::queryAccessibleInterface(line)->role(), QAccessible::AlertMessage);
}

void PerfilViewTest::everythingIsReadInOrder()
{
    TestScreen screen(perfil());
    const QStringList order{u"Mi Perfil"_s,       u"Cambiar foto"_s, u"Toca la imagen para cambiar foto"_s,
                            u"Nombre Completo"_s, u"Correo"_s,       u"Guardar Cambios"_s};
    QCOMPARE(screen.names(), order);
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(u"Cambiar foto"_s))->role(), QAccessible::Button);
    QStringList walked;
    for (int i = 0; i < 4; ++i) {
        screen.key(Qt::Key_Tab);
        walked.append(
            QAccessible::queryAccessibleInterface(screen.window().activeFocusItem())->text(QAccessible::Name));
    }
    QCOMPARE(walked, QStringList({order[1], order[3], order[4], order[5]}));
}

void PerfilViewTest::nothingIsCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("narrow") << QSize(320, 480);
    QTest::newRow("phone") << QSize(390, 844);
    QTest::newRow("wide") << QSize(1280, 800);
}

void PerfilViewTest::nothingIsCut()
{
    QFETCH(QSize, size);
    TestScreen screen(perfil(), size);
    press(screen);
    QVERIFY(comesToSay(screen, failure));
    for (const QString &name : {u"avatar"_s, u"nombre"_s, u"email"_s, u"guardar"_s, u"msg"_s}) {
        const QRectF box = TestScreen::box(screen.find(name));
        QVERIFY2(box.left() >= 0 && box.right() <= size.width(), qUtf8Printable(name));
        QVERIFY2(box.width() <= 600 - 48, qUtf8Printable(name));
    }
    screen.scrollTo(screen.find(u"msg"_s));
    QVERIFY(TestScreen::box(screen.find(u"msg"_s)).bottom() <= size.height());
}

MAROVENDA_TEST_MAIN(PerfilViewTest)
#include "tst_PerfilView.moc"
