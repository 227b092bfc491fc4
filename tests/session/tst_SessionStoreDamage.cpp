#include "MarovendaTest.h"
#include "Stores.h"

#include <QTest>

using namespace Qt::StringLiterals;
using Key = SessionStore::Key;
using Stores::Folder;
using Stores::run;
using Stores::Values;
using Stores::Watched;

/// A file that is not, or no longer, a store: never a crash and never a wrong value.
class SessionStoreDamageTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void foreignFileIsMovedAside_data();
    void foreignFileIsMovedAside();
    void missingOrEmptyFileBecomesAStore();
    void databaseChangedFromOutsideIsMovedAside_data();
    void databaseChangedFromOutsideIsMovedAside();
    void lostRowIsNotWritten();
    void enormousRowIsDamage();
    void laterVersionIsLeftAlone_data();
    void laterVersionIsLeftAlone();
    void laterVersionInTheLogIsLeftAlone();
    void laterVersionThatIsCutOffIsDamage();
    void laterVersionThatComesMeanwhileIsLeftAlone();
    void filesAsideAreAllKept();
    void companionsGoAsideToo();
    void journalGoesAsideToo();
    void logWithoutItsFileGoesAside();

private:
    static void expectReplaced(const Folder &folder, Watched &store, const QByteArray &kept);
    static void expectLeftAlone(const Folder &folder, Watched &store, const QMap<QString, QByteArray> &files);
};

/// All values are gone, one line says so, the old file is aside, and the new one works.
void SessionStoreDamageTest::expectReplaced(const Folder &folder, Watched &store, const QByteArray &kept)
{
    QCOMPARE(store.values(), Values());
    QVERIFY(store.replaced);
    QVERIFY(!store.store->wasReplaced());
    QCOMPARE(store.reports.size(), 1);
    QVERIFY2(store.reports.first().contains(folder.file()), qPrintable(store.reports.first()));
    QVERIFY(!store.reports.first().contains(u'\n'));
    QVERIFY(folder.aside().contains(u"session.sqlite.damaged-1"_s));
    if (!kept.isNull())
        QVERIFY(folder.bytes(u".damaged-1"_s) == kept);
    QVERIFY(store.write(Stores::sample));
    QCOMPARE(Watched(folder.path()).values(), Stores::sample);
}

/// There are no values, none can be kept, one line says why, and nothing in the folder has changed.
void SessionStoreDamageTest::expectLeftAlone(const Folder &folder, Watched &store,
                                             const QMap<QString, QByteArray> &files)
{
    QCOMPARE(store.values(), Values());
    QVERIFY(!store.replaced);
    QVERIFY(!store.write(Stores::sample));
    QVERIFY(!store.store->write({{Key::UserId, "7"}, {Key::UserNombre, "Eva"}}));
    QCOMPARE(store.values(), Values());
    QCOMPARE(store.reports.size(), 1);
    QVERIFY2(store.reports.first().contains(folder.file()), qPrintable(store.reports.first()));
    QVERIFY2(store.reports.first().contains(u"later version"_s), qPrintable(store.reports.first()));
    store.store.reset();
    QCOMPARE(folder.files().keys(), files.keys());
    QVERIFY(folder.files() == files);
}

void SessionStoreDamageTest::foreignFileIsMovedAside_data()
{
    const auto row = columns<QByteArray>("bytes");
    row("text", "this is not a database, but a text of some length"_ba.repeated(10));
    row("one byte", "x");
    row("zero bytes", QByteArray(8192, '\0'));
    row("only the magic", QByteArray("SQLite format 3\0", 16));
    row("magic and garbage", QByteArray("SQLite format 3\0", 16) + QByteArray(8176, '\x5A'));
}

void SessionStoreDamageTest::foreignFileIsMovedAside()
{
    QFETCH(const QByteArray, bytes);
    const Folder folder;
    folder.put(bytes);
    Watched store(folder.path());
    expectReplaced(folder, store, bytes);
}

void SessionStoreDamageTest::missingOrEmptyFileBecomesAStore()
{
    for (const bool empty : {false, true}) {
        const Folder folder;
        if (empty)
            folder.put({});
        Watched store(folder.path());
        QCOMPARE(store.values(), Values());
        QVERIFY(!store.replaced);
        QCOMPARE(store.reports, QStringList());
        QVERIFY(QFile::exists(folder.file()));
        QVERIFY(store.write(Stores::sample));
        QCOMPARE(Watched(folder.path()).values(), Stores::sample);
    }
}

