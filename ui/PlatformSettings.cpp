#include "PlatformSettings.h"

#include "Copying.h"
#include "SecureFieldAccessible.h"

#include <QEvent>
#include <QFile>
#include <QFont>
#include <QGuiApplication>
#include <QLibraryInfo>

#include <algorithm>

#ifdef MAROVENDA_DBUS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#endif

using namespace Qt::StringLiterals;

namespace {

/// Whether Qt has this platform theme; elsewhere than on Linux there is none to choose.
[[maybe_unused]] bool isInstalled(QLatin1StringView theme)
{
    return QFile::exists(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platformthemes/lib"_L1 + theme + ".so"_L1);
}

/// The size of the platform's default font before the customer changes it. GNOME uses 11 points, Plasma 10, and Qt
/// uses 9 on desktops without a platform theme of Qt's, which GNOME often is.
double standardPointSize()
{
#if defined(Q_OS_MACOS)
    return 13;
#elif defined(Q_OS_ANDROID)
    return 14;
#elif defined(Q_OS_IOS)
    return 17;
#elif defined(Q_OS_WIN)
    return 9;
#else
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP").toLower();
    if (desktop.contains("kde"))
        return 10;
    for (const char *gtk : {"gnome", "unity", "phosh", "cinnamon", "mate", "xfce", "budgie"}) {
        if (desktop.contains(gtk))
            return isInstalled("qgtk3"_L1) ? 11 : 9;
    }
    return 9;
#endif
}

#ifdef MAROVENDA_DBUS
constexpr auto portalService = "org.freedesktop.portal.Desktop"_L1;
constexpr auto portalPath = "/org/freedesktop/portal/desktop"_L1;
constexpr auto portalSettings = "org.freedesktop.portal.Settings"_L1;

// Either of two settings reduces motion: GNOME's own, and the newer one of all desktops
// (https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html).
constexpr auto gnomeNamespace = "org.gnome.desktop.interface"_L1;
constexpr auto gnomeKey = "enable-animations"_L1;
constexpr auto gnomeTextKey = "text-scaling-factor"_L1;
constexpr auto appearanceNamespace = "org.freedesktop.appearance"_L1;
constexpr auto appearanceKey = "reduced-motion"_L1;
#endif

} // namespace

PlatformSettings::PlatformSettings(QObject *parent) : QObject(parent)
{
    // Qt asks the factory that was installed last first, so install ours after Qt Quick's.
    SecureFieldAccessible::install();
    Copying::install();
    readTextScale();
    qGuiApp->installEventFilter(this);
    followPortal();
}

void PlatformSettings::preferPortal()
{
#ifdef MAROVENDA_DBUS
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORMTHEME") && isInstalled("qxdgdesktopportal"_L1))
        qputenv("QT_QPA_PLATFORMTHEME", "xdgdesktopportal");
#endif
}

void PlatformSettings::queryPhotoPicker()
{
#ifdef MAROVENDA_DBUS
    // The portal shows the desktop's own dialog. Do not start a portal just to find out whether it runs.
    auto call =
        QDBusMessage::createMethodCall(portalService, portalPath, "org.freedesktop.DBus.Properties"_L1, u"Get"_s);
    call << u"org.freedesktop.portal.FileChooser"_s << u"version"_s;
    call.setAutoStartService(false);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || qgetenv("QT_QPA_PLATFORMTHEME") != "xdgdesktopportal")
        return;
    auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        watcher->deleteLater();
        m_photoPicker = !reply.isError();
        emit photoPickerChanged();
    });
#elif defined(Q_OS_ANDROID) || defined(Q_OS_IOS) || defined(Q_OS_MACOS) || defined(Q_OS_WIN)
    m_photoPicker = true;
#endif
}

bool PlatformSettings::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qGuiApp && event->type() == QEvent::ApplicationFontChange)
        readTextScale();
    return QObject::eventFilter(watched, event);
}

void PlatformSettings::readTextScale()
{
    const double size = QGuiApplication::font().pointSizeF();
    // A font that is set in pixels has no point size.
    const double fontScale = size > 0 ? size / standardPointSize() : 1.0;
    const double scale = std::clamp(fontScale * m_textFactor, 0.8, 3.0);
    if (qFuzzyCompare(scale, m_textScale))
        return;
    m_textScale = scale;
    emit textScaleChanged();
}

void PlatformSettings::setReduced(bool &setting, bool reduced)
{
    const bool before = reducedMotion();
    setting = reduced;
    if (reducedMotion() != before)
        emit reducedMotionChanged();
}

void PlatformSettings::followPortal()
{
#ifdef MAROVENDA_DBUS
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        bus.connect(portalService, portalPath, portalSettings, u"SettingChanged"_s, this,
                    SLOT(portalSettingChanged(QString, QString)));
        // The portal may start after the app.
        auto *const watcher =
            new QDBusServiceWatcher(portalService, bus, QDBusServiceWatcher::WatchForRegistration, this);
        connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &PlatformSettings::queryPortal);
    }
#endif
    queryPortal();
}

void PlatformSettings::queryPortal()
{
#ifdef MAROVENDA_DBUS
    if (QDBusConnection::sessionBus().isConnected()) {
        portalSettingChanged(gnomeNamespace, gnomeKey);
        portalSettingChanged(gnomeNamespace, gnomeTextKey);
        portalSettingChanged(appearanceNamespace, appearanceKey);
    }
#endif
    queryPhotoPicker();
}

void PlatformSettings::portalSettingChanged(const QString &area, const QString &key)
{
#ifdef MAROVENDA_DBUS
    const bool animations = area == gnomeNamespace && key == gnomeKey;
    const bool text = area == gnomeNamespace && key == gnomeTextKey;
    if (!animations && !text && !(area == appearanceNamespace && key == appearanceKey))
        return;
    auto call = QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, u"Read"_s);
    call << area << key;
    // Do not start a portal for this: without one, motion is on.
    call.setAutoStartService(false);
    auto *const watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, animations, text, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        watcher->deleteLater();
        if (reply.isError())
            return;
        QVariant value = reply.value().variant();
        // The portal wraps the setting in a second variant.
        if (value.canConvert<QDBusVariant>())
            value = value.value<QDBusVariant>().variant();
        if (animations) {
            setReduced(m_animationsOff, !value.toBool());
        } else if (text) {
            m_textFactor = value.toDouble() > 0 ? value.toDouble() : 1.0;
            readTextScale();
        } else {
            setReduced(m_motionReduced, value.toUInt() == 1);
        }
    });
#else
    Q_UNUSED(area)
    Q_UNUSED(key)
#endif
}
