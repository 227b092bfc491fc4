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

/// Work off the main thread that may stall for ever, as reading a file does when its network drive is gone. A stalled
/// piece holds up neither the next one nor the application's end.
///
/// Belongs to the main thread, as does all that is to be done with a result: whether the work succeeds, is no longer
/// wanted or is still under way when the application ends, that is called and destroyed there and nowhere else.
class Background final : public QObject {
public:
    /// Starts one piece of work after the other, but waits no longer for one that has shown no sign of life for
    /// `patience`, in milliseconds; 0 waits for none. At most `most` are under way at once, stalled ones included.
    Background(std::size_t most, std::chrono::milliseconds patience);
    ~Background() override;

    /// Does `work`, a function without parameters, on another thread, and hands what it returns to `done` on the main
    /// thread. `wanted` is asked there before each of the two; what is no longer wanted is left out.
    ///
    /// What `work` holds and returns may be destroyed on that thread, or never, and so is to be plain values.
    template <typename Work, typename Done>
    void start(Work work, std::function<bool()> wanted, Done done)
    {
        auto result = std::make_shared<std::optional<std::invoke_result_t<Work>>>();
        begin({[work = std::move(work), result] { *result = work(); }, std::move(wanted),
               [done = std::move(done), result] { done(**result); }});
    }

    /// For work, between steps that may take long: it has not stalled. Does not return any more once the application
    /// has ended, since from then on nothing of Qt may be relied on.
    static void signOfLife();

    /// A part of some work that needs much memory, or the application: in the whole process one at a time, and the
    /// application ends only after it. Must not stall.
    class Turn {
    public:
        Turn();
        ~Turn();
        Turn(const Turn &) = delete;
        Turn &operator=(const Turn &) = delete;
    };

private:
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
    [[noreturn]] static void workForEver();
    static void openForTheApplication();
    static void end();

    void begin(Task task);
    void startNext();
    void run(Task task);
    bool waitsForOne() const;
    void finish(quint64 number);
    void forget();

    const std::size_t m_most;
    const std::chrono::milliseconds m_patience;
    QTimer m_next;
    std::deque<Task> m_waiting;
    std::map<quint64, Running> m_running;
    quint64 m_started = 0;
};
