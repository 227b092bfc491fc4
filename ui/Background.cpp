#include "Background.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

/// Qt's event queue hands an event over with a lock. ThreadSanitizer does not see that one, since Qt is not
/// instrumented, but it sees this one, which the worker holds when it posts the event.
void takeOver([[maybe_unused]] std::mutex &mutex)
{
#ifdef __SANITIZE_THREAD__
    const std::lock_guard lock(mutex);
#endif
}

using Clock = std::chrono::steady_clock;

std::vector<Background *> &instances()
{
    static auto *const made = new std::vector<Background *>;
    return *made;
}

} // namespace

struct Background::Job {
    Job(Background *background, quint64 itsNumber) : owner(background), number(itsNumber) {}

    void showLife() { lastSign = Clock::now(); }
    /// The job does not count as stalled until it shows life again.
    void suspendTimeout() { lastSign = Clock::time_point::max(); }

    /// Null once the job is abandoned.
    Background *owner;
    const quint64 number;
    std::function<void()> work;
    std::atomic<Clock::time_point> lastSign = Clock::now();
};

/// Never destroyed, because detached threads use it. The threads never end either: a thread that ended during the end
/// of the application would free its Qt data while Qt itself is being destroyed.
struct Background::Threads {
    std::mutex mutex;
    std::condition_variable changed;
    /// True while the application exists.
    bool open = false;
    bool turnIsTaken = false;
    std::size_t idle = 0;
    std::deque<std::shared_ptr<Job>> jobs;

    static thread_local Job *current;
};

thread_local Background::Job *Background::Threads::current = nullptr;

Background::Threads &Background::threads()
{
    static auto *const made = new Threads;
    return *made;
}

void Background::runJobsForever()
{
    Threads &shared = threads();
    for (;;) {
        std::shared_ptr<Job> job;
        {
            std::unique_lock lock(shared.mutex);
            ++shared.idle;
            shared.changed.wait(lock, [&] { return shared.open && !shared.jobs.empty(); });
            --shared.idle;
            job = std::move(shared.jobs.front());
            shared.jobs.pop_front();
        }
        Threads::current = job.get();
        job->work();
        signOfLife();
        Threads::current = nullptr;
        job->work = nullptr;
        const std::lock_guard lock(shared.mutex);
        // Capture plain values only: the event may be destroyed on any thread.
        if (shared.open && job->owner) {
            QMetaObject::invokeMethod(
                job->owner,
                [owner = job->owner, number = job->number] {
                    takeOver(threads().mutex);
                    owner->finish(number);
                },
                Qt::QueuedConnection);
        }
    }
}

void Background::acceptJobs()
{
    const std::lock_guard lock(threads().mutex);
    if (std::exchange(threads().open, true))
        return;
    // Runs before ViewModel's post routine, which was added earlier and drops the main thread's events.
    qAddPostRoutine(endWithApplication);
    threads().changed.notify_all();
}

void Background::endWithApplication()
{
    {
        Threads &shared = threads();
        std::unique_lock lock(shared.mutex);
        shared.open = false;
        shared.jobs.clear();
        shared.changed.wait(lock, [&] { return !shared.turnIsTaken; });
    }
    for (Background *const each : instances())
        each->abandonAll();
}

void Background::signOfLife()
{
    std::unique_lock lock(threads().mutex);
    threads().changed.wait(lock, [] { return threads().open; });
    if (Threads::current)
        Threads::current->showLife();
}

Background::Turn::Turn()
{
    Threads &shared = threads();
    std::unique_lock lock(shared.mutex);
    if (Threads::current)
        Threads::current->suspendTimeout();
    shared.changed.wait(lock, [&] { return shared.open && !shared.turnIsTaken; });
    shared.turnIsTaken = true;
}

Background::Turn::~Turn()
{
    const std::lock_guard lock(threads().mutex);
    threads().turnIsTaken = false;
    threads().changed.notify_all();
    if (Threads::current)
        Threads::current->showLife();
}

Background::Background(std::size_t maxRunning, std::chrono::milliseconds stallTimeout)
    : m_maxRunning(maxRunning), m_stallTimeout(stallTimeout)
{
    m_next.setSingleShot(true);
    m_next.setInterval(stallTimeout);
    m_next.callOnTimeout(this, [this] { startNext(); });
    instances().push_back(this);
}

void Background::begin(Task task)
{
    if (QCoreApplication::closingDown())
        return;
    acceptJobs();
    m_waiting.push_back(std::move(task));
    startNext();
}

void Background::startNext()
{
    while (!m_waiting.empty() && m_running.size() < m_maxRunning && !isBusy()) {
        Task task = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (task.wanted())
            run(std::move(task));
    }
    if (!m_waiting.empty() && m_running.size() < m_maxRunning)
        m_next.start();
}

bool Background::isBusy() const
{
    const auto stalledBefore = Clock::now() - m_stallTimeout;
    return std::any_of(m_running.begin(), m_running.end(),
                       [&](const auto &each) { return each.second.job->lastSign.load() > stalledBefore; });
}

void Background::run(Task task)
{
    const quint64 number = ++m_started;
    const auto job = std::make_shared<Job>(this, number);
    job->work = std::exchange(task.work, nullptr);
    m_running.insert({number, Running{std::move(task), job}});
    Threads &shared = threads();
    const std::lock_guard lock(shared.mutex);
    shared.jobs.push_back(job);
    if (shared.idle >= shared.jobs.size()) {
        shared.changed.notify_all();
        return;
    }
    try {
        std::thread(runJobsForever).detach();
    } catch (const std::system_error &) {
        // The system has no more threads; the next idle thread takes the job.
    }
}

void Background::finish(quint64 number)
{
    const auto found = m_running.find(number);
    if (found == m_running.end())
        return;
    const Task task = std::move(found->second.task);
    m_running.erase(found);
    startNext();
    if (task.wanted())
        task.done();
}

void Background::abandonAll()
{
    m_next.stop();
    {
        const std::lock_guard lock(threads().mutex);
        for (const auto &[number, running] : m_running)
            running.job->owner = nullptr;
    }
    // Destroying these may start new jobs, so empty the members first.
    const auto waiting = std::exchange(m_waiting, {});
    const auto running = std::exchange(m_running, {});
}
