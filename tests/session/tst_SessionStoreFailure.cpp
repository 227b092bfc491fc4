#include "MarovendaTest.h"
#include "Stores.h"

#include <QTest>

#include <sqlite3.h>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using Key = SessionStore::Key;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;

/// A device that does not let the store open or write.
class SessionStoreFailureTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void unusablePlaceIsSaidOnce_data();
    void unusablePlaceIsSaidOnce();
    void fullDiskKeepsAllOldValuesAndIsSaidOnce();
    void lockedStoreRefusesTheWrite();
};

namespace {

/// As long as it lives, this process can let no file grow beyond a size.
class FullDisk {
public:
    explicit FullDisk(qint64 size)
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{static_cast<rlim_t>(size), m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_before = {};
};

} // namespace

void SessionStoreFailureTest::unusablePlaceIsSaidOnce_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("obstacle");
    QTest::addColumn<QString>("said");
    QTest::newRow("folder below a file") << u"/file/below"_s << u"/file"_s << u"the directory %1 cannot be created"_s;
    QTest::newRow("file in place of the folder")
        << u"/file"_s << u"/file"_s << u"%1/session.sqlite cannot be created: Not a directory"_s;
    QTest::newRow("folder in place of the file")
        << u"/store"_s << u"/store/session.sqlite/"_s
        << u"%1/session.sqlite cannot be opened: unable to open database file"_s;
    QTest::newRow("no log possible") << u"/store"_s << u"/store/session.sqlite-wal/"_s
                                     << u"%1/session.sqlite cannot be used: disk I/O error"_s;
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

void SessionStoreFailureTest::fullDiskKeepsAllOldValuesAndIsSaidOnce()
{
    const Folder folder;
    Watched store(folder.path());
    QVERIFY(store.write(Stores::sample));
    const QByteArray large(qsizetype(1024) * 1024, 'n');
    for (const qsizetype room : {0, 10'000, 1'000'000}) {
        {
            const FullDisk full(QFileInfo(folder.file(u"-wal"_s)).size() + room);
            for (int time = 0; time < 2; ++time)
                QVERIFY(!store.store->write({{Key::UserId, "7"}, {Key::UserNombre, large}, {Key::UserEmail, large}}));
        }
        QCOMPARE(store.values(), Stores::sample);
        QCOMPARE(store.reports.size(), 1);
        const QString said = u"user_id, user_nombre, user_email in "_s;
        QVERIFY2(store.reports.takeFirst().startsWith(said), qPrintable(said));
        QVERIFY(!store.replaced && folder.aside().isEmpty());
        QCOMPARE(Watched(folder.path()).values(), Stores::sample);
        // It says so again once it had room.
        QVERIFY(store.store->write({{Key::UserId, "42"}, {Key::UserAvatar, *Stores::sample[3]}}));
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
