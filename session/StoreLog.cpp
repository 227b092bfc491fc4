#include "StoreLog.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

/// A connection beside the one of the SessionStore. Null if the store cannot be opened.
std::unique_ptr<sqlite3, SessionStore::Closer> connection(const QString &path, const char *synchronous)
{
    sqlite3 *opened = nullptr;
    const int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    std::unique_ptr<sqlite3, SessionStore::Closer> database(opened);
    if (code != SQLITE_OK)
        return nullptr;
    sqlite3_busy_timeout(opened, 5000);
    sqlite3_exec(opened, synchronous, nullptr, nullptr, nullptr);
    sqlite3_wal_autocheckpoint(opened, 0);
    // The SessionStore may close its connection meanwhile; the last one to close would move the log into the file.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return database;
}

/// Commits a transaction that changes nothing.
void writeNothing(sqlite3 *database)
{
    QByteArray version;
    const auto setVersion = [](void *into, int, char **columns, char **) {
        *static_cast<QByteArray *>(into) = columns[0];
        return 0;
    };
    const auto run = [&](const QByteArray &sql) {
        return sqlite3_exec(database, sql.constData(), setVersion, &version, nullptr) == SQLITE_OK;
    };
    if (run("BEGIN IMMEDIATE")) {
        run("PRAGMA user_version");
        run("PRAGMA user_version = " + version);
        run("COMMIT");
    }
}

} // namespace

void StoreLog::start(const QString &path)
{
    if (QFileInfo(path + "-wal"_L1).size() > 0)
        return;
    if (const auto database = connection(path, "PRAGMA synchronous = NORMAL"))
        writeNothing(database.get());
}

void StoreLog::shorten(const QString &path)
{
    const auto database = connection(path, "PRAGMA synchronous = NORMAL");
    if (!database)
        return;
    sqlite3_exec(database.get(), "PRAGMA journal_size_limit = 1048576", nullptr, nullptr, nullptr);
    int pages = 0;
    int moved = 0;
    const int code = sqlite3_wal_checkpoint_v2(database.get(), nullptr, SQLITE_CHECKPOINT_PASSIVE, &pages, &moved);
    // The next write starts the log anew.
    if (code == SQLITE_OK && pages > 0 && moved == pages)
        writeNothing(database.get());
}

QString StoreLog::write(const QString &path, const SessionStore::Values &values)
{
    const auto database = connection(path, "PRAGMA synchronous = FULL");
    const int code = database ? SessionStore::write(database.get(), values) : SQLITE_CANTOPEN;
    return code == SQLITE_OK ? QString()
                             : u"%1 cannot be written: %2"_s.arg(path, QString::fromUtf8(sqlite3_errstr(code)));
}
