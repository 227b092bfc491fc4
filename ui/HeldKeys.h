#pragma once

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QObject>

/// Marks key repeats that Qt misses. For each repeat, X11 sends a release and a press with the same time. Qt detects
/// the pair only if it has already read both events; otherwise it reports the repeat as a new press.
///
/// Create one instance, after the application.
class HeldKeys final : public QObject, public QAbstractNativeEventFilter {
public:
    explicit HeldKeys(QObject *parent = nullptr);

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// For each key: the real presses that X11 has reported and Qt has not delivered yet.
    QHash<quint32, int> m_undelivered;
    quint32 m_lastPress = 0;
    quint32 m_releasedKey = 0;
    quint32 m_releaseTime = 0;
};
