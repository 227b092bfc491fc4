#include "StoreFile.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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

int openedFolder(const QString &path)
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
    QByteArray some(qsizetype(64) * 1024, Qt::Uninitialized);
    qint64 size = 0;
    do {
        size = file.read(some.data(), some.size());
    } while (size > 0);
    return size == 0 && file.error() == QFile::NoError;
}

} // namespace

QString StoreFile::makeFolder(const QString &directory)
{
    const QDir parent(QFileInfo(directory).path());
    // Another process may make it in the same moment.
    const auto isThere = [&] { return QFileInfo::exists(directory); };
    if (!isThere() && (!parent.mkpath(u"."_s) || !parent.mkdir(directory, ownerOnlyDirectory)) && !isThere())
        return u"the directory %1 cannot be created"_s.arg(directory);
    QFile::setPermissions(directory, ownerOnlyDirectory);
    return {};
}

QString StoreFile::makeFile(const QString &path)
{
    // SQLite would create the file with the process's umask; its companions take over the file's permissions.
    if (!QFileInfo::exists(path)) {
        QFile file(path);
        if (!file.open(QFile::WriteOnly | QFile::NewOnly, ownerOnly) && !QFileInfo::exists(path))
            return u"%1 cannot be created: %2"_s.arg(path, file.errorString());
    }
    QFile::setPermissions(path, ownerOnly);
    return {};
}

StoreFile::Turn::Turn(const QString &directory) : m_folder(openedFolder(directory))
{
    for (QDeadlineTimer wait(5000); m_folder >= 0 && ::flock(m_folder, LOCK_EX | LOCK_NB) != 0;) {
        if (errno != EWOULDBLOCK || wait.hasExpired())
            break;
        QThread::msleep(2);
    }
}

StoreFile::Turn::~Turn()
{
    if (m_folder >= 0)
        ::close(m_folder);
}

bool StoreFile::isStump(const QString &path)
{
    // SQLite counts a single byte as none, and deletes a log that it finds beside an empty file. The log is looked at
    // first, since another process that is just making the store makes the log last.
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
        const int open = openedFolder(folder.path());
        if (open >= 0) {
            ::fsync(open);
            ::close(open);
        }
        folder.setPath(QFileInfo(folder.absolutePath()).path());
    } while (!folder.isRoot());
}

bool StoreFile::moveAside(const QString &path)
{
    // The number that is free for the file and its companions.
    const auto aside = [&](int number, QLatin1StringView companion) {
        return u"%1.damaged-%2%3"_s.arg(path).arg(number).arg(companion);
    };
    // The file goes first: without its log, it could pass for whole with values of long ago.
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
