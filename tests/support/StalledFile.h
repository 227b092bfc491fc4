#pragma once

#include <QFile>
#include <QString>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// A file that whoever opens it waits for, as for one on a network drive that is gone: until `letGo`, or for the
/// kernel's 45 seconds. It holds a lease on the file (fcntl(2), "Leases"), so it must be the only one to have it
/// open.
class StalledFile {
public:
    explicit StalledFile(const QString &path)
        : m_file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC))
    {
        // The kernel tells by this signal that somebody waits.
        std::signal(SIGIO, SIG_IGN);
        if (::fcntl(m_file, F_SETLEASE, F_WRLCK) != 0)
            qFatal("%s: no lease to be had", qUtf8Printable(path));
    }
    ~StalledFile() { ::close(m_file); }
    StalledFile(const StalledFile &) = delete;
    StalledFile &operator=(const StalledFile &) = delete;

    /// Whether somebody waits at this moment.
    bool isWaitedFor() const
    {
        struct stat found = {};
        QFile locks(QStringLiteral("/proc/locks"));
        if (::fstat(m_file, &found) != 0 || !locks.open(QFile::ReadOnly))
            return false;
        const QByteArray file = ':' + QByteArray::number(static_cast<quint64>(found.st_ino)) + ' ';
        const auto lines = locks.readAll().split('\n');
        return std::any_of(lines.begin(), lines.end(),
                           [&](const QByteArray &line) { return line.contains("BREAKING") && line.contains(file); });
    }
    void letGo() const { ::fcntl(m_file, F_SETLEASE, F_UNLCK); }

private:
    const int m_file;
};
