#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

/// Stores the session's four values in a SQLite database that only the user can read. Each value has a fixed key and
/// a checksum, and can be changed without rewriting the others.
///
/// A write that returned true is in the system's hands: it survives the end of the process, however the process ends.
/// It is on disk once StoreFile::synchroniseLog has run. A loss of power before that undoes whole writes, the last
/// ones first: the database is in WAL mode and its commits do not wait for the disk
/// (https://www.sqlite.org/pragma.html#pragma_synchronous, NORMAL).
///
/// If the file cannot be opened, the store reports that once through `report`, reads nothing and refuses every write.
/// If the file is damaged, the store reports that, renames the file, and starts a new one with empty values; if the
/// file cannot be renamed, the store behaves as if it could not be opened.
///
/// Opening a file with an earlier layout migrates it to the current one. A file that a later version of the app has
/// written stays unchanged, and the store behaves as if the file could not be opened.
class SessionStore {
public:
    enum class Key { UserId, UserNombre, UserEmail, UserAvatar };
    static constexpr std::array keys{Key::UserId, Key::UserNombre, Key::UserEmail, Key::UserAvatar};

    /// Closes a database with the statements that its writes keep.
    struct Closer {
        void operator()(sqlite3 *database) const;
        void operator()(sqlite3_stmt *statement) const;
    };

    /// Returns the name of a value in the database: "user_id" and so on.
    static const char *name(Key key);

    using Report = std::function<void(const QString &line)>;

    /// Opens or creates the store in `directory`. Creates the directory if it is missing, and makes it accessible to
    /// the user only.
    SessionStore(const QString &directory, Report report);
    ~SessionStore();
    SessionStore(const SessionStore &) = delete;
    SessionStore &operator=(const SessionStore &) = delete;

    bool isOpen() const { return m_database != nullptr; }

    /// Returns the bytes of a value, or nothing if it was never written or cannot be read. Reading a damaged value
    /// replaces the whole file, so that values read before are void; see `wasReplaced`.
    std::optional<QByteArray> read(Key key);

    using Values = QList<std::pair<Key, QByteArray>>;

    /// Writes a value. If that fails, reports the reason, keeps the old value and returns false.
    bool write(Key key, const QByteArray &value) { return write({{key, value}}); }
    /// Writes several values in one transaction.
    bool write(const Values &values);
    /// The same on an open database; returns SQLite's result code. Leaves a database of a later layout unchanged and
    /// returns SQLITE_SCHEMA.
    static int write(sqlite3 *database, const Values &values);

    /// While another process writes, a write waits for at most five seconds. After this call it waits for less than a
    /// frame of the display, and then passes the values to `later` and returns true.
    void postponeWhenLocked(std::function<void(const Values &values)> later);

    /// Returns whether it is time to call StoreLog::shorten.
    bool isLogLong() const;
    /// The path of the database.
    const QString &path() const { return m_path; }

    /// Returns whether the file was found damaged since the last call, even if it could not be renamed.
    bool wasReplaced();

private:
    using Statement = std::unique_ptr<sqlite3_stmt, Closer>;
    enum class Health { Good, Damaged, Unusable };

    void open();
    /// Opens the store again if the file was deleted, or renamed by another process.
    void reopenIfMoved();
    /// Reports a problem. Replaces a damaged file and closes an unusable one.
    void handle(Health health);
    /// Opens the store again if `health` is Damaged, and returns what the second attempt finds.
    Health confirmDamage(Health health);
    Health replace();
    /// Sets m_problem unless the result is Good; so does `readRow`.
    Health tryToOpen();
    /// Checks, before the file is opened for writing, whether a later version of the app has written it.
    Health checkVersion();
    bool isIntact() const;
    Health prepareTables();
    Health refuseLaterVersion();
    int makeTable() const;
    int migrate(int version) const;
    Health checkStructure();
    int checkRows() const;
    Health healthOf(int code) const;
    Statement prepare(const char *sql, int &code) const { return prepare(m_database.get(), sql, code); }
    static Statement prepare(sqlite3 *database, const char *sql, int &code);
    static int version(sqlite3 *database, int &code);
    static int update(sqlite3 *database, Key key, const QByteArray &value);
    int run(const QByteArray &sql) const;
    static int quickCheck(sqlite3 *database);
    Health readRow(Key key, std::optional<QByteArray> &value);
    void reportOnce(const QString &what);

    /// The current layout. A database stores the version of its layout as its user_version.
    static constexpr int layoutVersion = 1;
    /// Each step migrates from one version of the layout to the next; the first one creates version 1 in an empty
    /// file. Never change a released step, since customers have stores of every release.
    using MigrationStep = int (SessionStore::*)() const;
    static const std::array<MigrationStep, layoutVersion> migrationSteps;

    const QString m_directory;
    const QString m_path;
    Report m_report;
    std::function<void(const Values &values)> m_later;
    std::unique_ptr<sqlite3, Closer> m_database;
    QString m_problem;
    /// The length of the log after the last write, in pages of 4 KiB.
    int m_logPages = 0;
    bool m_replaced = false;
    bool m_reported = false;
};
