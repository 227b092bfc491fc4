// Random customers: people-check quick|long
// MAROVENDA_SEED repeats one sequence.

#include "Actions.h"
#include "MarovendaTest.h"
#include "Tally.h"

#include <QRandomGenerator>

#include <cstring>

using namespace Qt::StringLiterals;

namespace {

/// What is drawn at random for each step: which action, and which text or reply.
using Steps = QList<std::pair<quint32, quint32>>;

Steps stepsOf(quint32 seed)
{
    QRandomGenerator random(seed);
    Steps steps(random.bounded(10, 41));
    for (auto &[action, choice] : steps) {
        action = random.generate();
        choice = random.generate() >> 4;
    }
    return steps;
}

/// Plays a sequence. Empty when all went as predicted, or else what did not; what was done is added to `told`.
QString play(Device &device, const Steps &steps, QStringList *told = nullptr)
{
    // Half of them are signed in already.
    const qint64 user = !steps.isEmpty() && steps.first().second % 2 ? 42 : 0;
    device.begin(user);
    Model model(user);
    if (const QString late = device.settle(model); !late.isEmpty())
        return late;
    for (const auto &[action, choice] : steps) {
        const QList<Action> all = actions(model, choice);
        const Action &next = all[action % all.size()];
        if (told)
            told->append(next.what);
        next.act(device);
        next.predict(model);
        if (const QString late = device.settle(model); !late.isEmpty())
            return late;
        if (const QString wrong = device.difference(model); !wrong.isEmpty())
            return wrong;
    }
    return {};
}

void explain(Device &device, quint32 seed)
{
    QStringList told;
    const QString wrong = play(device, stepsOf(seed), &told);
    std::fprintf(stderr, "MAROVENDA_SEED=%u: %s\n  %s\n", seed, qUtf8Printable(wrong),
                 qUtf8Printable(told.join(u"\n  "_s)));
}

int run(bool isLong)
{
    Device device;
    Tally tally;
    const bool one = qEnvironmentVariableIsSet("MAROVENDA_SEED");
    const quint32 first = one      ? qEnvironmentVariable("MAROVENDA_SEED").toUInt()
                          : isLong ? QRandomGenerator::system()->generate() >> 1
                                   : 1;
    const int count = one ? 1 : isLong ? 5000 : 70;
    std::fprintf(stderr, "seeds %u to %u\n", first, first + quint32(count) - 1);
    for (int i = 0; i < count; ++i) {
        const quint32 seed = first + quint32(i);
        const QString wrong = play(device, stepsOf(seed));
        if (!tally.note("random sequences of a customer and the service", wrong.isEmpty(), wrong.toUtf8()))
            explain(device, seed);
    }
    return tally.finish();
}

} // namespace

int main(int argc, char *argv[])
{
    const bool isLong = argc > 1 && std::strcmp(argv[1], "long") == 0;
    return runMarovendaCheck([=] { return run(isLong); }, argc, argv);
}
