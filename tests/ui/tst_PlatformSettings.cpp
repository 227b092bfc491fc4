#include "MarovendaTest.h"
#include "PlatformSettings.h"
#include "TestScreen.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFile>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <utility>

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
    /// The version of its file chooser; invalid without one.
    QVariant fileChooser;
    int questions = 0;

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const QVariantList asked{u"org.freedesktop.portal.FileChooser"_s, u"version"_s};
        if (message.member() == u"Get"_s && (!fileChooser.isValid() || message.arguments() != asked))
            return connection.send(message.createErrorReply(u"org.freedesktop.DBus.Error.UnknownInterface"_s, {}));
        if (message.member() == u"Get"_s)
            return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(fileChooser))));
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

/// Once the bus has carried this there and back, it has carried the answers before it.
void untilAnswered()
{
    auto last = QDBusMessage::createMethodCall(service, path, settings, u"Read"_s);
    last << u"any"_s << u"other"_s;
    QDBusConnection::sessionBus().call(last, QDBus::BlockWithGui);
}

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
    void init()
    {
        m_portal.values.clear();
        m_portal.fileChooser = {};
        m_portal.questions = 0;
    }
    void motionIsReducedWhereTheDesktopSaysSo_data();
    void motionIsReducedWhereTheDesktopSaysSo();
    void changeIsFollowed();
    void nothingMovesWhenMotionIsReduced();
    void photoPickerIsThePortals_data();
    void photoPickerIsThePortals();
    void portalThatStartsLaterIsAsked();
    void portalIsPreferredUnlessAThemeIsChosen();
    void textScaleFollowsTheFontAgainstTheDesktopsStandard();

private:
    QProcess m_bus;
    Portal m_portal;
};

void PlatformSettingsTest::motionIsReducedWhereTheDesktopSaysSo_data()
{
    const auto row = columns<QVariant, QVariant, bool>("animations", "motion", "reduced");
    const QVariant nothing;
    row("nobody says", nothing, nothing, false);
    row("animations off", QVariant(false), nothing, true);
    row("reduced", nothing, QVariant(1u), true);
    // Either is enough.
    row("animations off, not reduced", QVariant(false), QVariant(0u), true);
    row("animations on, reduced", QVariant(true), QVariant(1u), true);
    row("animations on, not reduced", QVariant(true), QVariant(0u), false);
}

void PlatformSettingsTest::motionIsReducedWhereTheDesktopSaysSo()
{
    QFETCH(QVariant, animations);
    QFETCH(QVariant, motion);
    QFETCH(bool, reduced);
    m_portal.values = {{u"enable-animations"_s, animations}, {u"reduced-motion"_s, motion}};
    PlatformSettings platform;
    QTRY_COMPARE(m_portal.questions, 3);
    untilAnswered();
    QCOMPARE(platform.reducedMotion(), reduced);
}

void PlatformSettingsTest::changeIsFollowed()
{
    PlatformSettings platform;
    const auto change = [this](const QString &area, const QString &key, const QVariant &value) {
        const int before = m_portal.questions;
        m_portal.change(area, key, value);
        QTRY_COMPARE(m_portal.questions, before + 1);
        untilAnswered();
    };
    QTRY_COMPARE(m_portal.questions, 3);
    change(gnome, u"enable-animations"_s, false);
    QVERIFY(platform.reducedMotion());
    change(appearance, u"reduced-motion"_s, 1u);
    // Either is enough.
    change(gnome, u"enable-animations"_s, true);
    QVERIFY(platform.reducedMotion());
    change(appearance, u"reduced-motion"_s, 0u);
    QVERIFY(!platform.reducedMotion());
    // Other settings of these names do not matter.
    m_portal.change(appearance, u"color-scheme"_s, 1u);
    change(gnome, u"enable-animations"_s, true);
    QVERIFY(!platform.reducedMotion());
}

void PlatformSettingsTest::nothingMovesWhenMotionIsReduced()
{
    m_portal.values[u"enable-animations"_s] = false;
    TestScreen screen(R"qml(NavigationContainer {
        id: navigation
        property bool reduced: Theme.reducedMotion
        property list<int> durations: [Theme.pushDuration, Theme.alertDuration, Theme.thumbDuration]
        property Component page: Component { LoginView { objectName: "page" } }
        function open() { push(page) }
        root: Component { AppScreen {} }
    })qml");
    QTRY_VERIFY(screen.root()->property("reduced").toBool());
    QCOMPARE(screen.root()->property("durations").value<QList<int>>(), QList<int>({0, 0, 0}));
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

