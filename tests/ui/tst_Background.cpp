#include "Background.h"
#include "MarovendaTest.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <atomic>
#include <chrono>
#include <semaphore>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

/// Work that stalls, in an application of its own for each case. One that does not end is ended by the test's time
/// limit.
class BackgroundTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void resultsComeOnTheMainThreadInOrder();
    void stalledWorkHoldsUpNoOther_data();
    void stalledWorkHoldsUpNoOther();
    void workThatShowsLifeIsWaitedFor();
    void atMostSoManyRunAtOnce();
    void unwantedWorkIsSkipped();
    void callbackIsDeletedOnTheMainThread_data();
    void callbackIsDeletedOnTheMainThread();
    void onlyOneHasTheTurn();
    void applicationWaitsForTheTurn();
    void nothingRunsAfterTheApplication();
};

namespace {

/// Where work stalls until it is opened. Shared with the thread, which may stay longer than the test.
class Gate {
public:
    void pass() const
    {
        m_state->reached.release();
        m_state->opened.acquire();
        m_state->opened.release();
    }
    void open() const { m_state->opened.release(); }
    /// Work that passes and returns this.
    std::function<int()> work(int result = 0) const
    {
        return [gate = *this, result] {
            gate.pass();
            return result;
        };
    }
    void waitUntilReached() const { m_state->reached.acquire(); }
    bool isReached() const { return m_state->reached.try_acquire(); }

private:
    struct State {
        std::counting_semaphore<> reached{0};
        std::counting_semaphore<> opened{0};
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

void inAnApplication(const std::function<void()> &body)
{
    QByteArray name("test");
    int argc = 1;
    char *argv[] = {name.data(), nullptr};
    runMarovendaCheck(
        [&] {
            body();
            return 0;
        },
        argc, argv);
}

bool always() { return true; }

bool onMainThread() { return QThread::currentThread() == QCoreApplication::instance()->thread(); }

} // namespace

void BackgroundTest::resultsComeOnTheMainThreadInOrder()
{
    inAnApplication([] {
        auto &background = *new Background(3, 1min);
        QList<int> came;
        for (int i = 0; i < 50; ++i)
            background.start([i] { return onMainThread() ? -1 : i; }, always,
                             [&](int result) { came.append(onMainThread() ? result : -2); });
        QTRY_COMPARE(came.size(), 50);
        for (int i = 0; i < 50; ++i)
            QCOMPARE(came[i], i);
    });
}

void BackgroundTest::stalledWorkHoldsUpNoOther_data()
{
    QTest::addColumn<std::chrono::milliseconds>("patience");
    QTest::newRow("no patience") << 0ms;
    QTest::newRow("some patience") << 20ms;
}

void BackgroundTest::stalledWorkHoldsUpNoOther()
{
    QFETCH(const std::chrono::milliseconds, patience);
    inAnApplication([&] {
        auto &background = *new Background(3, patience);
        const Gate gate;
        QList<int> came;
        const auto take = [&](int result) { came.append(result); };
        for (const int number : {1, 2})
            background.start(gate.work(number), always, take);
        for (const int number : {3, 4})
            background.start([number] { return number; }, always, take);
        QTRY_COMPARE(came, (QList<int>{3, 4}));
        gate.open();
        QTRY_COMPARE(came.size(), 4);
    });
}

void BackgroundTest::workThatShowsLifeIsWaitedFor()
{
    inAnApplication([] {
        auto &background = *new Background(2, 100ms);
        QList<int> came;
        background.start(
            [] {
                for (const auto end = std::chrono::steady_clock::now() + 300ms;
                     std::chrono::steady_clock::now() < end;)
                    Background::signOfLife();
                return 1;
            },
            always, [&](int result) { came.append(result); });
        background.start([] { return 2; }, always, [&](int result) { came.append(result); });
        QTRY_COMPARE(came, (QList<int>{1, 2}));
    });
}

void BackgroundTest::atMostSoManyRunAtOnce()
{
    inAnApplication([] {
        auto &background = *new Background(2, 0ms);
        const std::array<Gate, 3> gates;
        int came = 0;
        for (const Gate &gate : gates)
            background.start(gate.work(), always, [&](int) { ++came; });
        gates[0].waitUntilReached();
        gates[1].waitUntilReached();
        QVERIFY(!gates[2].isReached());
        gates[1].open();
        QTRY_COMPARE(came, 1);
        gates[2].waitUntilReached();
        gates[2].open();
        QTRY_COMPARE(came, 2);
        gates[0].open();
        QTRY_COMPARE(came, 3);
    });
}

void BackgroundTest::unwantedWorkIsSkipped()
{
    inAnApplication([] {
        auto &background = *new Background(1, 1min);
        const Gate gate;
        bool wanted = true;
        bool taken = false;
        std::atomic<bool> begun = false;
        bool last = false;
        const auto isWanted = [&] { return wanted; };
        background.start(gate.work(), isWanted, [&](int) { taken = true; });
        background.start([&begun] { return begun.exchange(true); }, isWanted, [&](bool) { taken = true; });
        background.start([] { return 0; }, always, [&](int) { last = true; });
        gate.waitUntilReached();
        wanted = false;
        gate.open();
        QTRY_VERIFY(last);
        QVERIFY(!begun);
        QVERIFY(!taken);
    });
}

void BackgroundTest::callbackIsDeletedOnTheMainThread_data()
{
    QTest::addColumn<bool>("wanted");
    QTest::addColumn<bool>("ends");
    QTest::newRow("after its call") << true << false;
    QTest::newRow("uncalled") << false << false;
    QTest::newRow("when the application ends") << true << true;
}

void BackgroundTest::callbackIsDeletedOnTheMainThread()
{
    QFETCH(const bool, wanted);
    QFETCH(const bool, ends);
    QThread *thread = nullptr;
    bool called = false;
    const Gate gate;
    static auto &background = *new Background(1, 1min);
    inAnApplication([&] {
        std::shared_ptr<int> token(new int, [&](const int *gone) {
            delete gone;
            thread = QThread::currentThread();
        });
        bool isWanted = true;
        background.start(
            gate.work(), [&isWanted] { return isWanted; }, [&called, token](int) { called = true; });
        token.reset();
        gate.waitUntilReached();
        if (ends)
            return;
        isWanted = wanted;
        gate.open();
        QTRY_VERIFY(thread);
    });
    gate.open();
    QCOMPARE(thread, QThread::currentThread());
    QCOMPARE(called, wanted && !ends);
}

void BackgroundTest::onlyOneHasTheTurn()
{
    inAnApplication([] {
        auto &one = *new Background(4, 0ms);
        auto &other = *new Background(4, 0ms);
        std::atomic<int> inside = 0;
        std::atomic<int> most = 0;
        int came = 0;
        const auto work = [&] {
            const Background::Turn turn;
            most = std::max<int>(most, ++inside);
            for (int i = 0; i < 100; ++i)
                std::this_thread::yield();
            --inside;
            return 0;
        };
        for (Background *const each : {&one, &other, &one, &other, &one, &other})
            each->start(work, always, [&](int) { ++came; });
        QTRY_COMPARE(came, 6);
        QCOMPARE(most, 1);
    });
}

void BackgroundTest::applicationWaitsForTheTurn()
{
    static const Gate *gate = nullptr;
    const Gate made;
    gate = &made;
    std::atomic<bool> finished = false;
    static auto &background = *new Background(1, 1min);
    inAnApplication([&] {
        background.start(
            [made, &finished] {
                const Background::Turn turn;
                made.pass();
                for (int i = 0; i < 10'000; ++i)
                    std::this_thread::yield();
                finished = true;
                return 0;
            },
            always, [](int) {});
        made.waitUntilReached();
        // Comes first of what is done at the application's end.
        qAddPostRoutine([] { gate->open(); });
    });
    QVERIFY(finished);
}

void BackgroundTest::nothingRunsAfterTheApplication()
{
    const Gate gate;
    const Gate beyond;
    beyond.open();
    static auto &background = *new Background(2, 0ms);
    bool taken = false;
    inAnApplication([&] {
        background.start(
            [gate, beyond] {
                gate.pass();
                Background::signOfLife();
                beyond.pass();
                return 0;
            },
            always, [&](int) { taken = true; });
        gate.waitUntilReached();
    });
    gate.open();
    QVERIFY(!beyond.isReached());
    // Only with the next application: whatever the thread did before, it would not have waited for.
    inAnApplication([&] {
        bool came = false;
        background.start([] { return 0; }, always, [&](int) { came = true; });
        QTRY_VERIFY(came);
        beyond.waitUntilReached();
    });
    QVERIFY(!taken);
}

MAROVENDA_TEST_WITHOUT_APPLICATION(BackgroundTest)
#include "tst_Background.moc"
