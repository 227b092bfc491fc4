#include "AppTest.h"
#include "MarovendaTest.h"
#include "Session.h"

#include <QEasingCurve>
#include <QElapsedTimer>
#include <QQmlProperty>
#include <QTest>

using namespace Qt::StringLiterals;

class MarovendaAppTest : public AppTest {
    Q_OBJECT
private Q_SLOTS:
    void splashHasItsTextOnceTheFontsAreLoaded();
    void motionHasTheDesignedTimeAndCurve_data();
    void motionHasTheDesignedTimeAndCurve();
    void storedNumberChoosesTheScreen_data();
    void storedNumberChoosesTheScreen();
    void laterSwitchesAreAtOnceAndMakeANewScreen();
    void windowHasTheDesignedSizes();

private:
    /// To the end of the splash.
    QQuickWindow *startPastSplash()
    {
        QQuickWindow *const window = start();
        [[maybe_unused]] const bool gone = QTest::qWaitFor([&] { return !find(window, "SplashView"); }, 10000);
        return window;
    }
};

void MarovendaAppTest::splashHasItsTextOnceTheFontsAreLoaded()
{
    QQuickWindow *const window = start();
    const QQuickItem *const splash = find(window, "SplashView");
    const auto text = [&] { return splash->findChild<QQuickItem *>(u"credit"_s); };
    const auto *const viewModel = window->property("viewModel").value<QObject *>();
    // No frame has been drawn yet.
    QVERIFY(!window->property("appeared").toBool());
    QVERIFY(!text());
    QTRY_VERIFY_WITH_TIMEOUT(text(), 20000);
    QVERIFY(window->property("appeared").toBool());
    QVERIFY(viewModel->property("fontsLoaded").toBool());
    QCOMPARE(text()->parentItem()->y() + text()->height(), window->height());
}

void MarovendaAppTest::motionHasTheDesignedTimeAndCurve_data()
{
    const auto row = columns<QString, QString, int, QList<QPointF>>("item", "property", "milliseconds", "curve");
    const QList<QPointF> easeIn{{0.42, 0}, {1, 1}, {1, 1}};
    const QList<QPointF> easeOut{{0, 0}, {0.58, 1}, {1, 1}};
    row("logo fades in", u"logo"_s, u"opacity"_s, 1000, easeOut);
    row("logo grows", u"logo"_s, u"scale"_s, 1000, easeOut);
    row("splash goes", u"splash"_s, u"opacity"_s, 300, easeIn);
    row("first screen comes", u"first"_s, u"opacity"_s, 300, easeIn);
}

void MarovendaAppTest::motionHasTheDesignedTimeAndCurve()
{
    QFETCH(const QString, item);
    QFETCH(const QString, property);
    QQuickWindow *const window = start();
    QQuickItem *const splash = find(window, "SplashView");
    const QObject *moving = splash->findChild<QQuickItem *>(item);
    if (item == u"splash"_s)
        moving = splash->parentItem();
    else if (item == u"first"_s)
        moving = byId(window, u"first"_s);
    QVERIFY(moving);
    // An animation is made when it is first needed; the splash goes once the first screens are loaded.
    QObject *const viewModel = window->property("viewModel").value<QObject *>();
    for (const char *name : {"logoOpacity", "logoScale"})
        viewModel->setProperty(name, 1.0);
    viewModel->setProperty("showSplash", false);
    const QObject *animation = nullptr;
    const auto begun = [&] {
        for (const QObject *child : moving->children()) {
            if (child->property("targetProperty").value<QQmlProperty>().name() == property)
                animation = child->property("animation").value<QObject *>();
        }
        return animation != nullptr;
    };
    QTRY_VERIFY_WITH_TIMEOUT(begun(), 20000);
    QTEST(animation->property("duration").toInt(), "milliseconds");
    QTEST(animation->property("easing").toEasingCurve().toCubicSpline(), "curve");
}

void MarovendaAppTest::storedNumberChoosesTheScreen_data()
{
    const auto row = columns<qint64, QByteArray>("id", "screen");
    row("nobody", 0, "LoginView");
    row("somebody", 42, "DashboardView");
    row("negative", -1, "DashboardView");
}

void MarovendaAppTest::storedNumberChoosesTheScreen()
{
    QFETCH(const qint64, id);
    QFETCH(const QByteArray, screen);
    Session::instance().setUserId(id);
    // They stay on the device at a sign-out and are no sign of a session.
    Session::instance().setUserNombre(u"Ana"_s);
    Session::instance().setUserEmail(u"ana@x"_s);
    Session::instance().setUserAvatarData("photo");
    // The network is not waited for.
    server.hold("/api_paquetes.php");
    QElapsedTimer since;
    since.start();
    const QQuickWindow *const window = startPastSplash();
    QVERIFY(since.elapsed() >= 2500);
    QVERIFY(find(window, screen));
    QVERIFY(!find(window, screen == "LoginView" ? "DashboardView" : "LoginView"));
    QTRY_COMPARE(server.held.size(), id == 0 ? 0 : 1);
}

void MarovendaAppTest::laterSwitchesAreAtOnceAndMakeANewScreen()
{
    Session &session = Session::instance();
    QQuickWindow *const window = startPastSplash();
    find(window, "email")->setProperty("text", u"alguien"_s);
    QQuickItem *const container = find(window, "NavigationContainer");
    QQmlComponent page(m_engine.get());
    page.setData("import Marovenda.Ui\nAppScreen {}", QUrl(u"qrc:/test/Page.qml"_s));
    QVERIFY(QMetaObject::invokeMethod(container, "push", Q_ARG(QQmlComponent *, &page)));
    QTRY_COMPARE(container->property("depth").toInt(), 2);
    // What a registration without a number writes switches nothing.
    session.setCustomer(0, u"Ana"_s, u"ana@x"_s);
    QCOMPARE(find(window, "NavigationContainer"), container);
    QCOMPARE(container->property("depth").toInt(), 2);

    session.setUserId(42);
    QVERIFY(!find(window, "LoginView"));
    QVERIFY(!find(window, "SplashView"));
    QCOMPARE(find(window, "NavigationContainer")->property("depth").toInt(), 1);
    const QPointer<QQuickItem> dashboard = find(window, "DashboardView");
    QVERIFY(dashboard);
    session.setUserId(43);
    QCOMPARE(find(window, "DashboardView"), dashboard.data());

    session.setUserId(0);
    QVERIFY(!find(window, "DashboardView"));
    QVERIFY(!find(window, "SplashView"));
    QVERIFY(find(window, "LoginView"));
    QCOMPARE(find(window, "email")->property("text").toString(), QString());
}

void MarovendaAppTest::windowHasTheDesignedSizes()
{
    QQuickWindow *const window = start();
    QCOMPARE(window->size(), QSize(390, 844));
    // A phone's shell may give less than any minimum.
    QVERIFY(window->minimumSize().isEmpty());
    QCOMPARE(window->title(), u"Marovenda"_s);
}

MAROVENDA_TEST(MarovendaAppTest)
#include "tst_MarovendaApp.moc"
