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

constexpr int longLogPages = 1000;
constexpr int usualPatience = 5000;
/// Less than a frame at 60 Hz.
constexpr int shortPatience = 8;

/// SQLite detects damage in its own structures, but not in the bytes of a value. The checksum covers the value, its
/// key, so that values cannot be swapped, and whether there is a value at all. XXH3 detects accidents, not forgery.
qint64 checksumOf(SessionStore::Key key, const std::optional<QByteArray> &value)
{
    const auto bytes = value.value_or(QByteArray());
    const auto seed = static_cast<XXH64_hash_t>(key) + 1 + (value ? 0 : SessionStore::keys.size());
    return static_cast<qint64>(XXH3_64bits_withSeed(bytes.constData(), static_cast<size_t>(bytes.size()), seed));
}

int rowOf(SessionStore::Key key) { return static_cast<int>(key) + 1; }

/// Returns a statement that is prepared once and kept until the database is closed, or null.
sqlite3_stmt *kept(sqlite3 *database, const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    while ((statement = sqlite3_next_stmt(database, statement))) {
        if (qstrcmp(sqlite3_sql(statement), sql) == 0)
            return statement;
    }
    sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    return statement;
}

/// Runs a statement that is kept.
int run(sqlite3 *database, const char *sql)
{
    sqlite3_stmt *const statement = kept(database, sql);
    if (!statement)
        return sqlite3_errcode(database);
    sqlite3_step(statement);
    return sqlite3_reset(statement);
}

} // namespace

constexpr std::array<SessionStore::MigrationStep, SessionStore::layoutVersion> SessionStore::migrationSteps{
    &SessionStore::makeTable};

void SessionStore::Closer::operator()(sqlite3 *database) const
{
    while (sqlite3_stmt *const kept = sqlite3_next_stmt(database, nullptr))
        sqlite3_finalize(kept);
    sqlite3_close(database);
}
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
    m_problem = StoreFile::makeFolder(m_directory);
    if (!m_problem.isEmpty())
        return handle(Health::Unusable);
    const StoreFile::Lock lock(m_directory);
    handle(confirmDamage(tryToOpen()));
}

