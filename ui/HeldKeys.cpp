#include "HeldKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <algorithm>
#include <cstring>

namespace {

// KeyPress and KeyRelease as the X protocol has them: https://www.x.org/releases/current/doc/xproto/x11protocol.html
constexpr int pressType = 2;
constexpr int releaseType = 3;
constexpr int sentByAProgram = 0x80;
constexpr int keyAt = 1;
constexpr int timeAt = 4;

/// In milliseconds. An input method may have kept an earlier press; after so long it comes no more.
constexpr quint32 longAgo = 1000;
constexpr int most = 8;

} // namespace

HeldKeys::HeldKeys(QObject *parent) : QObject(parent)
{
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        qApp->installNativeEventFilter(this);
    qApp->installEventFilter(this);
}

HeldKeys::~HeldKeys() { qApp->removeNativeEventFilter(this); }

bool HeldKeys::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *const bytes = static_cast<const uchar *>(message);
    const int type = bytes[0] & ~sentByAProgram;
    if (type != pressType && type != releaseType)
        return false;
    const quint32 key = bytes[keyAt];
    quint32 time = 0;
    std::memcpy(&time, bytes + timeAt, sizeof time);
    if (type == releaseType) {
        m_releasedKey = key;
        m_releaseTime = time;
        return false;
    }
    int &fresh = m_fresh[key];
    if (key == m_releasedKey && time == m_releaseTime)
        return false;
    fresh = time - m_lastPress > longAgo ? 1 : std::min(fresh + 1, most);
    m_lastPress = time;
    return false;
}

bool HeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !qobject_cast<QWindow *>(watched))
        return false;
    const auto *const press = static_cast<QKeyEvent *>(event);
    const auto fresh = m_fresh.find(press->nativeScanCode());
    if (fresh == m_fresh.end() || press->isAutoRepeat())
        return false;
    if (*fresh > 0) {
        --*fresh;
        return false;
    }
    QKeyEvent repeat(press->type(), press->key(), press->modifiers(), press->nativeScanCode(),
                     press->nativeVirtualKey(), press->nativeModifiers(), press->text(), true,
                     static_cast<quint16>(press->count()));
    QCoreApplication::sendEvent(watched, &repeat);
    event->setAccepted(repeat.isAccepted());
    return true;
}
