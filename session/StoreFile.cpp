#include "StoreFile.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <QThread>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr auto ownerOnlyDirectory = ownerOnly | QFileDevice::ExeOwner;

int openFolder(const QString &path)
{
    return ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool isReadableOrMissing(const QString &path)
{
    if (!QFileInfo::exists(path))
        return true;
    QFile file(path);
    if (!file.open(QFile::ReadOnly | QFile::Unbuffered))
        return false;
    while (!file.read(qint64(64) * 1024).isEmpty()) {
    }
    return file.error() == QFile::NoError;
}

constexpr qsizetype versionOffset = 60;

quint32 number(QByteArrayView bytes, qsizetype at) { return qFromBigEndian<quint32>(bytes.data() + at); }

bool isPageSize(quint32 size) { return size >= 512 && size <= 65536 && (size & (size - 1)) == 0; }

/// The running checksum of a log's header and frames.
struct LogChecksum {
    bool bigEndian;
    quint32 first = 0;
    quint32 second = 0;

    void add(QByteArrayView bytes)
    {
        const auto word = [&](qsizetype at) {
            return bigEndian ? number(bytes, at) : qFromLittleEndian<quint32>(bytes.data() + at);
        };
        for (qsizetype at = 0; at + 8 <= bytes.size(); at += 8) {
            first += word(at) + second;
            second += word(at + 4) + first;
        }
    }
    bool matches(QByteArrayView bytes, qsizetype at) const
    {
        return number(bytes, at) == first && number(bytes, at + 4) == second;
    }
};

/// Returns the user_version after the last transaction in the log, if the log contains it.
std::optional<int> versionInLog(const QString &path)
{
    constexpr qsizetype headSize = 32;
    constexpr qsizetype frameHeadSize = 24;
    QFile log(path);
    if (!log.open(QFile::ReadOnly))
        return std::nullopt;
    const QByteArray head = log.read(headSize);
    if (head.size() != headSize || (number(head, 0) & ~1U) != 0x377F0682 || !isPageSize(number(head, 8)))
        return std::nullopt;
    LogChecksum checksum{(number(head, 0) & 1) != 0};
    checksum.add(QByteArrayView(head).first(24));
    if (!checksum.matches(head, 24))
        return std::nullopt;
    const QByteArrayView salts = QByteArrayView(head).sliced(16, 8);
    std::optional<int> written;
    std::optional<int> committed;
    // The log ends at the first frame that is incomplete or belongs to an earlier log.
    QByteArray frame(frameHeadSize + number(head, 8), Qt::Uninitialized);
    while (log.read(frame.data(), frame.size()) == frame.size()) {
        const QByteArrayView view(frame);
        checksum.add(view.first(8));
        checksum.add(view.sliced(frameHeadSize));
        if (view.sliced(8, 8) != salts || !checksum.matches(view, 16))
            break;
        if (number(view, 0) == 1)
            written = static_cast<int>(number(view, frameHeadSize + versionOffset));
        if (number(view, 4) != 0 && written)
            committed = written;
    }
    return committed;
}

/// Returns the user_version in the file's header, or nothing if SQLite would not accept the file.
std::optional<int> versionInHeader(const QString &path)
{
    QFile file(path);
    const QByteArray head = file.open(QFile::ReadOnly | QFile::Unbuffered) ? file.read(100) : QByteArray();
    if (head.size() != 100 || !head.startsWith(QByteArrayView("SQLite format 3\0", 16)) ||
        head.mid(21, 3) != QByteArrayView("@  ") || head[19] > 2)
        return std::nullopt;
    const auto size = qFromBigEndian<quint16>(head.constData() + 16);
    if (!isPageSize(size == 1 ? 65536 : size))
        return std::nullopt;
    return static_cast<int>(number(head, versionOffset));
}

} // namespace

