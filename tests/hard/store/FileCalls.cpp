#include "FileCallsState.h"

#include <algorithm>
#include <csignal>
#include <sys/stat.h>

namespace FileCalls {

Watch &state()
{
    static auto *const watch = new Watch;
    return *watch;
}

QByteArray cleaned(const char *path)
{
    QByteArray clean(path);
    clean.replace("//", "/");
    while (clean.endsWith("/.") || (clean.size() > 1 && clean.endsWith('/')))
        clean.chop(clean.endsWith('/') ? 1 : 2);
    return clean;
}

bool isWatched() { return state().on && state().thread == std::this_thread::get_id(); }
bool concerns(const char *path) { return isWatched() && path && QByteArrayView(path).startsWith(state().folder); }
bool concerns(int fd) { return isWatched() && state().open.contains(fd); }

bool diesNow(Death death)
{
    const Watch &watch = state();
    return watch.plan.last > 0 && watch.count >= watch.plan.last && watch.plan.death == death;
}

void noteRefusal(const char *function, int error)
{
    QByteArray &first = state().firstRefused;
    if (first.isEmpty())
        first = function;
    errno = error;
}

bool refuses(const char *function)
{
    Watch &watch = state();
    const Plan &plan = watch.plan;
    ++watch.count;
    if (diesNow(Death::Before))
        std::raise(SIGKILL);
    const bool now = plan.refused > 0 && (plan.forGood ? watch.count >= plan.refused : watch.count == plan.refused);
    if (now)
        noteRefusal(function, plan.error);
    return now;
}

bool refusesChange(const char *function)
{
    if (refuses(function))
        return true;
    if (!state().plan.readOnly)
        return false;
    noteRefusal(function, EROFS);
    return true;
}

void note(const Call &call)
{
    Watch &watch = state();
    if (diesNow(Death::After) || diesNow(Death::Halfway))
        std::raise(SIGKILL);
    watch.calls.append(call);
}

size_t roomFor(int fd, size_t size, qint64 at)
{
    struct stat found = {};
    qint64 &room = state().plan.room;
    if (room < 0 || fstat(fd, &found) != 0)
        return size;
    const qint64 grown = std::max<qint64>(0, at + static_cast<qint64>(size) - found.st_size);
    const qint64 granted = std::min(grown, room);
    room -= granted;
    // What grows a file by more than its own bytes leaves a gap first.
    return size - std::min(size, static_cast<size_t>(grown - granted));
}

void watch(const QByteArray &folder, const Plan &plan)
{
    Watch &watch = state();
    watch = Watch();
    watch.folder = folder;
    watch.plan = plan;
    watch.thread = std::this_thread::get_id();
    watch.on = true;
}

void mark(qint64 number) { state().calls.append({.kind = Kind::Mark, .at = number}); }
void rest() { state().on = false; }
const QByteArray &firstRefused() { return state().firstRefused; }
const QList<Call> &calls() { return state().calls; }

} // namespace FileCalls
