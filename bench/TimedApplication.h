#pragma once

#include <QGuiApplication>
#include <QList>

#include <chrono>

/// An application that notes how long each job of its main thread takes: an event with all that it calls.
class TimedApplication final : public QGuiApplication {
    Q_OBJECT
public:
    using Time = std::chrono::nanoseconds;

    using QGuiApplication::QGuiApplication;

    /// The system's monotonic clock, which all processes share.
    static Time now() { return std::chrono::steady_clock::now().time_since_epoch(); }

    bool notify(QObject *receiver, QEvent *event) override;

    /// Starts anew.
    void forget() { m_jobs.clear(); }
    /// What the jobs since then took, in their order.
    const QList<Time> &jobs() const { return m_jobs; }
    Time longest() const;
    Time total() const;

private:
    QList<Time> m_jobs;
    bool m_busy = false;
};
