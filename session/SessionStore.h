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

/// The file behind the session: four values under fixed keys, each with a check of its own, in a SQLite database that
/// only the user can read. A write that returned true is on disk: the database is in WAL mode and synchronised at
/// each commit (https://www.sqlite.org/pragma.html#pragma_synchronous, FULL). A change to one value does not rewrite
/// another.
///
/// A store that cannot be opened, or is found damaged, says so once through `report`. A damaged file is moved
/// aside, beside the new one, and all values start empty; one that cannot be opened, or not be moved, leaves a store
/// that reads nothing and refuses every write.
///
/// A store of an earlier layout is brought to the one of this version when it is opened. One that a later version of
/// the app wrote is no damage: it is only read as far as is needed to know that, stays as it is, and leaves a store
/// like one that cannot be opened.
class SessionStore {
public:
    enum class Key { UserId, UserNombre, UserEmail, UserAvatar };
    static constexpr std::array keys{Key::UserId, Key::UserNombre, Key::UserEmail, Key::UserAvatar};

    /// The name under which a value is kept: "user_id" and so on.
    static const char *name(Key key);

    using Report = std::function<void(const QString &line)>;

    /// Opens or creates the store in `directory`, which is created for the user alone where it is missing.
    SessionStore(const QString &directory, Report report);
    ~SessionStore();
    SessionStore(const SessionStore &) = delete;
    SessionStore &operator=(const SessionStore &) = delete;

    /// The bytes of a value; nothing when it was never written or cannot be read. Reading a damaged value moves
    /// the whole file aside: what was read before is then to be forgotten, see `wasReplaced`.
    std::optional<QByteArray> read(Key key);

    /// False, with a report, when the value could not be written; the old one is then still there.
    bool write(Key key, const QByteArray &value) { return write({{key, value}}); }
    /// The same for several values, all of which are then in the store, or none.
    bool write(const QList<std::pair<Key, QByteArray>> &values);

    /// Whether so much has been written that `shortenLog` is worth its while: with a large photo it takes about as
    /// long as the write did. Long before a log fills a disk, a write shortens it by itself.
    bool isLogLong() const;
    /// Moves what the log holds into the file. Nothing that was written depends on it.
    void shortenLog();

    /// True after the file was found damaged, whether it could be moved aside or not, until this is called.
    bool wasReplaced();

private:
    struct Closer {
        void operator()(sqlite3 *database) const;
        void operator()(sqlite3_stmt *statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Closer>;
    enum class Health { Good, Damaged, Unusable };

    void open();
    /// Opens what is now in the file's place, if another process has put it aside or it was deleted.
    void follow();
    /// Acts on what was found: says what is in the way, puts a damaged file aside, does without one that is unusable.
    void settle(Health health);
    /// The verdict after a second look where the first found damage.
    Health confirmed(Health health);
    Health replace();
    /// Whatever is not good leaves its reason in m_obstacle; so does `find`.
    Health tryToOpen();
    /// What a file says of its layout before it is opened for writing: whether this version may open it.
    Health checkVersion();
    bool isWhole() const;
    Health prepareTables();
    /// Leaves the file to the later version that wrote it, from which moment on nothing of it changes.
    Health leaveToLaterVersion();
    int makeTable() const;
    int version(int &code) const;
    int migrate(int version) const;
    int update(Key key, const QByteArray &value) const;
    Health checkStructure();
    int checkRows() const;
    Health healthOf(int code) const;
    Statement prepare(const char *sql, int &code) const;
    int run(const QByteArray &sql) const;
    static int quickCheck(sqlite3 *database);
    Health find(Key key, std::optional<QByteArray> &value);
    void complain(const QString &what);

    /// The layout of this version; a database has its own as its user_version.
    static constexpr int layoutVersion = 1;
    /// Each makes the layout of a version out of the one before: the first makes version 1 in an empty file. They
    /// stay as they were released, since stores of every release are about.
    using Step = int (SessionStore::*)() const;
    static const std::array<Step, layoutVersion> steps;

    const QString m_directory;
    const QString m_path;
    Report m_report;
    std::unique_ptr<sqlite3, Closer> m_database;
    QString m_obstacle;
    /// Of the log, in pages of 4 KiB, after the last write.
    int m_logLength = 0;
    bool m_replaced = false;
    bool m_complained = false;
};
