#include "TimedApplication.h"

#include <QThread>

#include <algorithm>
#include <numeric>

bool TimedApplication::notify(QObject *receiver, QEvent *event)
{
    // Qt calls this for the events of other threads too.
    if (QThread::currentThread() != thread())
        return QGuiApplication::notify(receiver, event);
    bool taken = false;
    time([&] { taken = QGuiApplication::notify(receiver, event); });
    return taken;
}

TimedApplication::Time TimedApplication::longest() const
{
    return m_jobs.isEmpty() ? Time(0) : *std::ranges::max_element(m_jobs);
}

TimedApplication::Time TimedApplication::total() const
{
    return std::accumulate(m_jobs.begin(), m_jobs.end(), Time(0));
}