void SessionStoreDamageTest::databaseChangedFromOutsideIsMovedAside_data()
{
    const auto row = columns<QByteArray>("sql");
    row("negative version", "PRAGMA user_version = -1");
    row("version lost", "PRAGMA user_version = 0");
    row("table gone", "DROP TABLE session");
    row("table of another kind", "DROP TABLE session; CREATE TABLE session (a, b)");
    row("row gone", "DELETE FROM session WHERE key = 'user_email'");
    row("rows gone", "DELETE FROM session");
    row("row more", "INSERT INTO session VALUES (5, 'user_more', NULL, NULL)");
    row("row before", "INSERT INTO session VALUES (-1, 'user_id', NULL, NULL)");
    row("other key", "UPDATE session SET key = 'User_id' WHERE row = 1");
    row("keys swapped", "UPDATE session SET row = row + 10; UPDATE session SET row = 15 - row");
    row("value of another row", "UPDATE session SET (value, checksum) = "
                                "(SELECT value, checksum FROM session WHERE row = 3) WHERE row = 2");
    row("value column gone", "ALTER TABLE session DROP COLUMN value");
    row("checksum column gone", "ALTER TABLE session DROP COLUMN checksum");
    row("table without sense", "PRAGMA writable_schema = 1;"
                               "UPDATE sqlite_master SET name = 'a' || char(10) || 'b', sql = 'nonsense'");
    for (const Key key : SessionStore::keys) {
        const QByteArray name = SessionStore::name(key);
        for (const char *const change :
             {"value = X'3433'", "value = substr(value, 1, length(value) - 1)",
              "value = CAST(value || X'00' AS BLOB)", "value = NULL", "value = NULL, checksum = NULL", "value = X''",
              "checksum = checksum + 1", "checksum = NULL", "checksum = 0", "checksum = 'abc'", "value = 43"})
            row(name + ": " + change, QByteArray("UPDATE session SET ") + change + " WHERE key = '" + name + '\'');
    }
}

void SessionStoreDamageTest::databaseChangedFromOutsideIsMovedAside()
{
    QFETCH(const QByteArray, sql);
    const Folder folder;
    folder.fill();
    run(folder.file(), sql);
    Watched store(folder.path());
    expectReplaced(folder, store, {});
}

void SessionStoreDamageTest::lostRowIsNotWritten()
{
    const Folder folder;
    folder.fill();
    const Watched store(folder.path());
    run(folder.file(), "DELETE FROM session WHERE key = 'user_id'");
    QVERIFY(!store.store->write(Key::UserId, "7"));
    QCOMPARE(store.reports.size(), 1);
    QVERIFY(store.store->write(Key::UserNombre, "Eva"));
}

void SessionStoreDamageTest::enormousRowIsDamage()
{
    // The row that describes the table claims to be larger than SQLite ever lets one be: its length and its
    // values' kinds are replaced, which stand before them (https://www.sqlite.org/fileformat2.html#record_format).
    const Folder folder;
    folder.fill();
    QByteArray bytes = folder.bytes();
    const qsizetype row = bytes.indexOf("tablesession") - 9;
    bytes.replace(row, 16, QByteArray::fromHex("b1cbd1f8821bbf814b1a6162f29384ca"));
    folder.put(bytes);
    Watched store(folder.path());
    expectReplaced(folder, store, bytes);
}

void SessionStoreDamageTest::laterVersionIsLeftAlone_data()
{
    const auto row = columns<QByteArray>("sql");
    row("the next", "PRAGMA user_version = 2");
    row("the last that there can be", "PRAGMA user_version = 2147483647");
    row("other tables", "DROP TABLE session; CREATE TABLE accounts (a); PRAGMA user_version = 7");
    row("other journal", "PRAGMA journal_mode = DELETE; PRAGMA user_version = 2");
    row("other pages", "PRAGMA journal_mode = DELETE; PRAGMA page_size = 65536; VACUUM; PRAGMA user_version = 2");
}

void SessionStoreDamageTest::laterVersionIsLeftAlone()
{
    QFETCH(const QByteArray, sql);
    const Folder folder;
    folder.fill();
    run(folder.file(), sql);
    const auto files = folder.files();
    QCOMPARE(files.keys(), QStringList(u"session.sqlite"_s));
    Watched store(folder.path());
    expectLeftAlone(folder, store, files);
}

