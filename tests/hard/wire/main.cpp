// Every fault of a connection, on every exchange of the client: wire-check [FAULT] quick|long
// With a part of a fault's name only the faults of that name are tried, one call after the other.

#include "Silences.h"
#include "TestDeployment.h"
#include "Trial.h"

#include <QCoreApplication>

#include <cstdlib>

namespace {

constexpr std::size_t theGet = Calls::count - 1;

QList<Faults::Fault> chosen(const QList<Faults::Fault> &all, const QByteArray &name)
{
    QList<Faults::Fault> some;
    std::ranges::copy_if(all, std::back_inserter(some), [&](const auto &fault) { return fault.name.contains(name); });
    return some;
}

/// Each fault on every call, or on one POST after another and the GET.
void tryAll(Trial &trial, const QList<Faults::Fault> &faults, bool isLong)
{
    std::size_t turn = 0;
    for (const Faults::Fault &fault : faults) {
        ++turn;
        for (std::size_t call = 0; call < Calls::count; ++call) {
            // The GET has nothing to upload.
            if (call == theGet ? !fault.isLarge() : isLong || call == turn % theGet)
                trial.run(fault, call);
        }
    }
}

/// Replies that end after each number of bytes: all numbers on every call, or some on one POST and the GET.
void tryEndings(Trial &trial, const QByteArray &name, bool isLong)
{
    for (std::size_t call = 0; call < Calls::count; ++call) {
        if (!isLong && call != 0 && call != theGet)
            continue;
        const QByteArray body = Calls::all()[call].reply("try 1");
        const auto faults = Faults::endings(body, 0, isLong ? 1 : 23);
        for (const Faults::Fault &fault : chosen(faults, name))
            trial.run(fault, call);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy"})
        qunsetenv(name);
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty() || (arguments.last() != u"quick" && arguments.last() != u"long"))
        return EXIT_FAILURE;
    const bool isLong = arguments.last() == u"long";
    const QByteArray name = arguments.size() > 1 ? arguments.first().toUtf8() : QByteArray();

    Tally tally;
    Wire wire;
    TestDeployment::values().baseUrl = QStringLiteral("http://127.0.0.1:%1/").arg(wire.port());
    if (arguments.first() == u"alone") {
        Silences::alone(tally, wire, arguments.value(1));
        return tally.finish();
    }
    Trial trial(tally, wire);
    tryAll(trial,
           chosen(Faults::connections() + Faults::lengths() + Faults::chunks() + Faults::packings() +
                      Faults::sizes() + Faults::heads() + Faults::statuses() +
                      Faults::redirects(wire.port(), wire.elsewhere()),
                  name),
           isLong);
    tryEndings(trial, name, isLong);

    trial.finish();
    if (name.isEmpty())
        isLong ? Silences::real(tally) : Silences::shortened(tally, wire);
    return tally.finish();
}
