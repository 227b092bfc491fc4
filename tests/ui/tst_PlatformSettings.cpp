#include "MarovendaTest.h"
#include "PlatformSettings.h"
#include "TestScreen.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QGuiApplication>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop"_L1;
constexpr auto path = "/org/freedesktop/portal/desktop"_L1;
constexpr auto settings = "org.freedesktop.portal.Settings"_L1;
constexpr auto gnome = "org.gnome.desktop.interface"_L1;
constexpr auto appearance = "org.freedesktop.appearance"_L1;

/// A desktop's settings portal on the tests' own bus.
class Portal : public QDBusVirtualObject {
public:
    QHash<QString, QVariant> values;
    int questions = 0;

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() != u"Read"_s)
            return false;
        ++questions;
        const QVariant value = values.value(message.arguments().at(1).toString());
        if (!value.isValid())
            return connection.send(message.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, {}));
        return connection.send(
            message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(value))))));
    }

    void change(const QString &area, const QString &key, const QVariant &value)
    {
        values[key] = value;
        auto told = QDBusMessage::createSignal(path, settings, u"SettingChanged"_s);
        told << area << key << QVariant::fromValue(QDBusVariant(value));
        connection().send(told);
    }

    static QDBusConnection connection() { return QDBusConnection(u"portal"_s); }
};

} // namespace

/// The app and the portal meet on a bus that ends with the test.
class PlatformSettingsTest : public QObject {
    Q_OBJECT
public:
    PlatformSettingsTest()
    {
        m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address=1"_s});
        if (!m_bus.waitForReadyRead(20000))
            qFatal("dbus-daemon did not start");
        const QByteArray address = m_bus.readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QDBusConnection connection = QDBusConnection::connectToBus(QString::fromUtf8(address), u"portal"_s);
        connection.registerVirtualObject(path, &m_portal);
        connection.registerService(service);
    }
    ~PlatformSettingsTest() override
    {
        QDBusConnection::disconnectFromBus(u"portal"_s);
        m_bus.terminate();
        m_bus.waitForFinished();
    }

private Q_SLOTS:
    void init() { m_portal.values.clear(); }
    void motionIsReducedWhereTheDesktopSaysSo_data();
    void motionIsReducedWhereTheDesktopSaysSo();
    void changeIsFollowed();
    void nothingMovesWhenMotionIsReduced();
    void textScaleFollowsTheFont();
    void fontInPixelsSaysNothing();

private:
    QProcess m_bus;
    Portal m_portal;
};

void PlatformSettingsTest::motionIsReducedWhereTheDesktopSaysSo_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("reduced");
    QTest::newRow("nobody says") << QString() << QVariant() << false;
    QTest::newRow("animations off") << u"enable-animations"_s << QVariant(false) << true;
    QTest::newRow("animations on") << u"enable-animations"_s << QVariant(true) << false;
    QTest::newRow("reduced") << u"reduced-motion"_s << QVariant(1u) << true;
    QTest::newRow("not reduced") << u"reduced-motion"_s << QVariant(0u) << false;
}

void PlatformSettingsTest::motionIsReducedWhereTheDesktopSaysSo()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(bool, reduced);
    if (!key.isEmpty())
        m_portal.values[key] = value;
    const int before = m_portal.questions;
    PlatformSettings platform;
    QTRY_COMPARE(m_portal.questions, before + 2);
    if (reduced)
        QTRY_VERIFY(platform.reducedMotion());
    // Both answers have come once the bus has carried a later one.
    auto last = QDBusMessage::createMethodCall(service, path, settings, u"Read"_s);
    last << u"any"_s << u"other"_s;
    QDBusConnection::sessionBus().call(last, QDBus::BlockWithGui);
    QCOMPARE(platform.reducedMotion(), reduced);
}

void PlatformSettingsTest::changeIsFollowed()
{
    PlatformSettings platform;
    m_portal.change(gnome, u"enable-animations"_s, false);
    QTRY_VERIFY(platform.reducedMotion());
    m_portal.change(gnome, u"enable-animations"_s, true);
    QTRY_VERIFY(!platform.reducedMotion());
    m_portal.change(appearance, u"reduced-motion"_s, 1u);
    QTRY_VERIFY(platform.reducedMotion());
}

void PlatformSettingsTest::nothingMovesWhenMotionIsReduced()
{
    m_portal.values[u"enable-animations"_s] = false;
    TestScreen screen(R"qml(NavigationContainer {
        id: navigation
        property bool reduced: Theme.reducedMotion
        property Component page: Component { LoginView { objectName: "page" } }
        function open() { push(page) }
        root: Component { AppScreen {} }
    })qml");
    QTRY_VERIFY(screen.root()->property("reduced").toBool());
    QMetaObject::invokeMethod(screen.root(), "open");
    // In place within the same turn.
    QCOMPARE(screen.root()->property("progress").toReal(), 1);
    QCOMPARE(screen.find(u"page"_s)->x(), 0);
    QVERIFY(!screen.root()->property("moving").toBool());
    screen.tap(screen.find(u"recuperar"_s));
    QCOMPARE(screen.find(u"recuperarDialog"_s)->opacity(), 1);
    screen.key(Qt::Key_Escape);
    QVERIFY(!screen.find(u"recuperarDialog"_s)->isVisible());
    screen.key(Qt::Key_Escape);
    QCOMPARE(screen.root()->property("depth").toInt(), 1);
    QVERIFY(!screen.root()->property("moving").toBool());
}

void PlatformSettingsTest::textScaleFollowsTheFont()
{
    PlatformSettings platform;
    QFont font = QGuiApplication::font();
    for (const double points : {9.0, 13.5, 18.0, 200.0, 1.0}) {
        font.setPointSizeF(points);
        QGuiApplication::setFont(font);
        QTRY_COMPARE(platform.textScale(), std::clamp(points / 9, 0.8, 3.0));
    }
    font.setPointSizeF(9);
    QGuiApplication::setFont(font);
}

void PlatformSettingsTest::fontInPixelsSaysNothing()
{
    const QFont before = QGuiApplication::font();
    QFont font = before;
    font.setPixelSize(40);
    QGuiApplication::setFont(font);
    const PlatformSettings platform;
    QCOMPARE(platform.textScale(), 1);
    QGuiApplication::setFont(before);
}

int main(int argc, char *argv[])
{
    return runMarovendaTest([] { return std::make_unique<PlatformSettingsTest>(); }, argc, argv);
}
#include "tst_PlatformSettings.moc"
