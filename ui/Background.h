#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

/// Runs work on other threads that may stall forever, as reading a file does when its network drive is gone. A
/// stalled job delays neither the next job nor the end of the application.
///
/// Use it on the main thread only, and create it with `new`: it lives as long as the process. The `wanted` and `done`
/// functions of a job are called and destroyed on the main thread, also if the job is no longer wanted or the
/// application ends first.
class Background final : public QObject {
public:
    /// Runs one job at a time, but starts the next one when the running job has not called `signOfLife` for
    /// `stallTimeout`; 0 starts every job at once. At most `maxRunning` jobs run at the same time, stalled ones
    /// included.
    Background(std::size_t maxRunning, std::chrono::milliseconds stallTimeout);

    /// Calls `work` on another thread and then `done` with its result on the main thread. Calls `wanted` on the main
    /// thread before each of the two, and skips the call if it returns false.
    ///
    /// What `work` captures and returns may be destroyed on the other thread, or never: use plain values only.
    template <typename Work, typename Done>
    void start(Work work, std::function<bool()> wanted, Done done)
    {
        auto result = std::make_shared<std::optional<std::invoke_result_t<Work>>>();
        begin({[work = std::move(work), result] { *result = work(); }, std::move(wanted),
               [done = std::move(done), result] { done(**result); }});
    }

    /// Work calls this between steps that may take long, to show that it has not stalled. Never returns once the
    /// application has ended, because Qt may no longer be used then.
    static void signOfLife();

    /// Work holds a Turn while it needs much memory or uses QGuiApplication. There is one holder at a time in the
    /// whole process, and the application waits for it before it ends. The holder must not stall.
    class Turn {
    public:
        Turn();
        ~Turn();
        Turn(const Turn &) = delete;
        Turn &operator=(const Turn &) = delete;
    };

private:
    ~Background() override = default;

    struct Task {
        std::function<void()> work;
        std::function<bool()> wanted;
        std::function<void()> done;
    };
    struct Job;
    struct Running {
        Task task;
        std::shared_ptr<Job> job;
    };
    struct Threads;

    static Threads &threads();
    [[noreturn]] static void runJobsForever();
    static void acceptJobs();
    static void endWithApplication();

    void begin(Task task);
    void startNext();
    void run(Task task);
    bool isBusy() const;
    void finish(quint64 number);
    void abandonAll();

    const std::size_t m_maxRunning;
    const std::chrono::milliseconds m_stallTimeout;
    QTimer m_next;
    std::deque<Task> m_waiting;
    std::map<quint64, Running> m_running;
    quint64 m_started = 0;
};
