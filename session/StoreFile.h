#pragma once

#include <QString>

#include <optional>

/// What the store does with its file by itself, outside SQLite. None of it may happen while this process has the file
/// open in SQLite: closing a file lets go of all locks that the process has on it.
namespace StoreFile {

/// Makes the folder for the user alone where it is missing, and closes it to others where it is open. Returns what is
/// in the way, or an empty text; so does makeFile, which makes an empty file.
QString makeFolder(const QString &directory);
QString makeFile(const QString &path);

/// As long as it lives, other processes wait before they make, open or replace the store in `directory`: SQLite's own
/// locks go with the file, and so do not hold where the file itself is replaced. Waits for five seconds at most, and
/// goes on without where the folder cannot be locked.
class Turn {
public:
    explicit Turn(const QString &directory);
    ~Turn();
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

private:
    int m_folder;
};

/// True for a file that has lost its content, which SQLite would silently take for a new one.
bool isStump(const QString &path);

/// What the file says of its own layout.
struct Layout {
    /// The database's user_version, from its log where that holds a later one.
    int version = 0;
    /// Whether there is neither a log nor a journal beside it.
    bool alone = true;
};

/// Reads it without SQLite, which cannot look at a database with a log and change nothing beside it. Nothing for what
/// is no SQLite database (https://www.sqlite.org/fileformat.html).
std::optional<Layout> layoutOf(const QString &path);

/// Whether every byte of the file and its log can be had, so that what is wrong with them is not the disk's failing.
bool canBeRead(const QString &path);

/// Puts the names of a new store's folders on disk. SQLite does that for the files in the store's own folder; like
/// SQLite, this goes on where a folder cannot be synchronised.
void synchroniseFoldersOf(const QString &directory);

/// Renames the file and its companions to PATH.damaged-N. False when one of them is still in its place.
bool moveAside(const QString &path);

} // namespace StoreFile
