#include "Trial.h"

#include "HttpTransport.h"
#include "Watch.h"

#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QByteArray told(const std::optional<QByteArray> &record) { return record ? record->left(60) : "nothing"; }

/// In MiB.
double memoryAtStart = 0;

} // namespace

double peakMemory() { return Watch::peakMemory() - memoryAtStart; }

void forgetPeak()
{
    Watch::forgetPeak();
    memoryAtStart = Watch::memory();
}

void Trial::run(const Faults::Fault &fault, std::size_t call)
{
    const auto &calls = Calls::all();
    const QByteArray wrong =
        attempt(fault, calls[call], calls[(call + 3) % calls.size()], calls[(call + 5) % calls.size()]);
    m_tally.note(m_row + (fault.row.isEmpty() ? fault.name : fault.row), wrong.isEmpty(),
                 calls[call].name + ", " + fault.name + ": " + wrong);
}

QByteArray Trial::attempt(const Faults::Fault &fault, const Calls::Call &call, const Calls::Call &held,
                          const Calls::Call &next)
{
    const QByteArray text = "try " + QByteArray::number(1'000'000 + ++m_number);
    m_wire.forget();
    m_wire.script(held.path, Steps().hold().send(Faults::whole(held.reply(text))).close());
    const auto waiting = start(held, text);
    if (!m_wire.arrival(held.path))
        return "the call that is to be held has not come";

    const QByteArray reply = fault.body.isEmpty() ? call.reply(text) : fault.body;
    const Steps steps = fault.steps(reply);
    if (fault.refused)
        m_wire.listen(false);
    else if (fault.when == When::Door)
        m_wire.doors(steps);
    else
        m_wire.script(call.path, steps, fault.when);
    forgetPeak();
    const auto delivery = start(call, text + QByteArray(fault.requestSize, 'p'));
    const bool ended = until([&] { return delivery->completions > 0; });
    const double taken = peakMemory();
    if (fault.refused)
        m_wire.listen(true);
    m_wire.openDoors();
    if (!ended)
        return "has not ended";
    // By then the call that is held has ended by silence too.
    const bool forgotten =
        fault.isForgettable && !call.isPost() && std::chrono::milliseconds(delivery->took) >= HttpLimits().silence;
    if (forgotten ? waiting->record.has_value() : waiting->completions != 0)
        return "another call ended with it, with " + told(waiting->record);

    m_wire.release(held.path);
    m_wire.script(next.path, Steps().send(Faults::whole(next.reply(text))).close());
    const auto last = start(next, text);
    if (!until([&] { return waiting->completions > 0 && last->completions > 0; }))
        return "another call has not ended";
    if ((!forgotten && waiting->record != held.reply(text)) || last->record != next.reply(text))
        return "another call got " + told(waiting->record) + ", the next " + told(last->record);
    if (taken > memoryLimit)
        return QByteArray::number(taken) + " MB of memory";
    return judge(fault, call, reply, *delivery);
}

Calls::DeliveryPtr Trial::start(const Calls::Call &call, const QByteArray &text)
{
    m_all += call.start(text);
    return m_all.last();
}

QByteArray Trial::judge(const Faults::Fault &fault, const Calls::Call &call, const QByteArray &expected,
                        const Calls::Delivery &delivery)
{
    if (delivery.completions != 1)
        return "completed " + QByteArray::number(delivery.completions) + " times";
    if (delivery.misplaced)
        return "completed inside the call or on another thread";
    const bool some = delivery.record.has_value();
    if (some ? fault.gets == Faults::Gets::Absent || delivery.record != expected : fault.gets == Faults::Gets::Record)
        return "got " + told(delivery.record) + ", the reply held " + expected.left(60);
    return counted(fault, call);
}

QByteArray Trial::counted(const Faults::Fault &fault, const Calls::Call &call)
{
    const QJsonObject report = m_wire.report();
    const int came = report[u"lines"_s].toObject()[QString::fromLatin1(call.firstLine)].toInt();
    const int most = fault.posts == Faults::Posts::None ? 0 : 1;
    const int least = fault.posts == Faults::Posts::One ? 1 : 0;
    if (came < least || (came > most && call.isPost()))
        return QByteArray::number(came) + " requests came";
    if (const int visits = report[u"visitors"_s].toInt())
        return QByteArray::number(visits) + " visits elsewhere";
    for (const QString &line : report[u"lines"_s].toObject().keys()) {
        const bool known = std::ranges::any_of(
            Calls::all(), [&](const Calls::Call &one) { return one.firstLine == line.toLatin1(); });
        if (!known)
            return "asked for " + line.toUtf8();
    }
    return {};
}

void Trial::finish()
{
    int twice = 0;
    for (const auto &delivery : m_all)
        twice += delivery->completions != 1 || delivery->misplaced;
    m_tally.note(m_row + "one completion of every call, to the end", twice == 0,
                 QByteArray::number(twice) + " calls");
}
