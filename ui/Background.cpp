#include "Background.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

/// Every one that there is, for the application's end.
std::set<Background *> &all()
{
    static auto *const made = new std::set<Background *>;
    return *made;
}

} // namespace

struct Background::Job {
    Job(Background *background, quint64 itsNumber) : owner(background), number(itsNumber) {}

    void showLife() { heard = Clock::now(); }
    /// Until it shows life again it cannot stall.
    void cannotStall() { heard = Clock::time_point::max(); }

    /// Null once nobody waits for it.
    Background *owner;
    const quint64 number;
    std::function<void()> work;
    std::atomic<Clock::time_point> heard = Clock::now();
};

/// Shared with threads that nobody waits for, and so never destroyed. Nor do the threads ever end: a thread that ends
/// beside the application would clear up what Qt keeps for it while Qt itself is cleared up.
struct Background::Threads {
    std::mutex mutex;
    std::condition_variable changed;
    /// Whether there is an application to work for.
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

void Background::workForEver()
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
        // The event holds nothing that would be destroyed with it.
        if (shared.open && job->owner)
            QMetaObject::invokeMethod(
                job->owner, [owner = job->owner, number = job->number] { owner->finish(number); },
                Qt::QueuedConnection);
    }
}

void Background::openForTheApplication()
{
    const std::lock_guard lock(threads().mutex);
    if (std::exchange(threads().open, true))
        return;
    // Before the main thread's queue is dropped, which was asked for when the application started.
    qAddPostRoutine(end);
    threads().changed.notify_all();
}

void Background::end()
{
    {
        Threads &shared = threads();
        std::unique_lock lock(shared.mutex);
        shared.open = false;
        shared.jobs.clear();
        shared.changed.wait(lock, [&] { return !shared.turnIsTaken; });
    }
    for (Background *const each : all())
        each->forget();
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
        Threads::current->cannotStall();
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

Background::Background(std::size_t most, std::chrono::milliseconds patience) : m_most(most), m_patience(patience)
{
    m_next.setSingleShot(true);
    m_next.setInterval(patience);
    m_next.callOnTimeout(this, [this] { startNext(); });
    all().insert(this);
}

Background::~Background()
{
    all().erase(this);
    forget();
}

void Background::begin(Task task)
{
    if (QCoreApplication::closingDown())
        return;
    openForTheApplication();
    m_waiting.push_back(std::move(task));
    startNext();
}

void Background::startNext()
{
    while (!m_waiting.empty() && m_running.size() < m_most && !waitsForOne()) {
        Task task = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (task.wanted())
            run(std::move(task));
    }
    if (!m_waiting.empty() && m_running.size() < m_most)
        m_next.start();
}

bool Background::waitsForOne() const
{
    const auto longAgo = Clock::now() - m_patience;
    return std::any_of(m_running.begin(), m_running.end(),
                       [&](const auto &each) { return each.second.job->heard.load() > longAgo; });
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
        std::thread(workForEver).detach();
    } catch (const std::system_error &) {
        // The system has no further thread: the first that is free takes it.
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

void Background::forget()
{
    m_next.stop();
    {
        const std::lock_guard lock(threads().mutex);
        for (const auto &[number, running] : m_running)
            running.job->owner = nullptr;
    }
    // Whoever goes with these may start something.
    const auto waiting = std::exchange(m_waiting, {});
    const auto running = std::exchange(m_running, {});
}
