#include "AppTest.h"
#include "MarovendaTest.h"

#include <QProcess>
#include <QQmlAbstractUrlInterceptor>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The screens that follow the splash come from the test's server, which says when.
class FromServer : public QQmlAbstractUrlInterceptor {
public:
    explicit FromServer(QUrl server) : m_server(std::move(server)) {}

    QUrl intercept(const QUrl &url, DataType) override
    {
        return url.fileName() == u"FirstScreens.qml"_s ? m_server.resolved(QUrl(url.fileName())) : url;
    }

private:
    QUrl m_server;
};

constexpr auto screens = R"qml(import QtQuick
    QtObject {
        property Component login: Component { Item { objectName: "login" } }
        property Component dashboard: login
    })qml";

} // namespace

/// The root window where the screens behind the splash load slowly, or not at all.
class FirstScreensTest : public AppTest {
    Q_OBJECT
private Q_SLOTS:
    void splashStaysUntilTheyAreLoaded();
    void appSaysInOneLineThatTheyAreMissingAndEnds();

private:
    /// The item that fades.
    static QQuickItem *splash(const QQuickWindow *window)
    {
        QQuickItem *const shown = find(window, "SplashView");
        return shown ? shown->parentItem() : nullptr;
    }

    FromServer m_fromServer{QUrl(server.baseUrl())};
};

void FirstScreensTest::splashStaysUntilTheyAreLoaded()
{
    server.hold("/FirstScreens.qml");
    QQuickWindow *const window = start(&m_fromServer);
    QTRY_COMPARE(server.held.size(), 1);
    const auto *const viewModel = window->property("viewModel").value<QObject *>();
    QVERIFY(viewModel);
    QTRY_VERIFY(!viewModel->property("showSplash").toBool());
    // Longer than it would take to fade.
    for (int i = 0; i < 25; ++i) {
        QTest::qWait(20);
        QVERIFY(splash(window));
        QCOMPARE(splash(window)->opacity(), 1);
        QVERIFY(splash(window)->isEnabled());
    }
    server.held.first()->send(screens);
    QTRY_VERIFY(find(window, "login"));
    bool between = false;
    while (splash(window)) {
        between = between || (splash(window)->opacity() > 0 && splash(window)->opacity() < 1);
        QTest::qWait(5);
    }
    QVERIFY(between);
    QCOMPARE(find(window, "login")->parentItem()->opacity(), 1);
}

void FirstScreensTest::appSaysInOneLineThatTheyAreMissingAndEnds()
{
    QProcess app;
    app.start(QStringLiteral(MAROVENDA_WITHOUT_SCREENS), QStringList());
    QVERIFY(app.waitForFinished());
    QCOMPARE(app.exitStatus(), QProcess::NormalExit);
    QCOMPARE(app.exitCode(), 1);
    const QByteArrayList lines = app.readAllStandardError().trimmed().split('\n');
    QVERIFY2(lines.size() == 1, lines.join('\n').constData());
    QVERIFY2(lines.first().startsWith("marovenda: the screens cannot be loaded: qrc:/missing.qml"),
             lines.first().constData());
}

MAROVENDA_TEST(FirstScreensTest)
#include "tst_FirstScreens.moc"
