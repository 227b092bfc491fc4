#pragma once

#include <QString>

#include <utility>

/// A lock that one process at a time can hold. The system releases it when the process ends, even if it crashes.
/// Replaces QLockFile, which waits for the disk, and identifies the owner by its process ID: in a container, process
/// IDs are different.
class InstanceLock {
public:
    /// Impossible: the file cannot be created or opened, or its file system does not support locks.
    enum class Outcome { Taken, AnotherHasIt, Impossible };

    /// `take` creates the file, which only the user can access. It is never deleted, since another process may be
    /// about to lock it.
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
