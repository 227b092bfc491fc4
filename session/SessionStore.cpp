#include "SessionStore.h"
#include "StoreFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QUrl>

#include <sqlite3.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

using namespace Qt::StringLiterals;

namespace {

/// In pages. SQLite itself shortens the log at the first of these, within the write that reaches it.
constexpr int longLog = 1000;
constexpr int longestLog = 10'000;

/// SQLite finds damage in its own structures but not in the bytes of a value; this check does, and it covers the key,
/// so that one value cannot pass for another, and whether there is a value at all. XXH3, 64 bits: against accidents,
/// not against a forger.
qint64 checkOf(SessionStore::Key key, const std::optional<QByteArray> &value)
{
    const auto bytes = value.value_or(QByteArray());
    const auto seed = static_cast<XXH64_hash_t>(key) + 1 + (value ? 0 : SessionStore::keys.size());
    return static_cast<qint64>(XXH3_64bits_withSeed(bytes.constData(), static_cast<size_t>(bytes.size()), seed));
}

int rowOf(SessionStore::Key key) { return static_cast<int>(key) + 1; }

} // namespace

constexpr std::array<SessionStore::Step, SessionStore::layoutVersion> SessionStore::steps{&SessionStore::makeTable};

void SessionStore::Closer::operator()(sqlite3 *database) const { sqlite3_close(database); }
void SessionStore::Closer::operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }

const char *SessionStore::name(Key key)
{
    switch (key) {
    case Key::UserId:
        return "user_id";
    case Key::UserNombre:
        return "user_nombre";
    case Key::UserEmail:
        return "user_email";
    case Key::UserAvatar:
        return "user_avatar";
    }
    return "";
}

SessionStore::SessionStore(const QString &directory, Report report)
    : m_directory(directory), m_path(directory + "/session.sqlite"_L1), m_report(std::move(report))
{
    open();
}

SessionStore::~SessionStore() = default;

void SessionStore::open()
{
    m_obstacle = StoreFile::makeFolder(m_directory);
    if (!m_obstacle.isEmpty())
        return settle(Health::Unusable);
    const StoreFile::Turn turn(m_directory);
    settle(confirmed(tryToOpen()));
}

