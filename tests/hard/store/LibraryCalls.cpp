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

/// What both forms of open do. The mode counts only where a file is made.
int opened(const char *function, const char *path, int flags, mode_t mode)
{
    auto *const real = next<int(const char *, int, ...)>(function);
    if (!concerns(path))
        return real(path, flags, mode);
    struct stat found = {};
    const bool fresh = (flags & O_CREAT) && stat(path, &found) != 0;
    const bool changes = fresh || (flags & O_ACCMODE) != O_RDONLY;
    if (changes ? refusesChange() : refuses())
        return -1;
    const int fd = real(path, flags, mode);
    if (fd >= 0) {
        state().open.insert(fd, cleaned(path));
        if (fresh)
            note({Kind::Create, cleaned(path), {}, 0, {}, mode});
        else if (flags & O_TRUNC)
            note({Kind::Truncate, cleaned(path), {}, 0, {}, 0});
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
    static auto *const real = next<int(int)>("close");
    if (concerns(fd)) {
        state().open.remove(fd);
        // The file is closed all the same, as on Linux.
        if (refuses()) {
            const int error = errno;
            real(fd);
            errno = error;
            return -1;
        }
    }
    return real(fd);
}

ssize_t read(int fd, void *bytes, size_t size)
{
    static auto *const real = next<ssize_t(int, void *, size_t)>("read");
    return concerns(fd) && refuses() ? -1 : real(fd, bytes, size);
}

ssize_t pread64(int fd, void *bytes, size_t size, off64_t at)
{
    static auto *const real = next<ssize_t(int, void *, size_t, off64_t)>("pread64");
    return concerns(fd) && refuses() ? -1 : real(fd, bytes, size, at);
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
        note({Kind::Write,
              state().open.value(fd),
              {},
              at,
              keep ? QByteArray(static_cast<const char *>(bytes), done) : QByteArray(),
              0});
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

int fsync(int fd)
{
    static auto *const real = next<int(int)>("fsync");
    if (concerns(fd) && refusesChange())
        return -1;
    const int result = real(fd);
    if (concerns(fd) && result == 0)
        note({Kind::Sync, state().open.value(fd), {}, 0, {}, 0});
    return result;
}

int fdatasync(int fd)
{
    static auto *const real = next<int(int)>("fdatasync");
    if (concerns(fd) && refusesChange())
        return -1;
    const int result = real(fd);
    if (concerns(fd) && result == 0)
        note({Kind::Sync, state().open.value(fd), {}, 0, {}, 0});
    return result;
}

int ftruncate64(int fd, off64_t size)
{
    static auto *const real = next<int(int, off64_t)>("ftruncate64");
    if (concerns(fd) && refusesChange())
        return -1;
    const int result = real(fd, size);
    if (concerns(fd) && result == 0)
        note({Kind::Truncate, state().open.value(fd), {}, size, {}, 0});
    return result;
}

int unlink(const char *path)
{
    static auto *const real = next<int(const char *)>("unlink");
    if (concerns(path) && refusesChange())
        return -1;
    const int result = real(path);
    if (concerns(path) && result == 0)
        note({Kind::Remove, cleaned(path), {}, 0, {}, 0});
    return result;
}

int renameat2(int fromFd, const char *from, int toFd, const char *to, unsigned flags)
{
    static auto *const real = next<int(int, const char *, int, const char *, unsigned)>("renameat2");
    if (concerns(from) && refusesChange())
        return -1;
    const int result = real(fromFd, from, toFd, to, flags);
    if (concerns(from) && result == 0)
        note({Kind::Rename, cleaned(from), cleaned(to), 0, {}, 0});
    return result;
}

int mkdir(const char *path, mode_t mode)
{
    static auto *const real = next<int(const char *, mode_t)>("mkdir");
    if (concerns(path) && refusesChange())
        return -1;
    const int result = real(path, mode);
    if (concerns(path) && result == 0)
        note({Kind::MakeDirectory, cleaned(path), {}, 0, {}, mode});
    return result;
}

int chmod(const char *path, mode_t mode)
{
    static auto *const real = next<int(const char *, mode_t)>("chmod");
    if (concerns(path) && refusesChange())
        return -1;
    const int result = real(path, mode);
    if (concerns(path) && result == 0)
        note({Kind::Mode, cleaned(path), {}, 0, {}, mode});
    return result;
}

int fchmod(int fd, mode_t mode)
{
    static auto *const real = next<int(int, mode_t)>("fchmod");
    if (concerns(fd) && refusesChange())
        return -1;
    const int result = real(fd, mode);
    if (concerns(fd) && result == 0)
        note({Kind::Mode, state().open.value(fd), {}, 0, {}, mode});
    return result;
}

int access(const char *path, int mode)
{
    static auto *const real = next<int(const char *, int)>("access");
    if (!concerns(path))
        return real(path, mode);
    return ((mode & W_OK) ? refusesChange() : refuses()) ? -1 : real(path, mode);
}

int stat64(const char *path, struct stat64 *found)
{
    static auto *const real = next<int(const char *, struct stat64 *)>("stat64");
    return concerns(path) && refuses() ? -1 : real(path, found);
}

int lstat64(const char *path, struct stat64 *found)
{
    static auto *const real = next<int(const char *, struct stat64 *)>("lstat64");
    return concerns(path) && refuses() ? -1 : real(path, found);
}

int fstat64(int fd, struct stat64 *found)
{
    static auto *const real = next<int(int, struct stat64 *)>("fstat64");
    return concerns(fd) && refuses() ? -1 : real(fd, found);
}

int statx(int fd, const char *path, int flags, unsigned mask, struct statx *found)
{
    static auto *const real = next<int(int, const char *, int, unsigned, struct statx *)>("statx");
    const bool ours = *path ? concerns(path) : concerns(fd);
    return ours && refuses() ? -1 : real(fd, path, flags, mask, found);
}

int fcntl64(int fd, int command, ...)
{
    static auto *const real = next<int(int, int, ...)>("fcntl64");
    va_list rest;
    va_start(rest, command);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    return concerns(fd) && refuses() ? -1 : real(fd, command, argument);
}

void *mmap64(void *at, size_t size, int protection, int flags, int fd, off64_t offset)
{
    static auto *const real = next<void *(void *, size_t, int, int, int, off64_t)>("mmap64");
    return fd >= 0 && concerns(fd) && refuses() ? MAP_FAILED : real(at, size, protection, flags, fd, offset);
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
