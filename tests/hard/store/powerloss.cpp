// The power goes between any two file calls, and what the store was told to be written is looked for on what is left.

#include "Checks.h"
#include "Disk.h"
#include "FileCalls.h"

using FileCalls::Kind;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;

namespace Checks {
namespace {

/// Notes what a life does to the files below `folder`: starts, writes and ends, with a mark after each write that was
/// taken. Large writes make the log long enough to be carried over.
QList<FileCalls::Call> life(const Folder &folder, qint64 writes, bool large)
{
    FileCalls::Plan plan;
    plan.noteBytes = true;
    FileCalls::watch(QFile::encodeName(folder.path()), plan);
    constexpr qint64 writesOfAStart = 12;
    for (qint64 number = 1; number <= writes;) {
        const Watched store(folder.path() + below);
        for (qint64 i = 0; i < writesOfAStart && number <= writes; ++i, ++number) {
            const Write write(number);
            if (store.store->write(write.key(), write.value))
                FileCalls::mark(number);
            if (large)
                store.store->write(SessionStore::Key::UserAvatar, QByteArray(900'000, 'p'));
        }
    }
    FileCalls::rest();
    return FileCalls::calls();
}

/// Whether what is found on the disk is what the last taken write left, or the one that was under way.
bool holds(const Values &found, const Values &values, qint64 next, bool large)
{
    const Values begun = after(values, next);
    if (!large)
        return found == values || found == begun;
    // The photo in between is always the same one.
    const auto but = [](Values all) {
        all[3].reset();
        return all;
    };
    const bool photo =
        !found[3] || *found[3] == QByteArray(900'000, 'p') || found[3] == values[3] || found[3] == begun[3];
    return photo && (but(found) == but(values) || but(found) == but(begun));
}

/// What is made is open to the user alone from its first moment on, and stays so.
void rights(Tally &tally, const QList<FileCalls::Call> &calls)
{
    for (const FileCalls::Call &call : calls) {
        // The folders above the store's own are others' too.
        const bool isOurs =
            call.kind == Kind::Create || (call.kind == Kind::MakeDirectory && call.path.endsWith("/marovenda"));
        if (isOurs || call.kind == Kind::Mode)
            tally.note("open to the user alone", (call.mode & 077) == 0,
                       call.path + ", mode " + QByteArray::number(call.mode, 8));
    }
}

void losses(Tally &tally, const QByteArray &fault, std::mt19937_64 &random, qint64 writes, int tries, bool large)
{
    const Folder folder;
    const QList<FileCalls::Call> calls = life(folder, writes, large);
    rights(tally, calls);
    QList<qsizetype> moments(tries);
    for (qsizetype &moment : moments)
        moment = between(random, 0, calls.size());
    std::ranges::sort(moments);

    Disk disk(QFile::encodeName(folder.path()));
    Values values;
    qint64 taken = 0;
    qsizetype done = 0;
    for (const qsizetype moment : moments) {
        for (; done < moment; ++done) {
            disk.take(calls[done]);
            if (calls[done].kind == Kind::Mark) {
                taken = calls[done].at;
                values = after(values, taken);
            }
        }
        const Folder left;
        QDir().mkpath(left.path());
        disk.lose(random, left.path());
        Watched store(left.path() + below);
        const Values found = store.values();
        tally.note(fault, holds(found, values, taken + 1, large) && store.reports.isEmpty(),
                   "after call " + QByteArray::number(moment) + " of " + QByteArray::number(calls.size()) + ": " +
                       tell(found) + " after " + tell(values) + "; " +
                       store.reports.join(QStringLiteral("; ")).toUtf8());
    }
}

} // namespace

void powerLoss(Tally &tally, const Form &form)
{
    std::mt19937_64 random = form.random(2);
    losses(tally, "power lost in the first writes", random, 3, form.tries(140, 5000), false);
    losses(tally, "power lost between writes", random, 100, form.tries(140, 10'000), false);
    losses(tally, "power lost while the log is carried over", random, 30, form.tries(45, 2000), true);
}

} // namespace Checks