void SessionStore::reopenIfMoved()
{
    int moved = 0;
    if (sqlite3_file_control(m_database.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved) {
        m_database.reset();
        open();
    }
}

void SessionStore::handle(Health health)
{
    if (health == Health::Damaged) {
        reportOnce(m_problem);
        health = replace();
    }
    if (health != Health::Good) {
        reportOnce(m_problem);
        m_database.reset();
    }
}

SessionStore::Health SessionStore::confirmDamage(Health health)
{
    // A failing disk can look like damage, and another process may just have replaced the file. A file counts as
    // damaged only if all of it can be read and the damage is found twice.
    if (health != Health::Damaged)
        return health;
    m_database.reset();
    if (StoreFile::canBeRead(m_path))
        return tryToOpen();
    m_problem = u"%1 cannot be read"_s.arg(m_path);
    return Health::Unusable;
}

SessionStore::Health SessionStore::replace()
{
    m_database.reset();
    m_replaced = true;
    if (StoreFile::moveAside(m_path))
        return tryToOpen();
    m_problem = u"%1 cannot be moved aside"_s.arg(m_path);
    return Health::Unusable;
}

SessionStore::Health SessionStore::tryToOpen()
{
    m_problem = StoreFile::makeFile(m_path);
    if (!m_problem.isEmpty())
        return Health::Unusable;
    if (StoreFile::hasLostContent(m_path)) {
        m_problem = u"%1 is damaged"_s.arg(m_path);
        return Health::Damaged;
    }

    if (const Health health = checkVersion(); health != Health::Good)
        return health;

    sqlite3 *database = nullptr;
    const int code =
        sqlite3_open_v2(QFile::encodeName(m_path).constData(), &database, SQLITE_OPEN_READWRITE, nullptr);
    m_database.reset(database);
    if (code != SQLITE_OK) {
        m_problem = u"%1 cannot be opened: %2"_s.arg(m_path, QString::fromUtf8(sqlite3_errstr(code)));
        return healthOf(code);
    }
    sqlite3_extended_result_codes(database, 1);
    sqlite3_busy_timeout(database, m_later ? shortPatience : usualPatience);
    m_logPages = 0;
    // Replaces SQLite's own hook, which would move a long log into the file during a write.
    sqlite3_wal_hook(
        database,
        [](void *store, sqlite3 *, const char *, int pages) {
            static_cast<SessionStore *>(store)->m_logPages = pages;
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
    // With a log or a journal the file cannot be checked on its own, and another process may be writing it.
    if (!layout->alone || isIntact())
        return refuseLaterVersion();
    m_problem = u"%1 is damaged"_s.arg(m_path);
    return Health::Damaged;
}

bool SessionStore::isIntact() const
{
    // In immutable mode SQLite neither locks nor changes the file, and creates no files beside it
    // (https://www.sqlite.org/uri.html#uriimmutable).
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
    // With these two settings (https://www.sqlite.org/pragma.html#pragma_synchronous) a commit appends to the log and
    // does not wait for the disk. An interrupted commit is stored completely or not at all. This requires a disk that
    // keeps the data that it reports as synchronised, and does not damage neighbouring data while writing.
    int code = run("PRAGMA journal_mode = WAL");
    if (code == SQLITE_OK)
        code = run("PRAGMA synchronous = NORMAL");
    if (code == SQLITE_OK)
        code = run("PRAGMA cell_size_check = ON");
    // The usual start needs no lock: another process may hold it.
    int found = code == SQLITE_OK ? version(m_database.get(), code) : 0;
    if (code == SQLITE_OK && found < layoutVersion) {
        code = run("BEGIN IMMEDIATE");
        if (code == SQLITE_OK)
            found = version(m_database.get(), code);
        if (code == SQLITE_OK && found < 0)
            code = SQLITE_CORRUPT;
        if (code == SQLITE_OK && found < layoutVersion)
            code = migrate(found);
        if (code == SQLITE_OK)
            code = run("COMMIT");
    }
    if (code == SQLITE_OK && found > layoutVersion)
        return refuseLaterVersion();
    if (code != SQLITE_OK) {
        // sqlite3_errmsg could quote from the file.
        m_problem = u"%1 cannot be used: %2"_s.arg(m_path, QString::fromUtf8(sqlite3_errstr(code)));
        return healthOf(code);
    }
    return Health::Good;
}

SessionStore::Health SessionStore::refuseLaterVersion()
{
    m_problem = u"%1 was written by a later version of the app and is left as it is"_s.arg(m_path);
    // Closing the database would move the contents of the log into the file.
    if (m_database)
        sqlite3_db_config(m_database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return Health::Unusable;
}

int SessionStore::version(sqlite3 *database, int &code)
{
    sqlite3_stmt *const statement = kept(database, "PRAGMA user_version");
    if (!statement) {
        code = sqlite3_errcode(database);
        return 0;
    }
    sqlite3_step(statement);
    const int found = sqlite3_column_int(statement, 0);
    code = sqlite3_reset(statement);
    return found;
}

int SessionStore::migrate(int version) const
{
    int code = SQLITE_OK;
    for (auto at = static_cast<std::size_t>(version); code == SQLITE_OK && at < migrationSteps.size(); ++at)
        code = (this->*migrationSteps[at])();
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
        sqlite3_bind_int64(insert.get(), 3, checksumOf(key, std::nullopt));
        code = sqlite3_step(insert.get()) == SQLITE_DONE ? SQLITE_OK : sqlite3_errcode(m_database.get());
    }
    return code;
}

SessionStore::Health SessionStore::checkStructure()
{
    // Detects damage that only a write would find: wrong links between pages, or a header that forbids writing.
    int code = quickCheck(m_database.get());
    if (code == SQLITE_OK && sqlite3_db_readonly(m_database.get(), "main") == 1 && QFileInfo(m_path).isWritable())
        code = SQLITE_CORRUPT;
    if (code == SQLITE_OK)
        code = checkRows();
    if (code == SQLITE_OK)
        return Health::Good;
    m_problem = healthOf(code) == Health::Damaged
                    ? u"%1 is damaged"_s.arg(m_path)
                    : u"%1 cannot be read: %2"_s.arg(m_path, QString::fromUtf8(sqlite3_errstr(code)));
    return healthOf(code);
}

int SessionStore::checkRows() const
{
    // The values are checked when they are read, so that a large photo does not delay the start.
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
    // Newer versions of SQLite return this code if the file ends within a long value; older ones return
    // SQLITE_CORRUPT.
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
    case SQLITE_TOOBIG: // a damaged length: the app never writes values of this size
        return Health::Damaged;
    default:
        return Health::Unusable;
    }
}

int SessionStore::quickCheck(sqlite3 *database)
{
    sqlite3_stmt *prepared = nullptr;
    int code = sqlite3_prepare_v2(database, "PRAGMA quick_check", -1, &prepared, nullptr);
    const Statement statement(prepared);
    if (!statement)
        return code;
    code = sqlite3_step(statement.get());
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement.get(), 0));
    if (code == SQLITE_ROW)
        code = qstrcmp(text, "ok") == 0 ? SQLITE_OK : SQLITE_CORRUPT;
    return code;
}

