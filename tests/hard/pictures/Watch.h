#pragma once

#include "Contents.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <algorithm>

/// Looks from a timer of 10 ms how long the thread that it belongs to stays away from its events. What it waited for
/// a processor in favour of others is not counted, so that a busy machine is not taken for a busy thread.
class Watch {
public:
    Watch() : m_last(now())
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.callOnTimeout(&m_timer, [this] { look(); });
        m_timer.start(10);
    }

    /// The longest time between two looks, and the longest that the thread computed between two, in milliseconds.
    double longestGap() const { return static_cast<double>(m_longestGap) / 1e6; }
    double longestRun() const { return static_cast<double>(m_longestRun) / 1e6; }

private:
    /// In nanoseconds.
    struct Moment {
        qint64 clock;
        qint64 run;
        qint64 waited;
    };

    static Moment now()
    {
        // Time computed, time waited for a processor, turns.
        const QList<QByteArray> fields = contents(QStringLiteral("/proc/thread-self/schedstat")).trimmed().split(' ');
        return {QDeadlineTimer::current(Qt::PreciseTimer).deadlineNSecs(), fields[0].toLongLong(),
                fields[1].toLongLong()};
    }

    void look()
    {
        const Moment moment = now();
        m_longestGap = std::max(m_longestGap, moment.clock - m_last.clock - (moment.waited - m_last.waited));
        m_longestRun = std::max(m_longestRun, moment.run - m_last.run);
        m_last = moment;
    }

    QTimer m_timer;
    Moment m_last;
    qint64 m_longestGap = 0;
    qint64 m_longestRun = 0;
};
