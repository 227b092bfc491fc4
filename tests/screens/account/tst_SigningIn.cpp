#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What a successful sign-in or registration writes to the session.
class SigningInTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void successWritesTheSession_data();
    void successWritesTheSession();
};

void SigningInTest::successWritesTheSession_data()
{
    const auto add = columns<bool, QByteArray, qint64, QString, bool>("registering", "reply", "id", "name", "late");
    const QByteArray all = R"("message":"Hola","id":"+42","nombre":" Ana Lucía ")";
    for (const bool registering : {false, true}) {
        const auto row = [&](const QByteArray &name, const QByteArray &reply, qint64 id, const QString &stored,
                             bool late = false) {
            add((registering ? "registration: " : "sign-in: ") + name, registering, reply, id, stored, late);
        };
        row("all there", all, 42, u" Ana Lucía "_s);
        row("after the screen has gone", all, 42, u" Ana Lucía "_s, true);
        row("no number", R"("nombre":"Ana")", 0, u"Ana"_s);
        row("unreadable number", R"("id":" 42","nombre":"Ana")", 0, u"Ana"_s);
        row("no name", R"("id":"-7")", -7, registering ? u"Eva"_s : QString());
        row("empty name", R"("id":"-7","nombre":"")", -7, QString());
    }
}

void SigningInTest::successWritesTheSession()
{
    QFETCH(const bool, registering);
    QFETCH(const QByteArray, reply);
    QFETCH(const qint64, id);
    QFETCH(const QString, name);
    QFETCH(const bool, late);
    Session &session = Session::instance();
    session.setUserNombre(u"Antes"_s);
    session.setUserAvatarData("photo");
    const QString button = registering ? u"registrar"_s : u"iniciarSesion"_s;
    server.hold(registering ? "/api_registro.php" : "/api_login.php");
    auto screen = std::make_unique<TestScreen>(registering ? "RegistroView {}" : "LoginView {}");
    screen->press(button); // a message that stays
    const QString message = screen->text(u"msg"_s);
    QVERIFY(!message.isEmpty());
    if (registering) {
        for (const QString &field : {u"direccion"_s, u"ciudad"_s})
            screen->enter(field, u"x"_s);
        screen->enter(u"nom"_s, u"  Eva "_s);
    }
    screen->enter(u"email"_s, u" sent@x "_s);
    screen->enter(u"pass"_s, u"A."_s);
    screen->press(button);
    waitForRequests(1);

    // A registration stores what was sent, a sign-in the address on show when the reply comes.
    if (registering)
        screen->enter(u"nom"_s, u"Otra"_s);
    screen->enter(u"email"_s, u" later@x "_s);
    if (late)
        screen.reset();
    QCOMPARE(session.userEmail(), QString());
    server.held.first()->send(R"({"status":"success",)" + reply + "}");
    QTRY_COMPARE(session.userEmail(), registering ? u"sent@x"_s : u" later@x "_s);
    QCOMPARE(session.userId(), id);
    QCOMPARE(session.userNombre(), name);
    QCOMPARE(session.userAvatarData(), "photo");
    if (!late) {
        QCOMPARE(screen->text(u"msg"_s), message);
        QCOMPARE(screen->text(u"pass"_s), u"A."_s);
    }
}

MAROVENDA_TEST(SigningInTest)
#include "tst_SigningIn.moc"