void SessionStore::follow()
{
    int moved = 0;
    if (sqlite3_file_control(m_database.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved) {
        m_database.reset();
        open();
    }
}

void SessionStore::settle(Health health)
{
    if (health == Health::Damaged) {
        complain(m_obstacle);
        health = replace();
    }
    if (health != Health::Good) {
        complain(m_obstacle);
        m_database.reset();
    }
}

SessionStore::Health SessionStore::confirmed(Health health)
{
    // A call that the disk refuses can look like damage, also within SQLite, and another process may have replaced
    // the file just now: damage is what can be read from end to end and is found twice.
    if (health != Health::Damaged)
        return health;
    m_database.reset();
    if (StoreFile::canBeRead(m_path))
        return tryToOpen();
    m_obstacle = u"%1 cannot be read"_s.arg(m_path);
    return Health::Unusable;
}

SessionStore::Health SessionStore::replace()
{
    m_database.reset();
    m_replaced = true;
    if (StoreFile::moveAside(m_path))
        return tryToOpen();
    m_obstacle = u"%1 cannot be moved aside"_s.arg(m_path);
    return Health::Unusable;
}

SessionStore::Health SessionStore::tryToOpen()
{
    m_obstacle = StoreFile::makeFile(m_path);
    if (!m_obstacle.isEmpty())
        return Health::Unusable;
    if (StoreFile::isStump(m_path)) {
        m_obstacle = u"%1 is damaged"_s.arg(m_path);
        return Health::Damaged;
    }

    if (const Health health = checkVersion(); health != Health::Good)
        return health;

    sqlite3 *database = nullptr;
    const int code =
        sqlite3_open_v2(QFile::encodeName(m_path).constData(), &database, SQLITE_OPEN_READWRITE, nullptr);
    m_database.reset(database);
    if (code != SQLITE_OK) {
        m_obstacle = u"%1 cannot be opened: %2"_s.arg(m_path, QString::fromUtf8(sqlite3_errstr(code)));
        return healthOf(code);
    }
    sqlite3_extended_result_codes(database, 1);
    sqlite3_busy_timeout(database, 5000);
    m_logLength = 0;
    sqlite3_wal_hook(
        database,
        [](void *store, sqlite3 *, const char *, int pages) {
            auto *const self = static_cast<SessionStore *>(store);
            self->m_logLength = pages;
            if (pages >= longestLog)
                self->shortenLog();
            return SQLITE_OK;
        },
        this);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    const Health health = prepareTables();
    return health == Health::Good ? checkStructure() : health;
}

SessionStore::Health SessionStore::checkVersion()
{
    const auto layout = StoreFile::layoutOf(m_path);
    if (!layout || layout->version <= layoutVersion)
        return Health::Good;
    // What lies beside the file belongs to it, and may be another process's that is just working on it.
    if (!layout->alone || isWhole())
        return leaveToLaterVersion();
    m_obstacle = u"%1 is damaged"_s.arg(m_path);
    return Health::Damaged;
}

bool SessionStore::isWhole() const
{
    // Neither locked nor changed, nor anything made beside it (https://www.sqlite.org/uri.html#uriimmutable).
    QUrl address = QUrl::fromLocalFile(m_path);
    address.setQuery(u"immutable=1"_s);
    sqlite3 *opened = nullptr;
    int code =
        sqlite3_open_v2(address.toEncoded().constData(), &opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    const std::unique_ptr<sqlite3, Closer> database(opened);
    return code == SQLITE_OK && quickCheck(opened) == SQLITE_OK;
}

SessionStore::Health SessionStore::prepareTables()
{
    // What SQLite promises for these two (https://www.sqlite.org/pragma.html#pragma_synchronous): a commit that has
    // returned survives a loss of power, since the log is synchronised before it returns, and a later one is there
    // wholly or not at all. It holds on disks that keep what they report as synchronised, and that leave bytes alone
    // beside those being written.
    int code = run("PRAGMA journal_mode = WAL");
    if (code == SQLITE_OK)
        code = run("PRAGMA synchronous = FULL");
    if (code == SQLITE_OK)
        code = run("PRAGMA journal_size_limit = 1048576");
    if (code == SQLITE_OK)
        code = run("PRAGMA cell_size_check = ON");
    if (code == SQLITE_OK)
        code = run("BEGIN IMMEDIATE");
    const int found = code == SQLITE_OK ? version(code) : 0;
    if (code == SQLITE_OK && found > layoutVersion)
        return leaveToLaterVersion();
    if (code == SQLITE_OK && found < 0)
        code = SQLITE_CORRUPT;
    if (code == SQLITE_OK && found < layoutVersion)
        code = migrate(found);
    if (code == SQLITE_OK)
        code = run("COMMIT");
    if (code != SQLITE_OK) {
        // The message for this one failure would quote from the file.
        m_obstacle = u"%1 cannot be used: %2"_s.arg(m_path, QString::fromUtf8(sqlite3_errstr(code)));
        return healthOf(code);
    }
    return Health::Good;
}

SessionStore::Health SessionStore::leaveToLaterVersion()
{
    m_obstacle = u"%1 was written by a later version of the app and is left as it is"_s.arg(m_path);
    // Closing would move what the log holds into the file.
    if (m_database)
        sqlite3_db_config(m_database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return Health::Unusable;
}

int SessionStore::version(int &code) const
{
    const Statement statement = prepare("PRAGMA user_version", code);
    if (!statement)
        return 0;
    code = sqlite3_step(statement.get());
    if (code == SQLITE_ROW)
        code = SQLITE_OK;
    return sqlite3_column_int(statement.get(), 0);
}

int SessionStore::migrate(int version) const
{
    int code = SQLITE_OK;
    for (auto at = static_cast<std::size_t>(version); code == SQLITE_OK && at < steps.size(); ++at)
        code = (this->*steps[at])();
    if (code == SQLITE_OK)
        code = run("PRAGMA user_version = " + QByteArray::number(layoutVersion));
    if (version == 0)
        StoreFile::synchroniseFoldersOf(m_directory);
    return code;
}

int SessionStore::makeTable() const
{
    int code = run("CREATE TABLE session (row INTEGER PRIMARY KEY, key TEXT NOT NULL, value BLOB, checksum INTEGER)");
    for (const Key key : keys) {
        if (code != SQLITE_OK)
            break;
        const Statement insert = prepare("INSERT INTO session VALUES (?, ?, NULL, ?)", code);
        if (!insert)
            break;
        sqlite3_bind_int(insert.get(), 1, rowOf(key));
        sqlite3_bind_text(insert.get(), 2, name(key), -1, SQLITE_STATIC);
        sqlite3_bind_int64(insert.get(), 3, checkOf(key, std::nullopt));
        code = sqlite3_step(insert.get()) == SQLITE_DONE ? SQLITE_OK : sqlite3_errcode(m_database.get());
    }
    return code;
}

SessionStore::Health SessionStore::checkStructure()
{
    // Damage that only a write would meet: pages that hang together wrongly, or a header that forbids writing.
    int code = quickCheck(m_database.get());
    if (code == SQLITE_OK && sqlite3_db_readonly(m_database.get(), "main") == 1 && QFileInfo(m_path).isWritable())
        code = SQLITE_CORRUPT;
    if (code == SQLITE_OK)
        code = checkRows();
    if (code == SQLITE_OK)
        return Health::Good;
    m_obstacle = healthOf(code) == Health::Damaged
                     ? u"%1 is damaged"_s.arg(m_path)
                     : u"%1 cannot be read: %2"_s.arg(m_path, QString::fromUtf8(sqlite3_errstr(code)));
    return healthOf(code);
}

int SessionStore::checkRows() const
{
    // The values themselves are checked when they are read, so that a large photo does not hold up the start.
    int code = SQLITE_OK;
    const Statement statement = prepare("SELECT row, key FROM session ORDER BY row", code);
    if (statement) {
        for (const Key key : keys) {
            code = sqlite3_step(statement.get());
            if (code != SQLITE_ROW)
                break;
            const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement.get(), 1));
            if (sqlite3_column_int(statement.get(), 0) != rowOf(key) || qstrcmp(text, name(key)) != 0)
                return SQLITE_CORRUPT;
        }
        if (code == SQLITE_ROW) {
            code = sqlite3_step(statement.get());
            return code == SQLITE_DONE ? SQLITE_OK : code == SQLITE_ROW ? SQLITE_CORRUPT : code;
        }
        if (code == SQLITE_DONE)
            return SQLITE_CORRUPT;
    }
    return code;
}

SessionStore::Health SessionStore::healthOf(int code) const
{
    // Later SQLite reads a long value from the file itself and says so where the file ends too early; it has said
    // that a page is damaged before.
    if (code == SQLITE_IOERR_SHORT_READ)
        return Health::Damaged;
    switch (code & 0xFF) {
    case SQLITE_OK:
        return Health::Good;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_ERROR:
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG: // what a row claims to be; nothing that large was ever written
        return Health::Damaged;
    default:
        return Health::Unusable;
    }
}

int SessionStore::quickCheck(sqlite3 *database)
{
    sqlite3_stmt *prepared = nullptr;
    int code = sqlite3_prepare_v2(database, "PRAGMA quick_check(1)", -1, &prepared, nullptr);
    const Statement statement(prepared);
    if (!statement)
        return code;
    code = sqlite3_step(statement.get());
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement.get(), 0));
    if (code == SQLITE_ROW)
        code = qstrcmp(text, "ok") == 0 ? SQLITE_OK : SQLITE_CORRUPT;
    return code;
}

