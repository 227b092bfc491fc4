#include "Calls.h"
#include "Faults.h"
#include "HttpTransport.h"
#include "Silences.h"
#include "Trial.h"

#include <QCoreApplication>
#include <QJsonObject>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using Faults::Fault;

namespace Silences {

namespace {

/// The one call with much to send.
constexpr std::size_t profile = 3;

struct Slow {
    const char *name;
    std::size_t call;
    int requestSize;
    Steps (*steps)(const QByteArray &body);
};

constexpr int photo = 9'000'000;
constexpr int photoRate = 100'000;

/// Longer than the limit, and never silent for as long.
const QList<Slow> &slow()
{
    static const QList<Slow> all{
        {"an upload of 90 seconds at 100 kB a second", profile, photo,
         [](const QByteArray &body) { return Steps().narrow().sip(photoRate).send(Faults::whole(body)); }},
        {"a byte every ten seconds for 80 seconds", 7, 0,
         [](const QByteArray &body) {
             const QByteArray whole = Faults::whole(body);
             return Steps().send(whole.chopped(8)).pace(whole.last(8), 10);
         }},
    };
    return all;
}

QByteArray judge(const Fault &fault, const Calls::Call &call, const Calls::Delivery &delivery,
                 const QJsonObject &lines)
{
    const qint64 limit = HttpLimits().silence.count();
    if (delivery.completions != 1 || delivery.misplaced)
        return "completed " + QByteArray::number(delivery.completions) + " times, or in the wrong place";
    if (delivery.record)
        return "got " + *delivery.record;
    if ((delivery.took < limit && fault.gets != Faults::Gets::Either) || delivery.took > limit + late)
        return "ended after " + QByteArray::number(delivery.took) + " ms";
    const int came = lines[QString::fromLatin1(call.firstLine)].toInt();
    if (call.isPost() && came != (fault.posts == Faults::Posts::None ? 0 : 1))
        return QByteArray::number(came) + " requests came";
    return {};
}

/// A fault on many calls at once, and one call afterwards.
void silence(Tally &tally, Wire &wire, const Fault &fault, const QList<std::size_t> &numbers)
{
    const auto &calls = Calls::all();
    QList<std::pair<std::size_t, Calls::DeliveryPtr>> all;
    for (const std::size_t number : numbers) {
        if (fault.isLarge() && number != profile)
            continue;
        wire.script(calls[number].path, fault.steps("{}"), fault.when);
        if (fault.when == When::Door)
            wire.doors(fault.steps("{}"));
        all.append({number, nullptr});
    }
    forgetPeak();
    for (auto &[number, delivery] : all)
        delivery = calls[number].start(QByteArray(fault.requestSize, 'p'));
    until([&] { return std::ranges::all_of(all, [](const auto &one) { return one.second->completions > 0; }); }, 150);
    const double memory = peakMemory();
    const QJsonObject lines = wire.report()[u"lines"_s].toObject();

    wire.forget();
    wire.script(calls[0].path, Steps().send(Faults::whole(calls[0].reply("afterwards"))));
    const auto last = calls[0].start("afterwards");
    until([&] { return last->completions > 0; });
    for (const auto &[number, delivery] : all) {
        QByteArray wrong = judge(fault, calls[number], *delivery, lines);
        if (memory > memoryLimit)
            wrong += " " + QByteArray::number(memory) + " MB of memory";
        if (last->record != calls[0].reply("afterwards"))
            wrong += " the client is of no use afterwards";
        tally.note(fault.name, wrong.isEmpty(), calls[number].name + ": " + wrong);
    }
}

void goOn(Tally &tally, Wire &wire, const Slow &slow)
{
    const Calls::Call &call = Calls::all()[slow.call];
    const QByteArray reply = call.reply("slow");
    wire.script(call.path, slow.steps(reply), slow.requestSize > 0 ? When::Head : When::Request);
    const auto delivery = call.start(QByteArray(slow.requestSize, 'p'));
    until([&] { return delivery->completions > 0; }, 200);
    const int came = wire.report()[u"lines"_s].toObject()[QString::fromLatin1(call.firstLine)].toInt();
    tally.note(slow.name,
               delivery->completions == 1 && delivery->record == reply && came == 1 &&
                   delivery->took > HttpLimits().silence.count() + late,
               "completed " + QByteArray::number(delivery->completions) + " times, got " +
                   delivery->record.value_or("nothing") + " after " + QByteArray::number(delivery->took) + " ms");
}

/// Runs the checks of these names at once and takes over what they counted.
void together(Tally &tally, const QStringList &names)
{
    std::vector<std::unique_ptr<QProcess>> all;
    for (const QString &name : names) {
        auto &process = all.emplace_back(std::make_unique<QProcess>());
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process->start(QCoreApplication::applicationFilePath(), {u"alone"_s, name, u"long"_s});
    }
    until(
        [&] {
            return std::ranges::all_of(all, [](const auto &one) { return one->state() == QProcess::NotRunning; });
        },
        250);
    for (const auto &process : all) {
        const QByteArrayList row = process->readAllStandardOutput().trimmed().split('\t');
        const QString name = names[&process - all.data()];
        if (!tally.note("each slow check ends", row.size() == 3 && process->state() == QProcess::NotRunning,
                        name.toUtf8()))
            continue;
        for (int i = 0; i < row[1].toInt(); ++i)
            tally.note(row[0], i >= row[2].toInt(), "as told above");
    }
}

} // namespace

void real(Tally &tally)
{
    QStringList silent;
    for (const Fault &fault : Faults::silences())
        silent += QString::fromUtf8(fault.name);
    together(tally, silent);
    // These keep the processors busy, so that the others' times would not be theirs.
    QStringList busy;
    for (const Fault &fault : Faults::endlessHeads(-1))
        busy += QString::fromUtf8(fault.name);
    for (const Slow &one : slow())
        busy += QString::fromUtf8(one.name);
    together(tally, busy);
}

void alone(Tally &tally, Wire &wire, const QString &name)
{
    for (const Fault &fault : Faults::silences()) {
        if (fault.name == name.toUtf8())
            silence(tally, wire, fault, {0, 1, 2, 3, 4, 5, 6, 7});
    }
    std::size_t turn = 0;
    for (const Fault &fault : Faults::endlessHeads(-1)) {
        ++turn;
        if (fault.name == name.toUtf8())
            silence(tally, wire, fault, {turn % Calls::count});
    }
    for (const Slow &one : slow()) {
        if (one.name == name.toUtf8())
            goOn(tally, wire, one);
    }
}

} // namespace Silences