void PlatformSettingsTest::photoPickerIsThePortals_data()
{
    const auto row = columns<QByteArray, QVariant, bool>("theme", "fileChooser", "offered");
    row("portal", QByteArray("xdgdesktopportal"), QVariant(4u), true);
    row("portal without a file chooser", QByteArray("xdgdesktopportal"), QVariant(), false);
    row("another theme", QByteArray("gtk3"), QVariant(4u), false);
}

void PlatformSettingsTest::photoPickerIsThePortals()
{
    QFETCH(QByteArray, theme);
    QFETCH(bool, offered);
    QFETCH(QVariant, fileChooser);
    m_portal.fileChooser = fileChooser;
    const QByteArray before = qgetenv("QT_QPA_PLATFORMTHEME");
    qputenv("QT_QPA_PLATFORMTHEME", theme);
    PlatformSettings platform;
    QVERIFY(!platform.photoPicker());
    untilAnswered();
    QTest::qWait(0);
    QCOMPARE(platform.photoPicker(), offered);
    qputenv("QT_QPA_PLATFORMTHEME", before);
}

void PlatformSettingsTest::portalThatStartsLaterIsAsked()
{
    QDBusConnection connection = Portal::connection();
    QVERIFY(connection.unregisterService(service));
    PlatformSettings platform;
    m_portal.values = {{u"enable-animations"_s, false}, {u"text-scaling-factor"_s, 1.5}};
    QTest::qWait(0);
    QVERIFY(connection.registerService(service));
    QTRY_VERIFY(platform.reducedMotion());
    QTRY_COMPARE(platform.textScale(), 1.5);
    m_portal.change(gnome, u"text-scaling-factor"_s, 2.0);
    QTRY_COMPARE(platform.textScale(), 2.0);
    m_portal.change(gnome, u"text-scaling-factor"_s, -1.0);
    QTRY_COMPARE(platform.textScale(), 1.0);
}

void PlatformSettingsTest::portalIsPreferredUnlessAThemeIsChosen()
{
    const QByteArray before = qgetenv("QT_QPA_PLATFORMTHEME");
    qputenv("QT_QPA_PLATFORMTHEME", "gtk3");
    PlatformSettings::preferPortal();
    QCOMPARE(qgetenv("QT_QPA_PLATFORMTHEME"), QByteArray("gtk3"));
    qunsetenv("QT_QPA_PLATFORMTHEME");
    PlatformSettings::preferPortal();
    const bool there =
        QFile::exists(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platformthemes/libqxdgdesktopportal.so"_s);
    QCOMPARE(qgetenv("QT_QPA_PLATFORMTHEME"), QByteArray(there ? "xdgdesktopportal" : ""));
    qputenv("QT_QPA_PLATFORMTHEME", before);
}

void PlatformSettingsTest::textScaleFollowsTheFontAgainstTheDesktopsStandard()
{
    const QFont before = QGuiApplication::font();
    QFont font = before;
    PlatformSettings platform;
    for (const double points : {9.0, 13.5, 18.0, 200.0, 1.0}) {
        font.setPointSizeF(points);
        QGuiApplication::setFont(font);
        QTRY_COMPARE(platform.textScale(), std::clamp(points / 9, 0.8, 3.0));
    }
    font.setPointSizeF(22);
    QGuiApplication::setFont(font);
    const bool hasGtkTheme =
        QFile::exists(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platformthemes/libqgtk3.so"_s);
    for (const auto &[desktop, standard] : {std::pair("KDE", 10), std::pair("ubuntu:GNOME", hasGtkTheme ? 11 : 9)}) {
        qputenv("XDG_CURRENT_DESKTOP", desktop);
        QCOMPARE(PlatformSettings().textScale(), 22.0 / standard);
    }
    qunsetenv("XDG_CURRENT_DESKTOP");
    // A size in pixels says nothing.
    font.setPixelSize(40);
    QGuiApplication::setFont(font);
    QCOMPARE(PlatformSettings().textScale(), 1);
    QGuiApplication::setFont(before);
}

MAROVENDA_TEST(PlatformSettingsTest)
#include "tst_PlatformSettings.moc"