SessionStore::Statement SessionStore::prepare(const char *sql, int &code) const
{
    sqlite3_stmt *statement = nullptr;
    code = sqlite3_prepare_v2(m_database.get(), sql, -1, &statement, nullptr);
    return Statement(statement);
}

int SessionStore::run(const QByteArray &sql) const
{
    return sqlite3_exec(m_database.get(), sql.constData(), nullptr, nullptr, nullptr);
}

std::optional<QByteArray> SessionStore::read(Key key)
{
    if (m_database)
        follow();
    if (!m_database)
        return std::nullopt;
    std::optional<QByteArray> value;
    Health health = find(key, value);
    if (health == Health::Damaged) {
        const StoreFile::Turn turn(m_directory);
        health = confirmed(health);
        if (health == Health::Good)
            health = find(key, value);
        settle(health);
    }
    if (health == Health::Good)
        return value;
    complain(m_obstacle);
    return std::nullopt;
}

SessionStore::Health SessionStore::find(Key key, std::optional<QByteArray> &value)
{
    int code = SQLITE_OK;
    const Statement statement = prepare("SELECT value, checksum FROM session WHERE row = ?", code);
    if (statement) {
        sqlite3_bind_int(statement.get(), 1, rowOf(key));
        code = sqlite3_step(statement.get());
        if (code == SQLITE_DONE)
            code = SQLITE_CORRUPT;
    }
    if (code == SQLITE_ROW) {
        std::optional<QByteArray> found;
        if (sqlite3_column_type(statement.get(), 0) != SQLITE_NULL) {
            const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement.get(), 0));
            found.emplace(bytes, sqlite3_column_bytes(statement.get(), 0));
        }
        if (sqlite3_column_type(statement.get(), 1) == SQLITE_INTEGER &&
            sqlite3_column_int64(statement.get(), 1) == checkOf(key, found)) {
            value = found;
            return Health::Good;
        }
        code = SQLITE_CORRUPT;
    }
    m_obstacle = u"%1 in %2 cannot be read: %3"_s.arg(QLatin1String(name(key)), m_path,
                                                      QString::fromUtf8(sqlite3_errstr(code)));
    return healthOf(code);
}

