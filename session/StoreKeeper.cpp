#include "StoreKeeper.h"
#include "PostponedWrites.h"
#include "StoreFile.h"
#include "StoreLog.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

using namespace std::chrono_literals;

/// Outlives the StoreKeeper if the disk does not answer.
struct StoreKeeper::Shared {
    Shared(const QString &itsPath, SessionStore::Report itsReport)
        : path(itsPath), report(std::move(itsReport)), postponed(itsPath)
    {
    }

    bool hasWork() const { return unsynchronised || !later.isEmpty(); }
    void work();
    void clearPostponed(std::unique_lock<std::mutex> &lock);
    void reportOnce(const QString &problem);

    const QString path;
    const SessionStore::Report report;

    std::mutex mutex;
    std::condition_variable changed;
    bool runs = false;
    bool ends = false;
    bool unsynchronised = false;
    bool isLogLong = false;
    /// Whether values that were in `later` are being written.
    bool writing = false;
    /// At most one value for each key.
    SessionStore::Values later;
    /// Contains `later` and what is being written.
    PostponedWrites postponed;

    /// Used by the thread only.
    bool reported = false;
};

void StoreKeeper::Shared::reportOnce(const QString &problem)
{
    if (!std::exchange(reported, !problem.isEmpty()) && reported)
        report(problem);
}

void StoreKeeper::Shared::work()
{
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return ends || hasWork(); });
        if (!hasWork())
            break;
        // Many writes, such as typed letters, are synchronised together.
        changed.wait_for(lock, 300ms, [this] { return ends || !later.isEmpty(); });
        const bool synchronise = std::exchange(unsynchronised, false);
        const bool shorten = std::exchange(isLogLong, false);
        const SessionStore::Values values = std::exchange(later, {});
        writing = !values.isEmpty();
        lock.unlock();
        if (synchronise)
            reportOnce(StoreFile::synchroniseLog(path));
        if (!values.isEmpty())
            reportOnce(StoreLog::write(path, values));
        if (shorten)
            StoreLog::shorten(path);
        lock.lock();
        if (writing)
            clearPostponed(lock);
        writing = false;
    }
    runs = false;
    changed.notify_all();
}

void StoreKeeper::Shared::clearPostponed(std::unique_lock<std::mutex> &lock)
{
    if (!later.isEmpty())
        return;
    postponed.clear();
    lock.unlock();
    postponed.synchronise();
    lock.lock();
    if (later.isEmpty())
        postponed.remove();
}

StoreKeeper::StoreKeeper(const QString &path, SessionStore::Report report, const SessionStore::Values &postponed)
    : m_shared(std::make_shared<Shared>(path, std::move(report)))
{
    const std::lock_guard lock(m_shared->mutex);
    if (!postponed.isEmpty())
        write(postponed);
}

StoreKeeper::~StoreKeeper()
{
    std::unique_lock lock(m_shared->mutex);
    m_shared->ends = true;
    m_shared->changed.notify_all();
    m_shared->changed.wait_for(lock, 5s, [this] { return !m_shared->runs; });
}

void StoreKeeper::noteWrite(bool isLogLong)
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->unsynchronised = true;
    m_shared->isLogLong = m_shared->isLogLong || isLogLong;
    start();
}

void StoreKeeper::writeLater(const SessionStore::Values &values)
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->postponed.add(values);
    write(values);
}

void StoreKeeper::write(const SessionStore::Values &values)
{
    for (const auto &value : values) {
        m_shared->later.removeIf([&](const auto &earlier) { return earlier.first == value.first; });
        m_shared->later.append(value);
    }
    start();
}

bool StoreKeeper::isWriting() const
{
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->writing || !m_shared->later.isEmpty();
}

void StoreKeeper::start()
{
    m_shared->changed.notify_all();
    if (std::exchange(m_shared->runs, true))
        return;
    try {
        std::thread([shared = m_shared] { shared->work(); }).detach();
    } catch (const std::system_error &) {
        // The system has no more threads; the next write tries again.
        m_shared->runs = false;
    }
}
