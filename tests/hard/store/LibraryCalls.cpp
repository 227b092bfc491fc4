// The C library's file functions, as the libraries in this process find them: the program's own come first.

#include "FileCallsState.h"

#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace FileCalls;

namespace {

template <typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

QByteArray name(const char *path) { return cleaned(path); }
QByteArray name(int fd) { return state().open.value(fd); }

/// Makes a call that concerns a place, a path or a file, and changes nothing; `Error` where it is refused.
template <auto Error = -1, typename Place, typename... Arguments>
auto ask(const char *function, Place place, Arguments... arguments)
{
    return concerns(place) && refuses(function) ? Error : next<decltype(Error)(Arguments...)>(function)(arguments...);
}

/// The same for a call that changes something, of which a note is taken when it succeeds.
template <typename Place, typename... Arguments>
int change(const char *function, Place place, const Call &call, Arguments... arguments)
{
    const auto real = next<int(Arguments...)>(function);
    if (!concerns(place))
        return real(arguments...);
    if (refusesChange(function))
        return -1;
    Call noted = call;
    noted.path = name(place);
    const int result = real(arguments...);
    if (result == 0)
        note(noted);
    return result;
}

/// What both forms of open do. The mode counts only where a file is made.
int opened(const char *function, const char *path, int flags, mode_t mode)
{
    auto *const real = next<int(const char *, int, ...)>(function);
    if (!concerns(path))
        return real(path, flags, mode);
    struct stat found = {};
    const bool fresh = (flags & O_CREAT) && stat(path, &found) != 0;
    const bool changes = fresh || (flags & O_ACCMODE) != O_RDONLY;
    if (changes ? refusesChange(function) : refuses(function))
        return -1;
    const int fd = real(path, flags, mode);
    if (fd >= 0) {
        state().open.insert(fd, cleaned(path));
        if (fresh)
            note({.kind = Kind::Create, .path = cleaned(path), .mode = mode});
        else if (flags & O_TRUNC)
            note({.kind = Kind::Truncate, .path = cleaned(path)});
    }
    return fd;
}

} // namespace

// The functions' types are the C library's; the names of their parameters are ours.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name, cert-dcl50-cpp)
extern "C" {

int open(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const auto mode = (flags & O_CREAT) ? va_arg(rest, mode_t) : mode_t(0);
    va_end(rest);
    return opened("open", path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const auto mode = (flags & O_CREAT) ? va_arg(rest, mode_t) : mode_t(0);
    va_end(rest);
    return opened("open64", path, flags, mode);
}

int close(int fd)
{
    const bool ours = concerns(fd);
    if (ours)
        state().open.remove(fd);
    const bool refused = ours && refuses();
    const int error = errno;
    // The file is closed all the same, as on Linux.
    const int result = next<int(int)>("close")(fd);
    if (refused)
        errno = error;
    return refused ? -1 : result;
}

ssize_t pwrite64(int fd, const void *bytes, size_t size, off64_t at)
{
    static auto *const real = next<ssize_t(int, const void *, size_t, off64_t)>("pwrite64");
    if (!concerns(fd))
        return real(fd, bytes, size, at);
    if (refusesChange())
        return -1;
    const size_t room = diesNow(Death::Halfway) ? (size + 1) / 2 : roomFor(fd, size, at);
    if (room == 0 && size > 0) {
        noteRefusal("pwrite64", ENOSPC);
        return -1;
    }
    const ssize_t done = real(fd, bytes, room, at);
    if (done > 0) {
        const bool keep = state().plan.noteBytes;
        note({Kind::Write, name(fd), {}, at, keep ? QByteArray(static_cast<const char *>(bytes), done) : "", 0});
    }
    return done;
}

ssize_t write(int fd, const void *bytes, size_t size)
{
    static auto *const real = next<ssize_t(int, const void *, size_t)>("write");
    if (!concerns(fd))
        return real(fd, bytes, size);
    const off64_t at = lseek64(fd, 0, SEEK_CUR);
    const ssize_t done = pwrite64(fd, bytes, size, at);
    if (done > 0)
        lseek64(fd, done, SEEK_CUR);
    return done;
}

int fsync(int fd) { return change("fsync", fd, {.kind = Kind::Sync}, fd); }

int fdatasync(int fd) { return change("fdatasync", fd, {.kind = Kind::Sync}, fd); }

int ftruncate64(int fd, off64_t size)
{
    return change("ftruncate64", fd, {.kind = Kind::Truncate, .at = size}, fd, size);
}

int unlink(const char *path) { return change("unlink", path, {.kind = Kind::Remove}, path); }

int renameat2(int fromFd, const char *from, int toFd, const char *to, unsigned flags)
{
    const Call call{.kind = Kind::Rename, .to = cleaned(to)};
    return change("renameat2", from, call, fromFd, from, toFd, to, flags);
}

int mkdir(const char *path, mode_t mode)
{
    return change("mkdir", path, {.kind = Kind::MakeDirectory, .mode = mode}, path, mode);
}

int chmod(const char *path, mode_t mode)
{
    return change("chmod", path, {.kind = Kind::Mode, .mode = mode}, path, mode);
}

int fchmod(int fd, mode_t mode) { return change("fchmod", fd, {.kind = Kind::Mode, .mode = mode}, fd, mode); }

int access(const char *path, int mode)
{
    if (concerns(path) && ((mode & W_OK) ? refusesChange() : refuses()))
        return -1;
    return next<int(const char *, int)>("access")(path, mode);
}

ssize_t read(int fd, void *bytes, size_t size) { return ask<ssize_t(-1)>("read", fd, fd, bytes, size); }

ssize_t pread64(int fd, void *bytes, size_t size, off64_t at)
{
    return ask<ssize_t(-1)>("pread64", fd, fd, bytes, size, at);
}

int stat64(const char *path, struct stat64 *found) { return ask("stat64", path, path, found); }

int lstat64(const char *path, struct stat64 *found) { return ask("lstat64", path, path, found); }

int fstat64(int fd, struct stat64 *found) { return ask("fstat64", fd, fd, found); }

int statx(int fd, const char *path, int flags, unsigned mask, struct statx *found)
{
    return *path ? ask("statx", path, fd, path, flags, mask, found) : ask("statx", fd, fd, path, flags, mask, found);
}

int fcntl64(int fd, int command, ...)
{
    va_list rest;
    va_start(rest, command);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    return concerns(fd) && refuses() ? -1 : next<int(int, int, ...)>("fcntl64")(fd, command, argument);
}

void *mmap64(void *at, size_t size, int protection, int flags, int fd, off64_t offset)
{
    static auto *const real = next<void *(void *, size_t, int, int, int, off64_t)>("mmap64");
    return concerns(fd) && refuses() ? MAP_FAILED : real(at, size, protection, flags, fd, offset);
}

/// A lock that is refused for good is asked for again and again, with pauses that nobody needs here.
int nanosleep(const timespec *time, timespec *left)
{
    static auto *const real = next<int(const timespec *, timespec *)>("nanosleep");
    return state().on && state().plan.refused > 0 ? 0 : real(time, left);
}

int usleep(useconds_t time)
{
    static auto *const real = next<int(useconds_t)>("usleep");
    return state().on && state().plan.refused > 0 ? 0 : real(time);
}

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name, cert-dcl50-cpp)
