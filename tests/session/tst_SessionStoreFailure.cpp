#include "MarovendaTest.h"
#include "Stores.h"

#include <QProcess>
#include <QTest>

#include <sqlite3.h>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using Key = SessionStore::Key;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;

/// A device that does not let the store open or write, and a process that ends in the middle of it.
class SessionStoreFailureTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void unusablePlaceIsSaidOnce_data();
    void unusablePlaceIsSaidOnce();
    void fullDiskKeepsTheOldValue();
    void fullDiskKeepsAllOldValues();
    void fullDiskIsSaidAgainAfterItHadRoom();
    void newStoreOnAFullDiskIsUnusable();
    void lockedStoreRefusesTheWrite();
    void killedProcessKeepsWhatWasTaken();
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
    QTest::newRow("folder below a file") << u"/file/below"_s << u"/file"_s;
    QTest::newRow("file in place of the folder") << u"/file"_s << u"/file"_s;
    QTest::newRow("folder in place of the file") << u"/store"_s << u"/store/session.sqlite/"_s;
    QTest::newRow("no memory of its own possible") << u"/store"_s << u"/store/session.sqlite-wal/"_s;
}

void SessionStoreFailureTest::unusablePlaceIsSaidOnce()
{
    QFETCH(const QString, path);
    QFETCH(const QString, obstacle);
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
    QVERIFY2(store.reports.first().contains(folder.path() + path), qPrintable(store.reports.first()));
    QVERIFY(QFileInfo::exists(folder.path() + obstacle));
}

void SessionStoreFailureTest::fullDiskKeepsTheOldValue()
{
    const Folder folder;
    Watched store(folder.path());
    QVERIFY(store.write(Stores::sample));
    {
        const FullDisk full(QFileInfo(folder.file(u"-wal"_s)).size() + 10'000);
        for (int i = 0; i < 3; ++i)
            QVERIFY(!store.store->write(Key::UserAvatar, QByteArray(qsizetype(1024) * 1024, 'n')));
        QCOMPARE(store.values(), Stores::sample);
        QCOMPARE(store.reports.size(), 1);
        QVERIFY2(store.reports.first().contains(u"user_avatar"_s), qPrintable(store.reports.first()));
    }
    QVERIFY(!store.replaced);
    QCOMPARE(Watched(folder.path()).values(), Stores::sample);
    QVERIFY(store.store->write(Key::UserAvatar, "new"));
    QCOMPARE(Watched(folder.path()).store->read(Key::UserAvatar), "new"_ba);
    QVERIFY(folder.aside().isEmpty());
}

void SessionStoreFailureTest::fullDiskKeepsAllOldValues()
{
    const Folder folder;
    Watched store(folder.path());
    QVERIFY(store.write(Stores::sample));
    const QByteArray large(qsizetype(1024) * 1024, 'n');
    for (const qsizetype room : {0, 10'000, 1'000'000}) {
        {
            const FullDisk full(QFileInfo(folder.file(u"-wal"_s)).size() + room);
            QVERIFY(!store.store->write({{Key::UserId, "7"}, {Key::UserNombre, large}, {Key::UserEmail, large}}));
        }
        QCOMPARE(store.values(), Stores::sample);
        QCOMPARE(store.reports.size(), 1);
        const QString said = u"user_id, user_nombre, user_email in "_s;
        QVERIFY2(store.reports.takeFirst().startsWith(said), qPrintable(said));
        QCOMPARE(Watched(folder.path()).values(), Stores::sample);
        // It says so again once it had room.
        QVERIFY(store.store->write({{Key::UserId, "42"}, {Key::UserAvatar, *Stores::sample[3]}}));
    }
}

void SessionStoreFailureTest::fullDiskIsSaidAgainAfterItHadRoom()
{
    const Folder folder;
    Watched store(folder.path());
    QVERIFY(store.write(Stores::sample));
    for (int time = 1; time <= 2; ++time) {
        {
            const FullDisk full(QFileInfo(folder.file(u"-wal"_s)).size());
            QVERIFY(!store.store->write(Key::UserId, "8"));
            QVERIFY(!store.store->write(Key::UserNombre, "x"));
        }
        QCOMPARE(store.reports.size(), time);
        QVERIFY(store.store->write(Key::UserId, "42"));
    }
    QCOMPARE(Watched(folder.path()).values(), Stores::sample);
}

void SessionStoreFailureTest::newStoreOnAFullDiskIsUnusable()
{
    const Folder folder;
    {
        const FullDisk full(100);
        Watched store(folder.path());
        QCOMPARE(store.values(), Values());
        QVERIFY(!store.write(Stores::sample));
        QCOMPARE(store.reports.size(), 1);
        QVERIFY(folder.aside().isEmpty());
    }
    folder.fill();
    QCOMPARE(Watched(folder.path()).values(), Stores::sample);
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

void SessionStoreFailureTest::killedProcessKeepsWhatWasTaken()
{
    const Folder folder;
    int round = 1;
    for (int kill = 0; kill < 15; ++kill) {
        QProcess writer;
        writer.start(QStringLiteral(SESSION_WRITER), {folder.path(), QString::number(round)});
        QVERIFY(writer.waitForStarted());
        int taken = 0;
        const auto hear = [&] {
            while (writer.canReadLine())
                taken = writer.readLine().toInt();
        };
        // A few rounds more each time, so that the kill comes at ever other moments of writing.
        while (taken < round + kill) {
            QVERIFY2(writer.waitForReadyRead(), writer.readAllStandardError().constData());
            hear();
        }
        writer.kill();
        QVERIFY(writer.waitForFinished());
        hear();
        QCOMPARE(writer.exitStatus(), QProcess::CrashExit);

        Watched store(folder.path());
        const Values values = store.values();
        QCOMPARE(store.reports, QStringList());
        // The round after the last that was heard of may have begun, and its values follow in order.
        const int next = taken + 1;
        const std::array<QByteArray, 4> prefixes{"", "nombre ", "email ", ""};
        bool begun = true;
        // Those that are written at once are of one round.
        QVERIFY2((values[0] == QByteArray::number(next)) == (values[2] == "email " + QByteArray::number(next)),
                 values[2].value_or("nothing").constData());
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto of = [&](int number) {
                const QByteArray text = prefixes[i] + QByteArray::number(number);
                return i == 3 ? QByteArray(text + ' ').repeated(20'000) : text;
            };
            QVERIFY(values[i]);
            begun = begun && *values[i] == of(next);
            QVERIFY2(begun || *values[i] == of(taken), values[i]->first(qMin(values[i]->size(), 40)).constData());
        }
        round = next + 1;
    }
}

MAROVENDA_TEST_MAIN(SessionStoreFailureTest)
#include "tst_SessionStoreFailure.moc"
