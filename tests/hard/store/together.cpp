// Two processes with one store: they make it, use it, find it damaged at the same moment, and one of them dies.

#include "Checks.h"
#include "FileCalls.h"
#include "StoreLog.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;

namespace Checks {
namespace {

/// What a process writes under a key the `round`th time, and what it tells by.
QByteArray valueOf(char who, int round)
{
    return (QByteArray(1, who) + QByteArray::number(round) + ' ').repeated(50);
}

bool isWhole(const std::optional<QByteArray> &value)
{
    return !value || Stores::sample[0] == value || Stores::sample[1] == value || Stores::sample[2] == value ||
           Stores::sample[3] == value || *value == value->first(value->indexOf(' ') + 1).repeated(50);
}

struct Pipe {
    Pipe()
    {
        if (pipe(ends.data()) != 0)
            qFatal("no pipe");
    }
    ~Pipe()
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
    void tell() const
    {
        if (::write(ends[1], "x", 1) != 1)
            _exit(9);
    }
    void await() const
    {
        char byte = 0;
        if (::read(ends[0], &byte, 1) != 1)
            _exit(9);
    }

    std::array<int, 2> ends = {};
};

/// Why a process ended.
enum Reason { AllWell, NotWritten, TornValue, SaidSomething };

/// A process that kills itself in the middle of one of its file calls.
FileCalls::Plan deathAt(qint64 call)
{
    FileCalls::Plan plan;
    plan.last = call;
    plan.death = FileCalls::Death::Halfway;
    return plan;
}

/// Writes `rounds` values of each key in turn and reads what is there. Starts when told to.
[[noreturn]] void take(const Folder &folder, const Pipe &start, char who, int rounds, bool mayBeReplaced,
                       const FileCalls::Plan &plan)
{
    start.await();
    FileCalls::watch(QFile::encodeName(folder.path()), plan);
    Watched store(folder.path());
    for (int round = 1; round <= rounds; ++round) {
        for (const auto key : SessionStore::keys) {
            if (!store.store->write(key, valueOf(who, round)))
                _exit(NotWritten);
            if (!isWhole(store.store->read(key)))
                _exit(TornValue);
        }
    }
    const qsizetype allowed = mayBeReplaced ? 1 : 0;
    _exit(store.reports.size() <= allowed ? AllWell : SaidSomething);
}

pid_t process(const Folder &folder, const Pipe &start, char who, int rounds, bool mayBeReplaced,
              const FileCalls::Plan &plan = {})
{
    const pid_t made = fork();
    if (made == 0)
        take(folder, start, who, rounds, mayBeReplaced, plan);
    return made;
}

int statusOf(pid_t process)
{
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Two processes start at the same moment and write; every last value is the last one of one of them.
void race(Tally &tally, const QByteArray &fault, const Folder &folder, int rounds, bool damaged)
{
    const Pipe start;
    const pid_t a = process(folder, start, 'a', rounds, damaged);
    const pid_t b = process(folder, start, 'b', rounds, damaged);
    start.tell();
    start.tell();
    const int endOfA = statusOf(a);
    const int endOfB = statusOf(b);
    Watched store(folder.path());
    const Values values = store.values();
    const bool last = std::ranges::all_of(
        values, [&](const auto &value) { return value == valueOf('a', rounds) || value == valueOf('b', rounds); });
    const bool kept = folder.bytes(u".damaged-1"_s) == QByteArray("damaged ").repeated(1000);
    tally.note(fault,
               endOfA == 0 && endOfB == 0 && last && store.reports.isEmpty() && kept == damaged &&
                   folder.aside().size() == (damaged ? 1 : 0),
               "ends " + QByteArray::number(endOfA) + " and " + QByteArray::number(endOfB) + ", " + tell(values) +
                   ", " + folder.aside().join(u' ').toUtf8());
}

/// One is killed while both write; the other notices nothing.
void oneDies(Tally &tally, int rounds, std::mt19937_64 &random)
{
    const Folder folder;
    folder.fill();
    const Pipe start;
    const pid_t a = process(folder, start, 'a', 1'000'000, false, deathAt(between(random, 1, 3000)));
    const pid_t b = process(folder, start, 'b', rounds, false);
    start.tell();
    start.tell();
    const int endOfA = statusOf(a);
    const int endOfB = statusOf(b);
    Watched store(folder.path());
    const Values values = store.values();
    tally.note("one of two processes killed",
               endOfA == 128 + SIGKILL && endOfB == 0 && std::ranges::all_of(values, isWhole) &&
                   store.reports.isEmpty() && folder.aside().isEmpty(),
               "ends " + QByteArray::number(endOfA) + " and " + QByteArray::number(endOfB) + ", " + tell(values));
}

} // namespace

void together(Tally &tally, const Form &form)
{
    std::mt19937_64 random = form.random(6);
    for (int i = form.tries(10, 300); i > 0; --i) {
        const Folder made;
        race(tally, "two processes make the store", made, 3, false);
        const Folder used;
        used.fill();
        race(tally, "two processes write", used, 30, false);
        const Folder damaged;
        damaged.put(QByteArray("damaged ").repeated(1000));
        race(tally, "two processes find the store damaged", damaged, 3, true);
        oneDies(tally, 30, random);
    }
}

void largePhoto(Tally &tally, const Form &form)
{
    std::mt19937_64 random = form.random(7);
    const auto fault = "photo of 20 MB"_ba;
    for (int i = form.tries(1, 20); i > 0; --i) {
        QByteArray photo(qsizetype(20) * 1024 * 1024, '\0');
        for (qsizetype at = 0; at < photo.size(); at += 64)
            photo[at] = static_cast<char>(random());
        const Folder folder;
        folder.fill();
        {
            const Watched store(folder.path());
            tally.note(fault, store.store->write(SessionStore::Key::UserAvatar, photo), "not written");
            tally.note(fault, store.store->read(SessionStore::Key::UserAvatar) == photo, "not read");
            // What is written next to it stays small.
            const qint64 before = QFileInfo(folder.file(u"-wal"_s)).size();
            tally.note(fault, store.store->write(SessionStore::Key::UserNombre, "Eva"), "name not written");
            const qint64 grown = QFileInfo(folder.file(u"-wal"_s)).size() - before;
            tally.note(fault, grown < 32'768, "a name took " + QByteArray::number(grown) + " bytes");
        }
        Watched again(folder.path());
        const Values values = again.values();
        tally.note(fault, values[3] == photo && values[1] == "Eva"_ba && again.reports.isEmpty(), tell(values));
        // Another photo, killed somewhere: the old one or the new one, whole.
        again.store.reset();
        const QByteArray other = photo.first(photo.size() - 7) + "another";
        const pid_t writer = fork();
        if (writer == 0) {
            FileCalls::watch(QFile::encodeName(folder.path()), deathAt(between(random, 1, 25'000)));
            const Watched store(folder.path());
            const bool written = store.store->write(SessionStore::Key::UserAvatar, other);
            StoreLog::shorten(store.store->path());
            _exit(written ? 0 : 1);
        }
        const int end = statusOf(writer);
        Watched after(folder.path());
        const Values found = after.values();
        tally.note("photo of 20 MB, killed while it is written",
                   after.reports.isEmpty() && (end == 0 ? found[3] == other : found[3] == photo || found[3] == other),
                   "end " + QByteArray::number(end) + ", " + tell(found));
    }
}

} // namespace Checks
