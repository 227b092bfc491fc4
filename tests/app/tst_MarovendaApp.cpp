#include "MarovendaTest.h"
#include "Modules.h"
#include "ServiceTest.h"
#include "Session.h"

#include <QEasingCurve>
#include <QElapsedTimer>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQmlProperty>
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

    void splashStandsItsTimeAndFadesIntoTheFirstScreen();
    void logoComesInOnTheSplash();
    void motionHasTheDesignedTimeAndCurve_data();
    void motionHasTheDesignedTimeAndCurve();
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

void MarovendaAppTest::splashStandsItsTimeAndFadesIntoTheFirstScreen()
{
    QElapsedTimer since;
    since.start();
    QQuickWindow *const window = start();
    QVERIFY(window);
    QVERIFY(find(window, "SplashView"));
    const auto *const splash = find(window, "SplashView")->parentItem();
    const auto *const first = qobject_cast<QQuickItem *>(qmlContext(window)->objectForName(u"first"_s));
    QVERIFY(first);
    bool early = false;
    bool together = false;
    double opacityAtTheEnd = -1;
    connect(first, &QQuickItem::childrenChanged, window, [&] {
        early = early || since.elapsed() < 2500;
        together = together || !splash->childItems().isEmpty();
    });
    connect(splash, &QQuickItem::childrenChanged, window, [&] { opacityAtTheEnd = splash->opacity(); });
    QTRY_VERIFY_WITH_TIMEOUT(!find(window, "SplashView"), 20000);
    QVERIFY(find(window, "LoginView"));
    QVERIFY(!early);
    QVERIFY(together);
    QCOMPARE(opacityAtTheEnd, 0.0);
}

void MarovendaAppTest::logoComesInOnTheSplash()
{
    QQuickWindow *const window = start();
    const auto *const logo = find(window, "SplashView")->findChild<QQuickItem *>(u"logo"_s);
    QVERIFY(logo);
    QVERIFY(!window->property("appeared").toBool());
    QCOMPARE(logo->opacity(), 0.0);
    QCOMPARE(logo->scale(), 0.8);
    // Noted as they come, since both are gone with the splash.
    QList<double> opacities;
    QList<double> scales;
    connect(logo, &QQuickItem::opacityChanged, window, [&] { opacities.append(logo->opacity()); });
    connect(logo, &QQuickItem::scaleChanged, window, [&] { scales.append(logo->scale()); });
    QTRY_VERIFY(!opacities.isEmpty() && opacities.last() == 1.0);
    QTRY_VERIFY(!scales.isEmpty() && scales.last() == 1.0);
}

void MarovendaAppTest::motionHasTheDesignedTimeAndCurve_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("property");
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<QList<QPointF>>("curve");
    const QList<QPointF> easeIn{{0.42, 0}, {1, 1}, {1, 1}};
    const QList<QPointF> easeOut{{0, 0}, {0.58, 1}, {1, 1}};
    QTest::newRow("logo fades in") << u"logo"_s << u"opacity"_s << 1000 << easeOut;
    QTest::newRow("logo grows") << u"logo"_s << u"scale"_s << 1000 << easeOut;
    QTest::newRow("splash goes") << u"splash"_s << u"opacity"_s << 300 << easeIn;
    QTest::newRow("first screen comes") << u"first"_s << u"opacity"_s << 300 << easeIn;
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
        moving = qmlContext(window)->objectForName(u"first"_s);
    QVERIFY(moving);
    // An animation is made when it is first needed; the splash goes once the first screens are loaded.
    QObject *const viewModel = qmlContext(window)->objectForName(u"viewModel"_s);
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
    // They stay on the device at a sign-out and are no sign of a session.
    Session::instance().setUserNombre(u"Ana"_s);
    Session::instance().setUserEmail(u"ana@x"_s);
    Session::instance().setUserAvatarData("photo");
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
    // What a registration without a number writes switches nothing.
    Session::instance().setUserId(0);
    Session::instance().setUserNombre(u"Ana"_s);
    Session::instance().setUserEmail(u"ana@x"_s);
    QCOMPARE(find(window, "NavigationContainer"), container);
    QCOMPARE(container->property("depth").toInt(), 2);
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
