#pragma once

#include <QString>

#include <utility>

/// A lock that one process at a time has, for as long as it lives: the system lets go of it when the process ends,
/// however it does. QLockFile is not that: it waits for the disk (its file is synchronised), and judges an owner by
/// its number, which says nothing to a process that counts them anew in a container of its own.
class InstanceLock {
public:
    /// Impossible: the file cannot be made or opened, or its file system knows no locks.
    enum class Outcome { Taken, AnotherHasIt, Impossible };

    /// The file is made at the first `take`, for the user alone, and stays: another process may be about to lock it.
    explicit InstanceLock(QString path) : m_path(std::move(path)) {}
    ~InstanceLock() { release(); }
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    /// Does not wait.
    Outcome take();
    void release();

private:
    QString m_path;
    int m_file = -1;
};
