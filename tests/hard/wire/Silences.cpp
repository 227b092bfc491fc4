#include "Silences.h"

#include "Calls.h"
#include "Faults.h"
#include "HttpTransport.h"
#include "Trial.h"
#include "Watch.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Faults::Fault;

namespace Silences {

namespace {

constexpr std::chrono::milliseconds shortLimit = 1s;

QByteArray timed(const Fault &fault, qint64 took, std::chrono::milliseconds limit)
{
    const bool early = took < limit.count() && fault.gets != Faults::Gets::Either;
    return early || took > limit.count() + late ? "ended after " + QByteArray::number(took) + " ms" : QByteArray();
}

/// One exchange with the limit of a second.
struct Short {
    Fault fault;
    QByteArray path;
    bool isPost = true;
    int completions = 0;
    qint64 took = 0;
    QElapsedTimer since = {};
    HttpReply reply = {};

    QByteArray firstLine() const { return (isPost ? "POST " : "GET ") + path; }
};
using ShortPtr = std::shared_ptr<Short>;

void start(const ShortPtr &one, const QString &base)
{
    const QUrl url(base + QString::fromLatin1(one->path.sliced(1)));
    const HttpRequest request =
        one->isPost ? HttpRequest{HttpRequest::Method::Post, url, "{" + QByteArray(one->fault.requestSize, ' ') + "}",
                                  "application/json"}
                    : HttpRequest{HttpRequest::Method::Get, url};
    one->since.start();
    sendHttp(request,
             [one](HttpReply reply) {
                 ++one->completions;
                 one->took = one->since.elapsed();
                 one->reply = std::move(reply);
             },
             {HttpLimits().bodySize, shortLimit});
}

QByteArray judge(const Short &one, const QJsonObject &lines)
{
    if (one.completions != 1)
        return "completed " + QByteArray::number(one.completions) + " times";
    if (!one.reply.body.isEmpty())
        return "got " + one.reply.body.left(60);
    const int came = lines[QString::fromLatin1(one.firstLine())].toInt();
    if (one.isPost && came != (one.fault.posts == Faults::Posts::None ? 0 : 1))
        return QByteArray::number(came) + " requests came";
    return timed(one.fault, one.took, shortLimit);
}

void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    bool passed = false;
    QTimer::singleShot(100, [&passed] { passed = true; });
    until([&passed] { return passed; });
}

/// All of them at once.
void shortenedTogether(Tally &tally, Wire &wire, const QList<Fault> &faults)
{
    wire.forget();
    QList<ShortPtr> all;
    for (const Fault &fault : faults) {
        for (const bool isPost : {true, false}) {
            if (!isPost && fault.isLarge())
                continue;
            all += std::make_shared<Short>(Short{fault, "/" + QByteArray::number(all.size()), isPost});
            if (fault.when == When::Door)
                wire.doors(fault.steps("{}"));
            else
                wire.script(all.last()->path, fault.steps("{}"), fault.when);
        }
    }
    forgetPeak();
    const Watch watch;
    for (const ShortPtr &one : all)
        start(one, u"http://127.0.0.1:%1/"_s.arg(wire.port()));
    until([&] { return std::ranges::all_of(all, [](const ShortPtr &one) { return one->completions > 0; }); });
    // Afterwards the exchanges go, and their connections with them.
    settle();
    tally.note("the thread answers while servers are silent or without end, and afterwards",
               watch.longestGap() < late, "it was away for " + QByteArray::number(watch.longestGap()) + " ms");
    const double memory = peakMemory();
    const QJsonObject lines = wire.report()[u"lines"_s].toObject();
    for (const ShortPtr &one : all) {
        const QByteArray wrong = judge(*one, lines);
        tally.note(one->fault.name, wrong.isEmpty(), one->firstLine() + ": " + wrong);
    }
    tally.note("memory while servers are silent or without end", memory < memoryLimit,
               QByteArray::number(memory) + " MB");
    wire.forget();
}

} // namespace

void shortened(Tally &tally, Wire &wire)
{
    QList<Fault> doors;
    QList<Fault> others;
    for (const Fault &fault : Faults::silences())
        (fault.when == When::Door ? doors : others) += fault;
    shortenedTogether(tally, wire, doors);
    shortenedTogether(tally, wire, others);
    shortenedTogether(tally, wire, Faults::endlessHeads(65536));
    // One that never ends keeps the platform's thread, for which nobody must wait.
    shortenedTogether(tally, wire, Faults::endlessHeads(-1).mid(2, 1));

    // Slower than what the system takes at once, and longer than the limit.
    constexpr int photo = 24'000'000;
    const Fault slow{"an upload that goes on for longer than the limit",
                     {},
                     Faults::Gets::Record,
                     When::Head,
                     Faults::Posts::One,
                     false,
                     photo};
    const auto one = std::make_shared<Short>(Short{slow, "/slow"});
    wire.script(one->path, Steps().narrow().sip(photo / 3).send(Faults::whole("{}")), When::Head);
    start(one, u"http://127.0.0.1:%1/"_s.arg(wire.port()));
    until([&] { return one->completions > 0; });
    tally.note(slow.name, one->completions == 1 && one->reply.body == "{}" && one->took > 2 * shortLimit.count(),
               "got " + one->reply.body + " after " + QByteArray::number(one->took) + " ms");
}

} // namespace Silences
