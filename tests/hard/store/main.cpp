// Everything that can befall the session's store, provoked: store-check [CHECK...] quick|long
//
// MAROVENDA_HARD_SEED repeats the random choices of an earlier run, which tells its seed on stderr.

#include "Checks.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <map>

int main(int argc, char *argv[])
{
    const QCoreApplication app(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString kind = arguments.isEmpty() ? QString() : arguments.takeLast();
    if (kind != QLatin1String("quick") && kind != QLatin1String("long"))
        return EXIT_FAILURE;

    Checks::Form form;
    form.isLong = kind == QLatin1String("long");
    form.seed = form.isLong ? std::random_device()() : 1;
    if (const QByteArray seed = qgetenv("MAROVENDA_HARD_SEED"); !seed.isEmpty())
        form.seed = seed.toULongLong();
    std::fprintf(stderr, "store: MAROVENDA_HARD_SEED=%llu\n", static_cast<unsigned long long>(form.seed));

    Tally tally;
    const std::array<std::pair<const char *, void (*)(Tally &, const Checks::Form &)>, 6> checks{{
        {"kills", Checks::kills},
        {"powerloss", Checks::powerLoss},
        {"failures", Checks::failures},
        {"damage", Checks::damage},
        {"together", Checks::together},
        {"photo", Checks::largePhoto},
    }};
    for (const auto &[name, check] : checks) {
        if (arguments.isEmpty() || arguments.contains(QLatin1String(name)))
            check(tally, form);
    }
    return tally.finish();
}