bool SessionStore::write(const QList<std::pair<Key, QByteArray>> &values)
{
    if (m_database)
        follow();
    if (!m_database)
        return false;
    int code = run("BEGIN IMMEDIATE");
    // A later version, started beside this one, may have changed the layout meanwhile.
    if (code == SQLITE_OK && version(code) > layoutVersion) {
        settle(leaveToLaterVersion());
        return false;
    }
    for (const auto &[key, value] : values) {
        if (code == SQLITE_OK)
            code = update(key, value);
    }
    if (code == SQLITE_OK)
        code = run("COMMIT");
    if (code == SQLITE_OK) {
        m_complained = false;
        return true;
    }
    // Some failures have rolled it back by themselves.
    if (!sqlite3_get_autocommit(m_database.get()))
        run("ROLLBACK");
    QStringList names;
    for (const auto &[key, value] : values)
        names += QLatin1String(name(key));
    complain(u"%1 in %2 cannot be written: %3"_s.arg(names.join(u", "_s), m_path,
                                                     QString::fromUtf8(sqlite3_errstr(code))));
    return false;
}

int SessionStore::update(Key key, const QByteArray &value) const
{
    int code = SQLITE_OK;
    const Statement statement = prepare("UPDATE session SET value = ?, checksum = ? WHERE row = ?", code);
    if (!statement)
        return code;
    // A null pointer would be bound as NULL, which stands for "never written".
    const char *bytes = value.isNull() ? "" : value.constData();
    sqlite3_bind_blob64(statement.get(), 1, bytes, static_cast<sqlite3_uint64>(value.size()), SQLITE_STATIC);
    sqlite3_bind_int64(statement.get(), 2, checkOf(key, value));
    sqlite3_bind_int(statement.get(), 3, rowOf(key));
    code = sqlite3_step(statement.get());
    if (code != SQLITE_DONE)
        return code;
    return sqlite3_changes(m_database.get()) == 1 ? SQLITE_OK : SQLITE_CORRUPT;
}

bool SessionStore::isLogLong() const { return m_logLength >= longLog; }

void SessionStore::shortenLog()
{
    // What cannot be moved now stays in the log, where it is as safe.
    m_logLength = 0;
    if (m_database)
        sqlite3_wal_checkpoint_v2(m_database.get(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
}

bool SessionStore::wasReplaced() { return std::exchange(m_replaced, false); }

void SessionStore::complain(const QString &what)
{
    if (std::exchange(m_complained, true))
        return;
    m_report(what);
}
