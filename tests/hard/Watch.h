#pragma once

#include <QTimer>

/// Looks from a timer of 10 ms how long the thread that it belongs to stays away from its events. What it waited for
/// a processor in favour of others is not counted, so that a busy machine is not taken for a busy thread.
class Watch {
public:
    Watch();

    /// The longest time between two looks, in milliseconds.
    double longestGap() const { return m_longestGap; }
    /// The longest time that the thread computed between two looks, in milliseconds.
    double longestRun() const { return m_longestRun; }

    /// How much memory the process has in use, and how much it had at most since `forgetPeak`, in MiB.
    static double memory();
    static double peakMemory();
    static void forgetPeak();

private:
    /// In nanoseconds.
    struct Moment {
        qint64 clock;
        qint64 run;
        qint64 waited;
    };
    static Moment now();
    void look();

    QTimer m_timer;
    Moment m_last;
    double m_longestGap = 0;
    double m_longestRun = 0;
};
