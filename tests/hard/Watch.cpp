#include "Watch.h"

#include "Contents.h"

#include <QDeadlineTimer>
#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

double statusInMiB(const QByteArray &field)
{
    const QByteArray status = contents(u"/proc/self/status"_s);
    const qsizetype at = status.indexOf(field + ':');
    if (at < 0)
        qFatal("The kernel does not tell %s", field.constData());
    return status.mid(at + field.size() + 1).trimmed().split(' ').first().toDouble() / 1024;
}

} // namespace

Watch::Watch() : m_last(now())
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout(&m_timer, [this] { look(); });
    m_timer.start(10);
}

Watch::Moment Watch::now()
{
    // Time computed, time waited for a processor, turns.
    const QList<QByteArray> fields = contents(u"/proc/thread-self/schedstat"_s).trimmed().split(' ');
    return {QDeadlineTimer::current(Qt::PreciseTimer).deadlineNSecs(), fields[0].toLongLong(),
            fields[1].toLongLong()};
}

void Watch::look()
{
    const Moment moment = now();
    const qint64 gap = moment.clock - m_last.clock - (moment.waited - m_last.waited);
    m_longestGap = std::max(m_longestGap, static_cast<double>(gap) / 1e6);
    m_longestRun = std::max(m_longestRun, static_cast<double>(moment.run - m_last.run) / 1e6);
    m_last = moment;
}

double Watch::memory() { return statusInMiB("VmRSS"); }

double Watch::peakMemory() { return statusInMiB("VmHWM"); }

void Watch::forgetPeak()
{
    QFile file(u"/proc/self/clear_refs"_s);
    if (!file.open(QFile::WriteOnly) || file.write("5") != 1)
        qFatal("cannot reset the peak of memory");
}
