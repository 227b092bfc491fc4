#include "MarovendaTest.h"
#include "StoreFile.h"
#include "Stores.h"

#include <QtEndian>
#include <QTest>
#include <QThread>

#include <atomic>

using namespace Qt::StringLiterals;
using Stores::Folder;
using Stores::run;

namespace {

constexpr int inFile = 3;
constexpr int inFirst = 4;
constexpr int inSecond = 5;
constexpr qsizetype page = 512;
constexpr qsizetype headSize = 32;
constexpr qsizetype frameSize = 24 + page;

/// Adds the words of some bytes to a log's checksum (https://www.sqlite.org/fileformat.html#checksum_algorithm).
void add(std::array<quint32, 2> &sums, QByteArrayView bytes, bool bigEndian)
{
    for (qsizetype at = 0; at < bytes.size(); at += 8) {
        for (const int i : {0, 1}) {
            const char *const word = bytes.data() + at + 4 * i;
            sums[i] += (bigEndian ? qFromBigEndian<quint32>(word) : qFromLittleEndian<quint32>(word)) + sums[1 - i];
        }
    }
}

/// The same log with checksums that fit it, in the byte order that it names.
QByteArray summed(QByteArray log)
{
    const bool bigEndian = (log[3] & 1) != 0;
    std::array<quint32, 2> sums{};
    const auto put = [&](qsizetype at) {
        qToBigEndian(sums[0], log.data() + at);
        qToBigEndian(sums[1], log.data() + at + 4);
    };
    add(sums, QByteArrayView(log).first(24), bigEndian);
    put(24);
    for (qsizetype at = headSize; at + frameSize <= log.size(); at += frameSize) {
        add(sums, QByteArrayView(log).sliced(at, 8), bigEndian);
        add(sums, QByteArrayView(log).sliced(at + 24, page), bigEndian);
        put(at + 16);
    }
    return log;
}

QByteArray changed(QByteArray bytes, qsizetype at, char byte)
{
    bytes[at] = byte;
    return bytes;
}

QByteArray flipped(const QByteArray &bytes, qsizetype at) { return changed(bytes, at, char(~bytes[at])); }

} // namespace

/// What is read of a store's file and its log before SQLite sees them.
class StoreFileTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void versionInAFile_data();
    void versionInAFile();
    void versionInALog_data();
    void versionInALog();
    void fileIsAloneWithoutItsCompanions_data();
    void fileIsAloneWithoutItsCompanions();
    void unreadableFilesAreNoted_data();
    void unreadableFilesAreNoted();
    void lockIsWaitedFor();

private:
    /// A file, and a log of two transactions: one of three frames, and one of one frame.
    QByteArray m_file;
    QByteArray m_log;

    static std::optional<int> version(const Folder &folder)
    {
        const auto layout = StoreFile::layoutOf(folder.file());
        return layout ? std::optional(layout->version) : std::nullopt;
    }
};

void StoreFileTest::initTestCase()
{
    const Folder folder;
    folder.put({});
    run(folder.file(), "PRAGMA page_size = 512; PRAGMA journal_mode = WAL; PRAGMA user_version = 3");
    sqlite3 *open = nullptr;
    QCOMPARE(sqlite3_open(QFile::encodeName(folder.file()).constData(), &open), SQLITE_OK);
    QCOMPARE(sqlite3_exec(open,
                          "BEGIN; PRAGMA user_version = 4; CREATE TABLE a (a); CREATE TABLE b (b); COMMIT;"
                          "PRAGMA user_version = 5",
                          nullptr, nullptr, nullptr),
             SQLITE_OK);
    m_file = folder.bytes();
    m_log = folder.bytes(u"-wal"_s);
    sqlite3_close(open);
    QCOMPARE(m_log.size(), headSize + 4 * frameSize);
    QCOMPARE(summed(m_log), m_log);
}

void StoreFileTest::versionInAFile_data()
{
    const auto row = columns<QByteArray, std::optional<int>>("bytes", "version");
    const auto damaged = [&](qsizetype at, char byte) { return changed(m_file, at, byte); };
    row("whole", m_file, inFile);
    row("the header alone", m_file.first(100), inFile);
    row("one byte less", m_file.first(99), {});
    row("negative", damaged(60, '\xFF'), int(0xFF000003));
    for (const int at : {0, 15, 21, 22, 23})
        row("byte " + QByteArray::number(at), flipped(m_file, at), {});
    row("read by rollback", damaged(19, 1), inFile);
    row("read by log", damaged(19, 2), inFile);
    row("read by a later SQLite", damaged(19, 3), {});
    row("pages of 256", changed(damaged(16, 1), 17, 0), {});
    row("pages of 513", damaged(17, 1), {});
    row("pages of 768", damaged(16, 3), {});
    row("pages of 32,768", damaged(16, '\x80'), inFile);
    row("pages of 65,536", changed(damaged(16, 0), 17, 1), inFile);
}

