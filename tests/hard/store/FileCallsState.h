#pragma once

#include "FileCalls.h"

#include <QHash>

#include <thread>

/// What the functions in LibraryCalls.cpp ask before a call and tell after it.
namespace FileCalls {

struct Watch {
    QByteArray folder;
    Plan plan;
    qint64 count = 0;
    bool on = false;
    std::thread::id thread = {};
    QByteArray firstRefused;
    QList<Call> calls;
    QHash<int, QByteArray> open;
};

Watch &state();

/// Without "." and double slashes, as QDir::cleanPath would do without calling the file system's functions.
QByteArray cleaned(const char *path);

bool concerns(const char *path);
bool concerns(int fd);

/// Whether the call that kills the process has come: the planned one, or the first change after it.
bool diesNow(Death death);

/// Counts the call that is about to happen. True when it is refused; errno is then set.
bool refuses(const char *function = __builtin_FUNCTION());
bool refusesChange(const char *function = __builtin_FUNCTION());
void noteRefusal(const char *function, int error);

/// Keeps a call that succeeded.
void note(const Call &call);

/// How much of a write the disk has room for.
size_t roomFor(int fd, size_t size, qint64 at);

} // namespace FileCalls
