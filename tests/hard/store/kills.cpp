// A process that writes without end is killed, and what it was told to be written is looked for.

#include "Checks.h"
#include "FileCalls.h"

#include <chrono>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using Stores::Folder;
using Stores::Values;
using Stores::Watched;

namespace Checks {
namespace {

/// What is written at once.
using Together = QList<std::pair<SessionStore::Key, QByteArray>>;
/// The write with a number: always the same one, and no two alike.
using Writes = Together (*)(qint64 number);

Together oneValue(qint64 number)
{
    const Write write(number);
    return {{write.key(), write.value}};
}

/// As signing in writes them, on one page or several.
Together customer(qint64 number)
{
    const QByteArray name = QByteArray::number(number);
    return {{SessionStore::Key::UserId, name},
            {SessionStore::Key::UserNombre, (name + "ñ ").repeated(number % 7 * 300 + 1)},
            {SessionStore::Key::UserEmail, (name + "@ ").repeated(number % 5 * 500 + 1)}};
}

Values afterWriting(Values values, const Together &written)
{
    for (const auto &[key, value] : written)
        values[static_cast<std::size_t>(key)] = value;
    return values;
}

/// Takes over this process: writes from the write `first` on and tells the number of each write that has returned.
[[noreturn]] void writeWithoutEnd(const Folder &folder, Writes writes, qint64 first, int told,
                                  const FileCalls::Plan &plan)
{
    FileCalls::watch(QFile::encodeName(folder.path()), plan);
    const Watched store(folder.path());
    for (qint64 number = first;; ++number) {
        if (!store.store->write(writes(number)) || !store.reports.isEmpty())
            _exit(1);
        if (::write(told, &number, sizeof number) != sizeof number)
            _exit(2);
    }
}

/// What became of a writer.
struct End {
    qint64 lastTold = 0;
    bool killed = false;
};

/// Starts a writer and waits for its end, which comes from outside after `rounds` writes and a moment, unless it has
/// its own plan to die.
End killed(const Folder &folder, Writes writes, qint64 first, const FileCalls::Plan &plan, qint64 rounds,
           qint64 microseconds)
{
    std::array<int, 2> ends = {};
    if (pipe(ends.data()) != 0)
        qFatal("no pipe");
    const pid_t writer = fork();
    if (writer == 0)
        writeWithoutEnd(folder, writes, first, ends[1], plan);
    close(ends[1]);
    End end{first - 1, false};
    qint64 number = 0;
    while (read(ends[0], &number, sizeof number) == sizeof number) {
        end.lastTold = number;
        if (plan.death == FileCalls::Death::None && number == first + rounds) {
            const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(microseconds);
            while (std::chrono::steady_clock::now() < until) {
            }
            ::kill(writer, SIGKILL);
        }
    }
    close(ends[0]);
    int status = 0;
    waitpid(writer, &status, 0);
    end.killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    return end;
}

const char *nameOf(FileCalls::Death death)
{
    switch (death) {
    case FileCalls::Death::None:
        return "killed from outside";
    case FileCalls::Death::Before:
        return "killed before a file call";
    case FileCalls::Death::Halfway:
        return "killed halfway through a file call";
    case FileCalls::Death::After:
        return "killed after a file call";
    }
    return "";
}

void kill(Tally &tally, const QByteArray &what, Writes writes, std::mt19937_64 random, int tries)
{
    std::optional<Folder> folder;
    Values values;
    qint64 number = 1;
    for (int i = 0; i < tries; ++i) {
        // Now and then a new store, so that its making is cut off too.
        if (i % 5 == 0) {
            folder.emplace();
            values = Values();
        }
        FileCalls::Plan plan;
        plan.death = std::array{FileCalls::Death::None, FileCalls::Death::Before, FileCalls::Death::Halfway,
                                FileCalls::Death::After}[static_cast<std::size_t>(between(random, 0, 3))];
        // The making of a store takes some 150 calls.
        plan.last = plan.death == FileCalls::Death::None ? 0 : between(random, 1, i % 2 == 0 ? 220 : 1500);
        const End end = killed(*folder, writes, number, plan, between(random, 0, 30), between(random, 0, 3000));

        for (; number <= end.lastTold; ++number)
            values = afterWriting(values, writes(number));
        const Values begun = afterWriting(values, writes(number));
        Watched store(folder->path());
        const Values found = store.values();
        const bool held =
            end.killed && (found == values || found == begun) && store.reports.isEmpty() && !store.replaced;
        tally.note(what + nameOf(plan.death), held,
                   "kill " + QByteArray::number(i) + ", call " + QByteArray::number(plan.last) + ": " + tell(found) +
                       " after " + tell(values) + "; " + store.reports.join(QStringLiteral("; ")).toUtf8());
        values = found;
        ++number;
    }
}

} // namespace

void kills(Tally &tally, const Form &form)
{
    const int tries = form.tries(45, 1000);
    kill(tally, {}, oneValue, form.random(1), tries);
    kill(tally, "three values at once, ", customer, form.random(8), tries);
}

} // namespace Checks
