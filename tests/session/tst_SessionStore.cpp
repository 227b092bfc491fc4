#include "MarovendaTest.h"
#include "StoreLog.h"
#include "Stores.h"

#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using Key = SessionStore::Key;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;

/// What the store keeps, for whom, and at what cost.
class SessionStoreTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writtenValuesAreThereAfterARestart_data();
    void writtenValuesAreThereAfterARestart();
    void storeOfAReleaseIsOpened_data();
    void storeOfAReleaseIsOpened();
    void thisReleasesStoreIsKept();
    void writingFollowsAStoreThatWasReplaced();
    void writingMakesADeletedStoreAnew();
    void readableByTheUserAlone();
    void openToOthersIsClosedAgain();
    void missingFoldersAreMade();
    void longLogIsShortened();
};

void SessionStoreTest::writtenValuesAreThereAfterARestart_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("empty") << ""_ba;
    QTest::newRow("null") << QByteArray();
    QTest::newRow("zero bytes") << QByteArray("\0a\0", 3);
    QTest::newRow("not UTF-8") << "\xFF\xFE\x80"_ba;
    QTest::newRow("quotes") << "'); DROP TABLE session; --"_ba;
    QTest::newRow("photo of 5 MB") << QByteArray("\xFF\xD8\0\x01", 4).repeated(qsizetype(5) * 1024 * 256);
}

void SessionStoreTest::writtenValuesAreThereAfterARestart()
{
    QFETCH(const QByteArray, value);
    const Folder folder;
    Values all;
    all.fill(value);
    QVERIFY(Watched(folder.path()).write(all));
    Watched again(folder.path());
    for (const auto &read : again.values()) {
        QVERIFY(read.has_value());
        QVERIFY(*read == value);
    }
    QCOMPARE(again.reports, QStringList());
}

void SessionStoreTest::storeOfAReleaseIsOpened_data()
{
    QTest::addColumn<QString>("path");
    const QDir stores(QStringLiteral(RELEASED_STORES));
    const auto names = stores.entryList({u"*.sqlite"_s}, QDir::Files, QDir::Name);
    for (const QString &name : names)
        QTest::newRow(qPrintable(QFileInfo(name).completeBaseName())) << stores.filePath(name);
}

void SessionStoreTest::storeOfAReleaseIsOpened()
{
    QFETCH(const QString, path);
    const Folder folder;
    QFile released(path);
    QVERIFY(released.open(QFile::ReadOnly));
    folder.put(released.readAll());
    {
        Watched store(folder.path());
        QCOMPARE(store.values(), Stores::sample);
        QVERIFY(store.store->write(Key::UserNombre, "Eva"));
        QCOMPARE(store.reports, QStringList());
    }
    QCOMPARE(Watched(folder.path()).store->read(Key::UserNombre), "Eva"_ba);
}

void SessionStoreTest::thisReleasesStoreIsKept()
{
    QVERIFY(QFile::exists(QStringLiteral(RELEASED_STORES "/" MAROVENDA_VERSION ".sqlite")));
}

void SessionStoreTest::writingFollowsAStoreThatWasReplaced()
{
    const Folder folder;
    folder.fill();
    const Watched store(folder.path());
    // What another process does that finds the file damaged.
    QVERIFY(QFile::rename(folder.file(), folder.file(u".damaged-1"_s)));
    for (const auto &companion : {u"-wal"_s, u"-shm"_s})
        QVERIFY(QFile::rename(folder.file(companion), folder.file(u".damaged-1"_s + companion)));
    const Watched other(folder.path());
    QVERIFY(other.store->write(Key::UserId, "7"));
    QVERIFY(store.store->write(Key::UserNombre, "Eva"));
    QCOMPARE(store.store->read(Key::UserId), "7"_ba);
    QCOMPARE(other.store->read(Key::UserNombre), "Eva"_ba);
    QCOMPARE(store.reports + other.reports, QStringList());
}

void SessionStoreTest::writingMakesADeletedStoreAnew()
{
    const Folder folder;
    folder.fill();
    const Watched store(folder.path());
    folder.clear();
    QVERIFY(store.store->write(Key::UserNombre, "Eva"));
    QCOMPARE(Watched(folder.path()).store->read(Key::UserNombre), "Eva"_ba);
}

void SessionStoreTest::readableByTheUserAlone()
{
    const auto mode = [](const QString &path) {
        struct stat found = {};
        return stat(QFile::encodeName(path).constData(), &found) == 0 ? found.st_mode & 07777U : 0U;
    };
    for (const mode_t mask : {0022, 0000, 0007, 0077, 0777}) {
        const Folder folder;
        const mode_t before = umask(mask);
        Watched store(folder.path());
        const bool written = store.write(Stores::sample);
        umask(before);
        QVERIFY2(written, qPrintable(store.reports.join(u'\n')));
        QCOMPARE(mode(folder.path()), 0700U);
        for (const QString &suffix : {QString(), u"-wal"_s, u"-shm"_s})
            QCOMPARE(mode(folder.file(suffix)), 0600U);
    }
}

void SessionStoreTest::openToOthersIsClosedAgain()
{
    const Folder folder;
    folder.fill();
    const auto open = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup |
                      QFile::ReadOther | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(folder.path(), open));
    QVERIFY(QFile::setPermissions(folder.file(), open));
    QCOMPARE(Watched(folder.path()).values(), Stores::sample);
    const auto byOthers = QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(!(QFile::permissions(folder.path()) & byOthers));
    QVERIFY(!(QFile::permissions(folder.file()) & byOthers));
}

void SessionStoreTest::missingFoldersAreMade()
{
    const Folder folder;
    const QString deep = folder.path() + u"/a b/ñ/c"_s;
    QVERIFY(Watched(deep).write(Stores::sample));
    QCOMPARE(Watched(deep).values(), Stores::sample);
}

void SessionStoreTest::longLogIsShortened()
{
    const Folder folder;
    const Watched store(folder.path());
    const QByteArray photo(qsizetype(6) * 1024 * 1024, 'p');
    QVERIFY(store.store->write(Key::UserNombre, "Ana"));
    QVERIFY(!store.store->isLogLong());
    QVERIFY(store.store->write(Key::UserAvatar, photo));
    QVERIFY(store.store->isLogLong());
    QVERIFY(folder.bytes().size() < photo.size());
    StoreLog::shorten(folder.file());
    QVERIFY(folder.bytes().size() > photo.size());
    QVERIFY(QFileInfo(folder.file(u"-wal"_s)).size() <= qsizetype(1024) * 1024);
    // The next write begins a short log.
    QVERIFY(store.store->write(Key::UserNombre, "Bea"));
    QVERIFY(!store.store->isLogLong());
    QCOMPARE(store.store->read(Key::UserAvatar), photo);
    QCOMPARE(store.store->read(Key::UserNombre), "Bea");
}

MAROVENDA_TEST(SessionStoreTest)
#include "tst_SessionStore.moc"
