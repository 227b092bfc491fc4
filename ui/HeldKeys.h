#pragma once

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QObject>

/// Marks the repeats of a key that is held down where the platform does not. X11 sends a release and a press for each
/// repeat, both of one time, and Qt sees that they belong together only if it has read both already; otherwise the
/// repeat passes for a new press.
///
/// To be made after the application, once.
class HeldKeys final : public QObject, public QAbstractNativeEventFilter {
public:
    explicit HeldKeys(QObject *parent = nullptr);
    ~HeldKeys() override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// Presses by hand that have come from the display and not from Qt yet, for each key.
    QHash<quint32, int> m_fresh;
    quint32 m_lastPress = 0;
    quint32 m_releasedKey = 0;
    quint32 m_releaseTime = 0;
};