SessionStore::Statement SessionStore::prepare(sqlite3 *database, const char *sql, int &code)
{
    sqlite3_stmt *statement = nullptr;
    code = sqlite3_prepare_v2(database, sql, -1, &statement, nullptr);
    return Statement(statement);
}

int SessionStore::run(const QByteArray &sql) const
{
    return sqlite3_exec(m_database.get(), sql.constData(), nullptr, nullptr, nullptr);
}

std::optional<QByteArray> SessionStore::read(Key key)
{
    if (m_database)
        reopenIfMoved();
    if (!m_database)
        return std::nullopt;
    std::optional<QByteArray> value;
    Health health = readRow(key, value);
    if (health == Health::Damaged) {
        const StoreFile::Lock lock(m_directory);
        health = confirmDamage(health);
        if (health == Health::Good)
            health = readRow(key, value);
        handle(health);
    }
    if (health == Health::Good)
        return value;
    reportOnce(m_problem);
    return std::nullopt;
}

SessionStore::Health SessionStore::readRow(Key key, std::optional<QByteArray> &value)
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
            sqlite3_column_int64(statement.get(), 1) == checksumOf(key, found)) {
            value = found;
            return Health::Good;
        }
        code = SQLITE_CORRUPT;
    }
    m_problem = u"%1 in %2 cannot be read: %3"_s.arg(QLatin1String(name(key)), m_path,
                                                     QString::fromUtf8(sqlite3_errstr(code)));
    return healthOf(code);
}

int SessionStore::write(sqlite3 *database, const Values &values)
{
    int code = ::run(database, "BEGIN IMMEDIATE");
    // A later version of the app may have changed the layout since the file was opened.
    if (code == SQLITE_OK && version(database, code) > layoutVersion)
        code = SQLITE_SCHEMA;
    for (const auto &[key, value] : values) {
        if (code == SQLITE_OK)
            code = update(database, key, value);
    }
    if (code == SQLITE_OK)
        code = ::run(database, "COMMIT");
    // Some errors roll the transaction back automatically.
    if (code != SQLITE_OK && !sqlite3_get_autocommit(database))
        ::run(database, "ROLLBACK");
    return code;
}

bool SessionStore::write(const Values &values)
{
    if (m_database)
        reopenIfMoved();
    if (!m_database)
        return false;
    const int code = write(m_database.get(), values);
    if (code == SQLITE_OK) {
        m_reported = false;
        return true;
    }
    if (code == SQLITE_SCHEMA) {
        handle(refuseLaterVersion());
        return false;
    }
    if ((code & 0xFF) == SQLITE_BUSY && m_later) {
        m_later(values);
        return true;
    }
    QStringList names;
    for (const auto &[key, value] : values)
        names += QLatin1String(name(key));
    reportOnce(u"%1 in %2 cannot be written: %3"_s.arg(names.join(u", "_s), m_path,
                                                       QString::fromUtf8(sqlite3_errstr(code))));
    return false;
}

void SessionStore::postponeWhenLocked(std::function<void(const Values &values)> later)
{
    m_later = std::move(later);
    if (m_database)
        sqlite3_busy_timeout(m_database.get(), shortPatience);
}

int SessionStore::update(sqlite3 *database, Key key, const QByteArray &value)
{
    sqlite3_stmt *const statement = kept(database, "UPDATE session SET value = ?, checksum = ? WHERE row = ?");
    if (!statement)
        return sqlite3_errcode(database);
    // A null pointer would be bound as NULL, which means "never written"; constData never returns one.
    sqlite3_bind_blob64(statement, 1, value.constData(), static_cast<sqlite3_uint64>(value.size()), SQLITE_STATIC);
    sqlite3_bind_int64(statement, 2, checksumOf(key, value));
    sqlite3_bind_int(statement, 3, rowOf(key));
    sqlite3_step(statement);
    const int code = sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    if (code != SQLITE_OK)
        return code;
    return sqlite3_changes(database) == 1 ? SQLITE_OK : SQLITE_CORRUPT;
}

bool SessionStore::isLogLong() const { return m_logPages >= longLogPages; }

bool SessionStore::wasReplaced() { return std::exchange(m_replaced, false); }

void SessionStore::reportOnce(const QString &what)
{
    if (std::exchange(m_reported, true))
        return;
    m_report(what);
}