void SessionStoreDamageTest::laterVersionInTheLogIsLeftAlone()
{
    // A later version that was killed: the file itself is still the earlier one.
    const Folder living;
    living.fill();
    const Watched earlier(living.path());
    run(living.file(), "CREATE TABLE more (a); PRAGMA user_version = 2; INSERT INTO more VALUES (1)");
    const Folder folder;
    folder.put(living.bytes());
    folder.put(living.bytes(u"-wal"_s), u"-wal"_s);
    QCOMPARE(folder.bytes().mid(60, 4), QByteArray("\0\0\0\1", 4));
    const auto files = folder.files();
    Watched store(folder.path());
    expectLeftAlone(folder, store, files);
}

void SessionStoreDamageTest::laterVersionThatIsCutOffIsDamage()
{
    const Folder folder;
    folder.fill();
    run(folder.file(), "PRAGMA user_version = 2");
    const QByteArray cut = folder.bytes().first(5000);
    folder.put(cut);
    Watched store(folder.path());
    expectReplaced(folder, store, cut);
}

void SessionStoreDamageTest::laterVersionThatComesMeanwhileIsLeftAlone()
{
    const Folder folder;
    Watched store(folder.path());
    QVERIFY(store.write(Stores::sample));
    run(folder.file(), "ALTER TABLE session ADD COLUMN more; PRAGMA user_version = 2");
    const auto whole = [&] { return folder.bytes() + folder.bytes(u"-wal"_s); };
    const QByteArray before = whole();
    QVERIFY(!store.store->write(Key::UserNombre, "Eva"));
    QCOMPARE(store.values(), Values());
    QVERIFY(!store.store->write(Key::UserNombre, "Eva"));
    QCOMPARE(store.reports.size(), 1);
    QVERIFY2(store.reports.first().contains(u"later version"_s), qPrintable(store.reports.first()));
    QVERIFY(!store.replaced);
    store.store.reset();
    QVERIFY(whole() == before);
}

void SessionStoreDamageTest::filesAsideAreAllKept()
{
    const Folder folder;
    QStringList expected;
    for (int i = 1; i <= 12; ++i) {
        folder.put("garbage " + QByteArray::number(i));
        const Watched store(folder.path());
        expected += u"session.sqlite.damaged-%1"_s.arg(i);
    }
    expected.sort();
    QCOMPARE(folder.aside(), expected);
    for (int i = 1; i <= 12; ++i)
        QCOMPARE(folder.bytes(u".damaged-%1"_s.arg(i)), "garbage " + QByteArray::number(i));
}

void SessionStoreDamageTest::companionsGoAsideToo()
{
    const Folder folder;
    folder.fill();
    // As long as another program has the file open, its log stays.
    sqlite3 *other = nullptr;
    QCOMPARE(sqlite3_open(QFile::encodeName(folder.file()).constData(), &other), SQLITE_OK);
    QCOMPARE(sqlite3_exec(other, "DELETE FROM session", nullptr, nullptr, nullptr), SQLITE_OK);
    const QByteArray log = folder.bytes(u"-wal"_s);
    QVERIFY(!log.isEmpty());
    Watched store(folder.path());
    expectReplaced(folder, store, {});
    QCOMPARE(folder.aside(), (QStringList{u"session.sqlite.damaged-1"_s, u"session.sqlite.damaged-1-shm"_s,
                                          u"session.sqlite.damaged-1-wal"_s}));
    QVERIFY(folder.bytes(u".damaged-1-wal"_s) == log);
    sqlite3_close(other);
}

void SessionStoreDamageTest::journalGoesAsideToo()
{
    const Folder folder;
    folder.put("x");
    folder.put("a journal", u"-journal"_s);
    Watched store(folder.path());
    expectReplaced(folder, store, "x");
    QCOMPARE(folder.bytes(u".damaged-1-journal"_s), "a journal"_ba);
}

void SessionStoreDamageTest::logWithoutItsFileGoesAside()
{
    const Folder living;
    const Watched store(living.path());
    store.write(Stores::sample);
    const QByteArray log = living.bytes(u"-wal"_s);
    for (const bool fileExists : {false, true}) {
        const Folder folder;
        folder.put(log, u"-wal"_s);
        if (fileExists)
            folder.put({});
        Watched again(folder.path());
        expectReplaced(folder, again, {});
        QVERIFY(folder.bytes(u".damaged-1-wal"_s) == log);
    }
}

MAROVENDA_TEST(SessionStoreDamageTest)
#include "tst_SessionStoreDamage.moc"
