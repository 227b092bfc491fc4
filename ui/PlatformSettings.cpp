#include "PlatformSettings.h"

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
#include <QDBusVariant>
#endif

using namespace Qt::StringLiterals;

namespace {

/// The size, in points, that the platform's default font has while nobody has changed it. A desktop without a theme
/// of its own gets Qt's 9; GNOME's interface font is 11 and Plasma's 10.
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
            return 11;
    }
    return 9;
#endif
}

#ifdef MAROVENDA_DBUS
constexpr auto portalService = "org.freedesktop.portal.Desktop"_L1;
constexpr auto portalPath = "/org/freedesktop/portal/desktop"_L1;
constexpr auto portalSettings = "org.freedesktop.portal.Settings"_L1;

// Two settings tell, and either is enough: GNOME's own, and the one that all desktops share since
// (https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html).
constexpr auto gnomeArea = "org.gnome.desktop.interface"_L1;
constexpr auto gnomeKey = "enable-animations"_L1;
constexpr auto appearanceArea = "org.freedesktop.appearance"_L1;
constexpr auto appearanceKey = "reduced-motion"_L1;
#endif

} // namespace

PlatformSettings::PlatformSettings(QObject *parent) : QObject(parent)
{
    // Qt Quick is loaded by now, and of two factories the later one is asked first.
    SecureFieldAccessible::install();
    readTextScale();
    qGuiApp->installEventFilter(this);
    askForMotion();
    askForPhotoPicker();
}

void PlatformSettings::preferPortal()
{
#ifdef MAROVENDA_DBUS
    const QString plugin =
        QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platformthemes/libqxdgdesktopportal.so"_L1;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORMTHEME") && QFile::exists(plugin))
        qputenv("QT_QPA_PLATFORMTHEME", "xdgdesktopportal");
#endif
}

void PlatformSettings::askForPhotoPicker()
{
#ifdef MAROVENDA_DBUS
    // The portal's dialog is the desktop's own. Nobody is started for the answer.
    auto question =
        QDBusMessage::createMethodCall(portalService, portalPath, "org.freedesktop.DBus.Properties"_L1, u"Get"_s);
    question << u"org.freedesktop.portal.FileChooser"_s << u"version"_s;
    question.setAutoStartService(false);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || qgetenv("QT_QPA_PLATFORMTHEME") != "xdgdesktopportal")
        return;
    auto *const answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        answer->deleteLater();
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
    // A font set in pixels says nothing about the customer's wish.
    const double scale = size > 0 ? std::clamp(size / standardPointSize(), 0.8, 3.0) : 1.0;
    if (qFuzzyCompare(scale, m_textScale))
        return;
    m_textScale = scale;
    emit textScaleChanged();
}

void PlatformSettings::noteMotion(bool &wish, bool reduced)
{
    const bool before = reducedMotion();
    wish = reduced;
    if (reducedMotion() != before)
        emit reducedMotionChanged();
}

void PlatformSettings::askForMotion()
{
#ifdef MAROVENDA_DBUS
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(portalService, portalPath, portalSettings, u"SettingChanged"_s, this,
                SLOT(portalSettingChanged(QString, QString)));
    portalSettingChanged(gnomeArea, gnomeKey);
    portalSettingChanged(appearanceArea, appearanceKey);
#endif
}

void PlatformSettings::portalSettingChanged(const QString &area, const QString &key)
{
#ifdef MAROVENDA_DBUS
    const bool gnome = area == gnomeArea && key == gnomeKey;
    if (!gnome && !(area == appearanceArea && key == appearanceKey))
        return;
    auto question = QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, u"Read"_s);
    question << area << key;
    // Nobody is started for the answer: where no portal runs, motion is on.
    question.setAutoStartService(false);
    auto *const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, gnome, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        answer->deleteLater();
        if (reply.isError())
            return;
        QVariant value = reply.value().variant();
        // The portal wraps the setting in a second variant.
        if (value.canConvert<QDBusVariant>())
            value = value.value<QDBusVariant>().variant();
        if (gnome)
            noteMotion(m_animationsOff, !value.toBool());
        else
            noteMotion(m_motionReduced, value.toUInt() == 1);
    });
#else
    Q_UNUSED(area)
    Q_UNUSED(key)
#endif
}