std::optional<StoreFile::Layout> StoreFile::layoutOf(const QString &path)
{
    // Read the log first: another process may move its contents into the file meanwhile.
    const std::optional<int> inLog = versionInLog(path + "-wal"_L1);
    const std::optional<int> version = inLog ? inLog : versionInHeader(path);
    if (!version)
        return std::nullopt;
    return Layout{*version, !QFileInfo::exists(path + "-wal"_L1) && !QFileInfo::exists(path + "-journal"_L1)};
}

QString StoreFile::makeFolder(const QString &directory)
{
    const QDir parent(QFileInfo(directory).path());
    // Another process may create it at the same time.
    const auto isThere = [&] { return QFileInfo::exists(directory); };
    if (!isThere() && (!parent.mkpath(u"."_s) || !parent.mkdir(directory, ownerOnlyDirectory)) && !isThere())
        return u"the directory %1 cannot be created"_s.arg(directory);
    QFile::setPermissions(directory, ownerOnlyDirectory);
    return {};
}

QString StoreFile::makeFile(const QString &path)
{
    // SQLite would create the file with the process's umask. It gives its other files the same permissions as this
    // one.
    if (!QFileInfo::exists(path)) {
        QFile file(path);
        if (!file.open(QFile::WriteOnly | QFile::NewOnly, ownerOnly) && !QFileInfo::exists(path))
            return u"%1 cannot be created: %2"_s.arg(path, file.errorString());
    }
    QFile::setPermissions(path, ownerOnly);
    return {};
}

StoreFile::Lock::Lock(const QString &directory) : m_folder(openFolder(directory))
{
    const QDeadlineTimer wait(5000);
    while (::flock(m_folder, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK && !wait.hasExpired())
        QThread::msleep(2);
}

StoreFile::Lock::~Lock()
{
    if (m_folder >= 0)
        ::close(m_folder);
}

bool StoreFile::hasLostContent(const QString &path)
{
    // SQLite treats a single byte as an empty file, and deletes a log beside an empty file. Check the log first,
    // since another process that is creating the store creates the log last.
    const QFileInfo log(path + "-wal"_L1);
    const bool hasLog = log.isFile() && log.size() > 0;
    const qint64 size = QFileInfo(path).size();
    return size == 1 || (size == 0 && hasLog);
}

bool StoreFile::canBeRead(const QString &path)
{
    return isReadableOrMissing(path) && isReadableOrMissing(path + "-wal"_L1);
}

void StoreFile::synchroniseFoldersOf(const QString &directory)
{
    QDir folder(directory);
    do {
        const int open = openFolder(folder.path());
        if (open >= 0) {
            ::fsync(open);
            ::close(open);
        }
        folder.setPath(QFileInfo(folder.absolutePath()).path());
    } while (!folder.isRoot());
}

QString StoreFile::synchroniseLog(const QString &path) { return synchronise(path + "-wal"_L1); }

QString StoreFile::synchronise(const QString &path)
{
    const int file = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC);
    if (file < 0)
        return {};
    const int error = ::fdatasync(file) == 0 ? 0 : errno;
    ::close(file);
    return error == 0 ? QString() : u"%1 cannot be synchronised: %2"_s.arg(path, qt_error_string(error));
}

bool StoreFile::moveAside(const QString &path)
{
    const auto aside = [&](int number, QLatin1StringView companion) {
        return u"%1.damaged-%2%3"_s.arg(path).arg(number).arg(companion);
    };
    // Rename the file first: without its log, it could look intact and contain outdated values.
    static constexpr std::array companions{""_L1, "-wal"_L1, "-shm"_L1, "-journal"_L1};
    int number = 1;
    while (QFileInfo::exists(aside(number, ""_L1)))
        ++number;
    bool moved = true;
    for (const auto companion : companions) {
        const QString from = path + companion;
        if (QFileInfo::exists(from))
            moved = QFile::rename(from, aside(number, companion)) && moved;
    }
    return moved;
}
