#include "MarovendaTest.h"
#include "Modules.h"
#include "ServiceTest.h"
#include "Session.h"

#include <QElapsedTimer>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

/// The root window from its start, against a scripted server.
class MarovendaAppTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { ServiceTest::init(); }
    void cleanup()
    {
        m_engine.reset();
        ServiceTest::cleanup();
    }

    void splashStandsForTwoAndAHalfSecondsThenFades();
    void splashDoesNotWaitForTheNetwork();
    void storedNumberChoosesTheScreen_data();
    void storedNumberChoosesTheScreen();
    void laterSwitchesAreAtOnceAndMakeANewScreen();
    void anotherCustomerKeepsTheDashboard();
    void pushedScreensGoWithTheSwitch();
    void windowHasTheDesignedSizes();

private:
    QQuickWindow *start()
    {
        m_engine = std::make_unique<QQmlApplicationEngine>();
        addModules(*m_engine);
        m_engine->load(QUrl(u"qrc:/Marovenda/App/MarovendaApp.qml"_s));
        return qobject_cast<QQuickWindow *>(m_engine->rootObjects().value(0));
    }
    static QQuickItem *findByType(QQuickItem *from, const QByteArray &type)
    {
        if (QByteArray(from->metaObject()->className()).startsWith(type + "_QMLTYPE"))
            return from;
        for (QQuickItem *child : from->childItems()) {
            if (QQuickItem *const found = findByType(child, type))
                return found;
        }
        return nullptr;
    }
    static QQuickItem *find(QQuickWindow *window, const QByteArray &type)
    {
        return findByType(window->contentItem(), type);
    }
    /// To the end of the splash.
    QQuickWindow *startPastSplash()
    {
        QQuickWindow *const window = start();
        for (int i = 0; i < 500 && find(window, "SplashView"); ++i)
            QTest::qWait(20);
        return window;
    }

    std::unique_ptr<QQmlApplicationEngine> m_engine;
};

void MarovendaAppTest::splashStandsForTwoAndAHalfSecondsThenFades()
{
    QQuickWindow *const window = start();
    QVERIFY(window);
    QVERIFY(find(window, "SplashView"));
    QTRY_VERIFY(window->property("appeared").toBool());
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < 2300) {
        QVERIFY(!find(window, "LoginView"));
        QTest::qWait(20);
    }
    QTRY_VERIFY_WITH_TIMEOUT(find(window, "LoginView"), 20000);
    QVERIFY(since.elapsed() >= 2400);
    // Both are on screen while one fades into the other.
    QQuickItem *const splash = find(window, "SplashView")->parentItem();
    QQuickItem *const login = find(window, "LoginView");
    bool between = false;
    while (find(window, "SplashView")) {
        between = between || (splash->opacity() > 0 && splash->opacity() < 1);
        QTest::qWait(5);
    }
    QVERIFY(between);
    QCOMPARE(find(window, "LoginView"), login);
}

void MarovendaAppTest::splashDoesNotWaitForTheNetwork()
{
    Session::instance().setUserId(42);
    server.hold("/api_paquetes.php");
    QQuickWindow *const window = startPastSplash();
    QVERIFY(find(window, "DashboardView"));
    QCOMPARE(server.requests().size(), 1);
    QTRY_COMPARE(server.held.size(), 1);
}

void MarovendaAppTest::storedNumberChoosesTheScreen_data()
{
    QTest::addColumn<qint64>("id");
    QTest::addColumn<QByteArray>("screen");
    QTest::newRow("nobody") << qint64(0) << QByteArray("LoginView");
    QTest::newRow("somebody") << qint64(42) << QByteArray("DashboardView");
    QTest::newRow("negative") << qint64(-1) << QByteArray("DashboardView");
}

void MarovendaAppTest::storedNumberChoosesTheScreen()
{
    QFETCH(qint64, id);
    QFETCH(QByteArray, screen);
    Session::instance().setUserId(id);
    QQuickWindow *const window = startPastSplash();
    QVERIFY(find(window, screen));
    QVERIFY(!find(window, screen == "LoginView" ? "DashboardView" : "LoginView"));
}

void MarovendaAppTest::laterSwitchesAreAtOnceAndMakeANewScreen()
{
    QQuickWindow *const window = startPastSplash();
    QQuickItem *const email = find(window, "LoginView")->findChild<QQuickItem *>(u"email"_s);
    email->setProperty("text", u"alguien"_s);
    Session::instance().setUserId(42);
    QVERIFY(find(window, "DashboardView"));
    QVERIFY(!find(window, "SplashView"));
    Session::instance().setUserId(0);
    QQuickItem *const login = find(window, "LoginView");
    QVERIFY(login);
    QVERIFY(!find(window, "DashboardView"));
    QVERIFY(!find(window, "SplashView"));
    QCOMPARE(login->findChild<QQuickItem *>(u"email"_s)->property("text").toString(), QString());
}

void MarovendaAppTest::anotherCustomerKeepsTheDashboard()
{
    Session::instance().setUserId(42);
    QQuickWindow *const window = startPastSplash();
    const QPointer<QQuickItem> dashboard = find(window, "DashboardView");
    Session::instance().setUserId(43);
    QCOMPARE(find(window, "DashboardView"), dashboard.data());
}

void MarovendaAppTest::pushedScreensGoWithTheSwitch()
{
    QQuickWindow *const window = startPastSplash();
    QQuickItem *const container = find(window, "NavigationContainer");
    QQmlComponent page(m_engine.get());
    page.setData("import Marovenda.Ui\nAppScreen { objectName: 'pushed' }", QUrl(u"qrc:/test/Page.qml"_s));
    QVERIFY(QMetaObject::invokeMethod(container, "push", Q_ARG(QQmlComponent *, &page)));
    QTRY_COMPARE(container->property("depth").toInt(), 2);
    Session::instance().setUserId(42);
    QQuickItem *const next = find(window, "NavigationContainer");
    QCOMPARE(next->property("depth").toInt(), 1);
    QVERIFY(!find(window, "LoginView"));
}

void MarovendaAppTest::windowHasTheDesignedSizes()
{
    QQuickWindow *const window = start();
    QCOMPARE(window->size(), QSize(390, 844));
    QVERIFY(window->minimumWidth() <= 320 && window->minimumHeight() <= 480);
    QCOMPARE(window->title(), u"Marovenda"_s);
}

MAROVENDA_TEST_MAIN(MarovendaAppTest)
#include "tst_MarovendaApp.moc"
