// The power goes between any two file calls. What was synchronised is looked for on what is left, and later writes
// must be there whole and in their order, or not at all.

#include "Checks.h"
#include "Disk.h"
#include "FileCalls.h"
#include "StoreFile.h"
#include "StoreLog.h"

using FileCalls::Kind;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;

namespace Checks {
namespace {

/// Notes what a life does to the files below `folder`: starts, writes and ends. A mark with a write's number says
/// that the write was taken, one with the negative number that it was synchronised. Large writes make the log long
/// enough to be shortened.
QList<FileCalls::Call> life(const Folder &folder, qint64 writes, bool large)
{
    FileCalls::Plan plan;
    plan.noteBytes = true;
    FileCalls::watch(QFile::encodeName(folder.path()), plan);
    constexpr qint64 writesOfAStart = 12;
    constexpr qint64 writesAtOnce = 4;
    for (qint64 number = 1; number <= writes;) {
        const Watched store(folder.path() + below);
        const QString path = store.store->path();
        for (qint64 i = 0; i < writesOfAStart && number <= writes; ++i, ++number) {
            const Write write(number);
            if (store.store->write(write.key(), write.value))
                FileCalls::mark(number);
            if (large)
                store.store->write(SessionStore::Key::UserAvatar, QByteArray(900'000, 'p'));
            if (number % writesAtOnce == 0 && StoreFile::synchroniseLog(path).isEmpty())
                FileCalls::mark(-number);
            if (store.store->isLogLong())
                StoreLog::shorten(path);
        }
    }
    FileCalls::rest();
    return FileCalls::calls();
}

bool areSame(const Values &found, const Values &values, bool large)
{
    if (!large)
        return found == values;
    // The photo in between is always the same one.
    const auto but = [](Values all) {
        all[3].reset();
        return all;
    };
    return (!found[3] || *found[3] == QByteArray(900'000, 'p') || found[3] == values[3]) && but(found) == but(values);
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
    // What may be found: the values after the last write that was synchronised, and after each one since.
    QList<Values> allowed{Values(), after(Values(), 1)};
    qint64 first = 0;
    qsizetype done = 0;
    for (const qsizetype moment : moments) {
        for (; done < moment; ++done) {
            disk.take(calls[done]);
            if (calls[done].kind != Kind::Mark)
                continue;
            const qint64 number = calls[done].at;
            if (number > 0) {
                allowed.append(after(allowed.last(), number + 1));
            } else {
                allowed.remove(0, -number - first);
                first = -number;
            }
        }
        const Folder left;
        QDir().mkpath(left.path());
        disk.lose(random, left.path());
        Watched store(left.path() + below);
        const Values found = store.values();
        const bool held =
            std::ranges::any_of(allowed, [&](const Values &values) { return areSame(found, values, large); });
        tally.note(fault, held && store.reports.isEmpty(),
                   "after call " + QByteArray::number(moment) + " of " + QByteArray::number(calls.size()) + ": " +
                       tell(found) + " after " + tell(allowed.first()) + " and " +
                       QByteArray::number(allowed.size() - 1) + " writes; " +
                       store.reports.join(QStringLiteral("; ")).toUtf8());
    }
}

} // namespace

void powerLoss(Tally &tally, const Form &form)
{
    std::mt19937_64 random = form.random(2);
    losses(tally, "power lost in the first writes", random, 3, form.tries(140, 5000), false);
    losses(tally, "power lost between writes", random, 100, form.tries(140, 10'000), false);
    losses(tally, "power lost while the log is shortened", random, 30, form.tries(45, 2000), true);
}

} // namespace Checks
