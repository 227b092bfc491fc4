#pragma once

#include "SessionStore.h"

/// What a store needs that waits for the disk or for other processes. Each call opens the store at `path` for itself,
/// and may run on any thread while a SessionStore has the same store open.
namespace StoreLog {

/// Starts a log if there is none. The first write to a log synchronises its header, so this keeps the next write from
/// waiting for the disk.
void start(const QString &path);

/// Moves the contents of the log into the database file and starts the log anew, unless a reader still needs it.
/// Without this the log would grow for ever. The store is locked only while the header of the log is synchronised.
void shorten(const QString &path);

/// Writes the values in one transaction and puts them on disk. While the store is locked, waits for at most five
/// seconds. Returns an error message, or an empty string on success.
QString write(const QString &path, const SessionStore::Values &values);

} // namespace StoreLog
