#pragma once

#include "SessionStore.h"

#include <QFile>

/// A file beside the store that keeps the writes which wait for a locked store. They survive the end of the process,
/// and the next one makes them.
///
/// A write in the file is complete or ignored. The file is on disk only when the system puts it there; a loss of
/// power takes the last writes first.
class PostponedWrites {
public:
    /// Uses the file of the store at `path`. Does not create it.
    explicit PostponedWrites(const QString &path);

    /// Returns the values of all writes in the file, in their order. Cuts off what is incomplete, so that later
    /// writes can follow. Call it before `add`.
    SessionStore::Values read() const;

    /// Adds a write. If the file cannot be written, the write is in memory only.
    void add(const SessionStore::Values &values);

    /// Empties the file, without waiting for the disk.
    void clear();
    /// Puts on disk that the file is empty, so that a loss of power cannot bring old values back. Can be called on
    /// any thread while another one adds a write.
    void synchronise() const;
    /// Deletes the file.
    void remove();

private:
    QFile m_file;
};
