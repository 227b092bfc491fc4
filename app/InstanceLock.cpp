#include "InstanceLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

InstanceLock::Outcome InstanceLock::take()
{
    if (m_file < 0)
        m_file = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_file < 0)
        return Outcome::Impossible;
    if (::flock(m_file, LOCK_EX | LOCK_NB) == 0)
        return Outcome::Taken;
    const bool anotherHasIt = errno == EWOULDBLOCK;
    release();
    return anotherHasIt ? Outcome::AnotherHasIt : Outcome::Impossible;
}

void InstanceLock::release()
{
    if (m_file >= 0)
        ::close(m_file);
    m_file = -1;
}
