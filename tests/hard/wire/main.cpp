// Every fault of a connection, on every exchange of the client: wire-check [CHECK...] quick|long

#include "TestDeployment.h"
#include "Trial.h"

#include <QCoreApplication>

#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__)
// Freed blocks that the sanitizer keeps would count as memory of the client.
extern "C" const char *__asan_default_options() // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
{
    return "quarantine_size_mb=1";
}
#endif

int main(int argc, char *argv[])
{
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy"})
        qunsetenv(name);
    const QCoreApplication app(argc, argv);
    Tally tally;
    Wire wire;
    TestDeployment::values().baseUrl = QStringLiteral("http://127.0.0.1:%1/").arg(wire.port());
    Trial trial(tally, wire);
    QList<Faults::Fault> faults = Faults::connections() + Faults::lengths() + Faults::chunks() + Faults::packings() +
                                  Faults::sizes() + Faults::heads() + Faults::statuses() +
                                  Faults::redirects(wire.port(), wire.elsewhere());
    QStringList arguments = QCoreApplication::arguments().mid(1);
    for (const Faults::Fault &fault : faults) {
        if ((fault.name.startsWith("endless") && !qEnvironmentVariableIsSet("E")) || (arguments.size() > 1 && !fault.name.contains(arguments.first().toUtf8())))
            continue;
        QElapsedTimer t;
        t.start();
        for (std::size_t call : {2UL, 7UL})
            trial.run(fault, call);
        if (t.elapsed() > 300)
            fprintf(stderr, "%s: %lld ms %lld MB\n", fault.name.constData(), t.elapsed(), peakMemory());
    }
    trial.finish();
    return tally.finish();
}
