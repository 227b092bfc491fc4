#pragma once

#include "SessionStore.h"

#include <memory>

/// A thread that puts a store's writes on disk (see StoreFile::synchroniseLog and StoreLog), so that no other thread
/// waits for the disk.
///
/// Starts to synchronise within 0.3 s after the first write that is not on disk yet, also while further writes
/// follow.
class StoreKeeper {
public:
    /// Reports a problem through `report`, on its own thread, once until it has succeeded again. Makes the writes of
    /// a former process that are in `postponed` first.
    StoreKeeper(const QString &path, SessionStore::Report report, const SessionStore::Values &postponed = {});
    /// Waits until all is on disk, for at most five seconds.
    ~StoreKeeper();
    StoreKeeper(const StoreKeeper &) = delete;
    StoreKeeper &operator=(const StoreKeeper &) = delete;

    /// Call it after each write. `isLogLong` tells that the log is to be shortened.
    void noteWrite(bool isLogLong);

    /// Writes the values as soon as the store is not locked, together with others that wait. Until then they are in
    /// PostponedWrites. After five seconds it reports the problem and gives them up.
    void writeLater(const SessionStore::Values &values);
    /// Returns whether such a write is still waiting; later writes must then wait too.
    bool isWriting() const;

private:
    struct Shared;

    /// Wakes the thread, or starts it, with these values to be written.
    void write(const SessionStore::Values &values);
    /// Wakes the thread, or starts it. Call it with the mutex locked.
    void start();

    const std::shared_ptr<Shared> m_shared;
};
