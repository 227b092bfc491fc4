#pragma once

#include <QGuiApplication>
#include <QList>

#include <chrono>
#include <utility>

/// Records how long the main thread takes for each event.
class TimedApplication final : public QGuiApplication {
    Q_OBJECT
public:
    using Time = std::chrono::nanoseconds;

    using QGuiApplication::QGuiApplication;

    /// Returns the time of the system's monotonic clock, which all processes share.
    static Time now() { return std::chrono::steady_clock::now().time_since_epoch(); }

    bool notify(QObject *receiver, QEvent *event) override;
    /// Does work that no event brings, and records its time like an event's.
    void time(const auto &work)
    {
        if (std::exchange(m_busy, true))
            return work();
        const Time start = now();
        work();
        m_jobs.append(now() - start);
        m_busy = false;
    }

    void clear() { m_jobs.clear(); }
    /// The durations of the events since `clear`, in their order.
    const QList<Time> &jobs() const { return m_jobs; }
    Time longest() const;
    Time total() const;

private:
    QList<Time> m_jobs;
    bool m_busy = false;
};
