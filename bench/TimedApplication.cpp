#include "TimedApplication.h"

#include <algorithm>
#include <numeric>
#include <utility>

bool TimedApplication::notify(QObject *receiver, QEvent *event)
{
    if (std::exchange(m_busy, true))
        return QGuiApplication::notify(receiver, event);
    const Time start = now();
    const bool taken = QGuiApplication::notify(receiver, event);
    m_jobs.append(now() - start);
    m_busy = false;
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
