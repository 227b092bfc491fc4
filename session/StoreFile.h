#pragma once

#include <QString>

#include <optional>

/// Operations on the store's file without SQLite. Do not call them while this process has the file open in SQLite:
/// closing any descriptor of a file releases all locks that the process holds on it.
namespace StoreFile {

/// Creates the folder if it is missing, and makes it accessible to the user only. Returns an error message, or an
/// empty string on success.
QString makeFolder(const QString &directory);
/// The same for a file, which is created empty.
QString makeFile(const QString &path);

/// Locks `directory`, so that other processes wait before they create, open or replace the store in it. SQLite's own
/// locks belong to the file and do not help when the file is replaced. Waits at most five seconds, and goes on
/// without the lock if it cannot be had.
class Lock {
public:
    explicit Lock(const QString &directory);
    ~Lock();
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

private:
    int m_folder;
};

/// Returns whether the file has lost its content. SQLite would silently treat it as a new file.
bool hasLostContent(const QString &path);

struct Layout {
    /// The database's user_version, from the log if that contains a later one.
    int version = 0;
    /// Whether there is neither a log nor a journal beside the file.
    bool alone = true;
};

/// Reads the layout without SQLite, which cannot open a database that has a log without changing files beside it.
/// Returns nothing if the file is not a SQLite database (https://www.sqlite.org/fileformat.html).
std::optional<Layout> layoutOf(const QString &path);

/// Returns whether every byte of the file and its log can be read. If so, an error in them is not a disk failure.
bool canBeRead(const QString &path);

/// Synchronises the folders of a new store, so that their names are on disk. SQLite does the same for the files in
/// the store's folder. Like SQLite, ignores folders that cannot be synchronised.
void synchroniseFoldersOf(const QString &directory);

/// Synchronises the log of the store at `path`; SQLite has synchronised its header and its name when it made it.
/// Returns an error message, or an empty string on success and if there is no log. Uses only the log's own
/// descriptor, so it can be called on any thread while SQLite has the store open.
QString synchroniseLog(const QString &path);
/// The same for any file that this process has not open in SQLite.
QString synchronise(const QString &path);

/// Renames the file, its log and its journal to PATH.damaged-N. Returns false if one of them could not be renamed.
bool moveAside(const QString &path);

} // namespace StoreFile
