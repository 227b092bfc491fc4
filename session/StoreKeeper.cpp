#include "StoreKeeper.h"
#include "StoreFile.h"
#include "StoreLog.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

using namespace std::chrono_literals;

/// Outlives the StoreKeeper if the disk does not answer.
struct StoreKeeper::Shared {
    Shared(QString itsPath, SessionStore::Report itsReport) : path(std::move(itsPath)), report(std::move(itsReport))
    {
    }

    bool hasWork() const { return unsynchronised || !later.empty(); }
    void work();
    void reportOnce(const QString &problem);

    const QString path;
    const SessionStore::Report report;

    std::mutex mutex;
    std::condition_variable changed;
    bool runs = false;
    bool ends = false;
    bool unsynchronised = false;
    bool isLogLong = false;
    std::deque<SessionStore::Values> later;

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
        changed.wait_for(lock, 300ms, [this] { return ends || !later.empty(); });
        if (!later.empty()) {
            const SessionStore::Values values = later.front();
            lock.unlock();
            const QString problem = StoreLog::write(path, values);
            reportOnce(problem);
            lock.lock();
            if (problem.isEmpty() || ends)
                later.pop_front();
            continue;
        }
        unsynchronised = false;
        const bool shorten = std::exchange(isLogLong, false);
        lock.unlock();
        reportOnce(StoreFile::synchroniseLog(path));
        if (shorten)
            StoreLog::shorten(path);
        lock.lock();
    }
    runs = false;
    changed.notify_all();
}

StoreKeeper::StoreKeeper(const QString &path, SessionStore::Report report)
    : m_shared(std::make_shared<Shared>(path, std::move(report)))
{
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
    m_shared->later.push_back(values);
    start();
}

bool StoreKeeper::isWriting() const
{
    const std::lock_guard lock(m_shared->mutex);
    return !m_shared->later.empty();
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
