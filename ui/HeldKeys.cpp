#include "HeldKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <algorithm>
#include <cstring>

namespace {

// The layout of KeyPress and KeyRelease events: https://www.x.org/releases/current/doc/xproto/x11protocol.html
constexpr int pressType = 2;
constexpr int releaseType = 3;
constexpr int syntheticFlag = 0x80;
constexpr int keyOffset = 1;
constexpr int timeOffset = 4;

/// In milliseconds. An input method may keep a press to itself; after this time Qt no longer delivers it.
constexpr quint32 deliveryTimeout = 1000;
constexpr int maxUndelivered = 8;

} // namespace

HeldKeys::HeldKeys(QObject *parent) : QObject(parent)
{
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        qApp->installNativeEventFilter(this);
    qApp->installEventFilter(this);
}

bool HeldKeys::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *const bytes = static_cast<const uchar *>(message);
    const int type = bytes[0] & ~syntheticFlag;
    if (type != pressType && type != releaseType)
        return false;
    const quint32 key = bytes[keyOffset];
    quint32 time = 0;
    std::memcpy(&time, bytes + timeOffset, sizeof time);
    if (type == releaseType) {
        m_releasedKey = key;
        m_releaseTime = time;
        return false;
    }
    int &undelivered = m_undelivered[key];
    if (key == m_releasedKey && time == m_releaseTime)
        return false;
    undelivered = time - m_lastPress > deliveryTimeout ? 1 : std::min(undelivered + 1, maxUndelivered);
    m_lastPress = time;
    return false;
}

bool HeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !qobject_cast<QWindow *>(watched))
        return false;
    const auto *const press = static_cast<QKeyEvent *>(event);
    const auto undelivered = m_undelivered.find(press->nativeScanCode());
    if (undelivered == m_undelivered.end() || press->isAutoRepeat())
        return false;
    if (*undelivered > 0) {
        --*undelivered;
        return false;
    }
    QKeyEvent repeat(press->type(), press->key(), press->modifiers(), press->nativeScanCode(),
                     press->nativeVirtualKey(), press->nativeModifiers(), press->text(), true,
                     static_cast<quint16>(press->count()));
    QCoreApplication::sendEvent(watched, &repeat);
    event->setAccepted(repeat.isAccepted());
    return true;
}
