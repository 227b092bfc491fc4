#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// What the profile's screen shows of the session, and what it keeps there.
class PerfilViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ServiceTest::init();
        Session::instance().setUserId(42);
        Session::instance().setUserNombre(u"Ana"_s);
    }

    void nameIsStoredKeystrokeByKeystroke();
    void nameFollowsTheSession();
    void leavingDiscardsAllButTheName();
};

void PerfilViewTest::nameIsStoredKeystrokeByKeystroke()
{
    QStringList stored;
    const QObject scope;
    Session &session = Session::instance();
    const TestScreen screen(TestScreen::alone("PerfilView {}"));
    connect(&session, &Session::userNombreChanged, &scope, [&] { stored.append(session.userNombre()); });
    screen.type(screen.find(u"nombre"_s), u"Bé "_s);
    QCOMPARE(stored, QStringList({u"B"_s, u"Bé"_s, u"Bé "_s}));
    screen.type(screen.find(u"nombre"_s), QString());
    QCOMPARE(stored.last(), QString());
}

void PerfilViewTest::nameFollowsTheSession()
{
    const TestScreen screen(TestScreen::alone("PerfilView {}"));
    screen.type(screen.find(u"nombre"_s), u"Bea"_s);
    Session::instance().setUserNombre(u"Carla"_s);
    QCOMPARE(screen.text(u"nombre"_s), u"Carla"_s);
}

void PerfilViewTest::leavingDiscardsAllButTheName()
{
    const QTemporaryDir folder;
    QFile photo(folder.filePath(u"photo"_s));
    QVERIFY(photo.open(QFile::WriteOnly) && photo.write("picked") > 0);
    photo.close();
    const QUrl item = QUrl::fromLocalFile(photo.fileName());
    Session::instance().setUserAvatarData("stored");
    server.reply("/api_perfil.php", R"({"status":"error"})");
    const TestScreen screen(TestScreen::pushing("PerfilView {}"));
    const auto shown = [&] { return screen.find(u"avatar"_s)->property("photo").toByteArray(); };
    const auto pick = [&] {
        QMetaObject::invokeMethod(screen.find(u"picker"_s), "picked", Q_ARG(QUrl, item));
        return QTest::qWaitFor([&] { return shown() == "picked"; });
    };
    const auto open = [&] {
        screen.press(u"open"_s);
        return QTest::qWaitFor([&] { return screen.settledAt(2); });
    };
    QVERIFY(open());
    QCOMPARE(shown(), "stored");
    screen.enter(u"nombre"_s, u"Bea"_s);
    screen.enter(u"email"_s, u"otra@x"_s);
    QVERIFY(pick());
    screen.press(u"guardar"_s);
    QTRY_VERIFY(!screen.text(u"msg"_s).isEmpty());
    screen.tap(screen.named(u"Atrás"_s));
    QTRY_VERIFY(screen.settledAt(1) && screen.all(u"guardar"_s).isEmpty());
    QCOMPARE(Session::instance().userNombre(), u"Bea"_s);

    QVERIFY(open());
    QCOMPARE(screen.text(u"email"_s), QString());
    QCOMPARE(screen.text(u"msg"_s), QString());
    QCOMPARE(shown(), "stored");
    screen.press(u"guardar"_s);
    waitForRequests(2);
    QCOMPARE(server.requests().last().body,
             R"({"user_id":42,"nombre":"Bea","email":"","password":"","avatar_base64":""})");
    // The file of the last visit is a new pick.
    QVERIFY(pick());
}

MAROVENDA_TEST(PerfilViewTest)
#include "tst_PerfilView.moc"
