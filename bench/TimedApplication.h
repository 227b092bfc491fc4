#pragma once

#include <QGuiApplication>
#include <QList>

#include <chrono>

/// Records how long the main thread takes for each event.
class TimedApplication final : public QGuiApplication {
    Q_OBJECT
public:
    using Time = std::chrono::nanoseconds;

    using QGuiApplication::QGuiApplication;

    /// Returns the time of the system's monotonic clock, which all processes share.
    static Time now() { return std::chrono::steady_clock::now().time_since_epoch(); }

    bool notify(QObject *receiver, QEvent *event) override;

    void clear() { m_jobs.clear(); }
    /// The durations of the events since `clear`, in their order.
    const QList<Time> &jobs() const { return m_jobs; }
    Time longest() const;
    Time total() const;

private:
    QList<Time> m_jobs;
    bool m_busy = false;
};