void StoreFileTest::versionInAFile()
{
    QFETCH(const QByteArray, bytes);
    const Folder folder;
    folder.put(bytes);
    QTEST(version(folder), "version");
}

void StoreFileTest::versionInALog_data()
{
    const auto row = columns<QByteArray, int>("log", "version");
    const qsizetype second = headSize + 3 * frameSize;
    row("none", {}, inFile);
    row("whole", m_log, inSecond);
    for (const int at : {0, 3, 8, 11, 16, 24, 28})
        row("header, byte " + QByteArray::number(at), flipped(m_log, at), inFile);
    row("another magic", summed(changed(m_log, 2, 5)), inFile);
    row("a page size of no log", summed(changed(m_log, 10, 3)), inFile);
    row("the other byte order", summed(changed(m_log, 3, char(m_log[3] ^ 1))), inSecond);
    row("half a header", m_log.first(31), inFile);
    row("no frames", m_log.first(32), inFile);
    row("the first transaction without its end", m_log.first(second - 1), inFile);
    row("the first transaction", m_log.first(second), inFirst);
    row("the second without its last byte", m_log.chopped(1), inFirst);
    row("the first is damaged", flipped(m_log, headSize + 24 + 200), inFile);
    for (const int at : {0, 4, 8, 15, 16, 20, 24, int(frameSize) - 1})
        row("second, byte " + QByteArray::number(at), flipped(m_log, second + at), inFirst);
    row("salts of an earlier log", summed(flipped(m_log, second + 8)), inFirst);
    row("the second is not committed", summed(changed(m_log, second + 7, 0)), inFirst);
    row("the second is of another page", summed(changed(m_log, second + 3, 2)), inFirst);
    // Frames of an earlier log, which was longer.
    row("what follows is older", m_log + m_log.sliced(headSize, frameSize), inSecond);
}

void StoreFileTest::versionInALog()
{
    QFETCH(const QByteArray, log);
    const Folder folder;
    folder.put(m_file);
    if (!log.isNull())
        folder.put(log, u"-wal"_s);
    QTEST(version(folder).value_or(0), "version");
}

void StoreFileTest::fileIsAloneWithoutItsCompanions_data()
{
    const auto row = columns<QString, bool>("companion", "alone");
    row("none", {}, true);
    row("log", u"-wal"_s, false);
    row("journal", u"-journal"_s, false);
    row("index of the log", u"-shm"_s, true);
}

void StoreFileTest::fileIsAloneWithoutItsCompanions()
{
    QFETCH(const QString, companion);
    const Folder folder;
    folder.put(m_file);
    if (!companion.isEmpty())
        folder.put({}, companion);
    QTEST(StoreFile::layoutOf(folder.file())->alone, "alone");
}

void StoreFileTest::unreadableFilesAreNoted_data()
{
    const auto row = columns<QString, bool>("path", "readable");
    row("missing", QDir::tempPath() + u"/missing"_s, true);
    row("a file", QCoreApplication::applicationFilePath(), true);
    row("a folder", QDir::tempPath(), false);
    row("fails at its first byte", u"/proc/self/mem"_s, false);
}

void StoreFileTest::unreadableFilesAreNoted()
{
    QFETCH(const QString, path);
    QTEST(StoreFile::canBeRead(path), "readable");
}

void StoreFileTest::lockIsWaitedFor()
{
    const Folder folder;
    folder.put({});
    auto first = std::make_unique<StoreFile::Lock>(folder.path());
    std::atomic<bool> locked = false;
    const std::unique_ptr<QThread> other(QThread::create([&] {
        const StoreFile::Lock second(folder.path());
        locked = true;
    }));
    other->start();
    QTest::qWait(100);
    QVERIFY(!locked);
    first.reset();
    QVERIFY(other->wait(4000));
    QVERIFY(locked);
}

MAROVENDA_TEST(StoreFileTest)
#include "tst_StoreFile.moc"
