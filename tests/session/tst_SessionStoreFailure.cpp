#include "MarovendaTest.h"
#include "Stores.h"

#include <QTest>

#include <sqlite3.h>

using namespace Qt::StringLiterals;
using Key = SessionStore::Key;
using Stores::Folder;
using Stores::run;
using Stores::Values;
using Stores::Watched;

/// A device that does not let the store open or write.
class SessionStoreFailureTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void unusablePlaceIsSaidOnce_data();
    void unusablePlaceIsSaidOnce();
    void refusedWriteKeepsAllOldValuesAndIsSaidOnce();
    void lockedStoreRefusesTheWrite();
};

void SessionStoreFailureTest::unusablePlaceIsSaidOnce_data()
{
    const auto row = columns<QString, QString, QString>("path", "obstacle", "said");
    row("folder below a file", u"/file/below"_s, u"/file"_s, u"the directory %1 cannot be created"_s);
    row("file in place of the folder", u"/file"_s, u"/file"_s,
        u"%1/session.sqlite cannot be created: Not a directory"_s);
    row("folder in place of the file", u"/store"_s, u"/store/session.sqlite/"_s,
        u"%1/session.sqlite cannot be opened: unable to open database file"_s);
    row("no log possible", u"/store"_s, u"/store/session.sqlite-wal/"_s,
        u"%1/session.sqlite cannot be used: disk I/O error"_s);
}

void SessionStoreFailureTest::unusablePlaceIsSaidOnce()
{
    QFETCH(const QString, path);
    QFETCH(const QString, obstacle);
    QFETCH(const QString, said);
    const Folder folder;
    QDir().mkpath(folder.path());
    if (obstacle.endsWith(u'/')) {
        QVERIFY(QDir().mkpath(folder.path() + obstacle));
    } else {
        QFile file(folder.path() + obstacle);
        QVERIFY(file.open(QFile::WriteOnly));
    }

    Watched store(folder.path() + path);
    QCOMPARE(store.values(), Values());
    QVERIFY(!store.replaced);
    QVERIFY(!store.write(Stores::sample));
    QCOMPARE(store.values(), Values());
    QCOMPARE(store.reports.size(), 1);
    QCOMPARE(store.reports.first(), said.arg(folder.path() + path));
    QVERIFY(QFileInfo::exists(folder.path() + obstacle));
}

void SessionStoreFailureTest::refusedWriteKeepsAllOldValuesAndIsSaidOnce()
{
    const Folder folder;
    Watched store(folder.path());
    QVERIFY(store.write(Stores::sample));
    // It says so again once it could write.
    for (int time = 0; time < 2; ++time) {
        run(folder.file(), "CREATE TRIGGER refuse BEFORE UPDATE ON session WHEN NEW.key = 'user_email' "
                           "BEGIN SELECT RAISE(FAIL, 'no'); END");
        for (int attempt = 0; attempt < 2; ++attempt)
            QVERIFY(!store.store->write({{Key::UserId, "7"}, {Key::UserNombre, "Eva"}, {Key::UserEmail, "e@b"}}));
        QCOMPARE(store.values(), Stores::sample);
        QCOMPARE(store.reports.size(), 1);
        QVERIFY(store.reports.takeFirst().startsWith(u"user_id, user_nombre, user_email in "_s));
        QVERIFY(!store.replaced && folder.aside().isEmpty());
        QCOMPARE(Watched(folder.path()).values(), Stores::sample);
        run(folder.file(), "DROP TRIGGER refuse");
        QVERIFY(store.store->write(Key::UserId, "42"));
    }
}

void SessionStoreFailureTest::lockedStoreRefusesTheWrite()
{
    const Folder folder;
    Watched store(folder.path());
    QVERIFY(store.write(Stores::sample));
    sqlite3 *other = nullptr;
    QCOMPARE(sqlite3_open(QFile::encodeName(folder.file()).constData(), &other), SQLITE_OK);
    QCOMPARE(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    QVERIFY(!store.store->write(Key::UserId, "7"));
    QCOMPARE(store.values(), Stores::sample);
    QCOMPARE(store.reports.size(), 1);
    QCOMPARE(sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
    QVERIFY(store.store->write(Key::UserId, "7"));
    QVERIFY(!store.replaced);
}

MAROVENDA_TEST(SessionStoreFailureTest)
#include "tst_SessionStoreFailure.moc"
