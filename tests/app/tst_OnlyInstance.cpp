#include "MarovendaTest.h"
#include "OnlyInstance.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Start = OnlyInstance::Start;

namespace {

/// A start in a thread of its own, as another process would make it: who is asked goes on meanwhile.
class LaterStart {
public:
    explicit LaterStart(const QString &folder, const QByteArray &token = {}, std::chrono::milliseconds patience = 20s)
        : m_thread(QThread::create([=, this] { m_result = OnlyInstance(folder, patience).start(token); }))
    {
        m_thread->start();
    }
    ~LaterStart() { m_thread->wait(); }
    LaterStart(const LaterStart &) = delete;
    LaterStart &operator=(const LaterStart &) = delete;

    bool isDone() const { return m_thread->isFinished(); }
    Start result() const { return m_result; }

private:
    std::atomic<Start> m_result = Start::Unanswered;
    std::unique_ptr<QThread> m_thread;
};

} // namespace

/// Instances of one process stand for processes: their locks and sockets are each their own.
class OnlyInstanceTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        m_raised.clear();
    }

    void laterStartRaisesTheFirst_data();
    void laterStartRaisesTheFirst();
    void firstThatDoesNotAnswerIsGivenUp();
    void answerBeforeTheFirstIsReadyIsWaitedFor();
    void startWhileTheWindowClosesIsFirst();
    void socketOfAKilledProcessIsNoObstacle();
    void folderThatCannotHoldItLetsSeveralRun_data();
    void folderThatCannotHoldItLetsSeveralRun();
    void onlyTheUserReachesIt();
    void malformedRequestsRaiseNothing_data();
    void malformedRequestsRaiseNothing();
    void silentVisitorsDoNotKeepOthersOut();
    void anotherAnswerIsNone();

private:
    QString folder(const QString &name = u"store"_s) const { return m_home->filePath(name); }
    OnlyInstance::Raise raise()
    {
        return [this](const QByteArray &token) {
            m_raised += token;
            return true;
        };
    }
    /// A first start, which can be asked to raise its window.
    std::unique_ptr<OnlyInstance> ready()
    {
        auto first = std::make_unique<OnlyInstance>(folder());
        if (first->start("its own") != Start::First)
            qFatal("There is another one");
        first->setRaise(raise());
        return first;
    }
    /// Starts once more; the first answers meanwhile.
    Start startAgain(const QByteArray &token = {})
    {
        LaterStart later(folder(), token);
        while (!later.isDone())
            QTest::qWait(1);
        return later.result();
    }

    std::unique_ptr<QTemporaryDir> m_home;
    QByteArrayList m_raised;
};

void OnlyInstanceTest::laterStartRaisesTheFirst_data()
{
    const auto row = columns<QByteArray, QByteArray>("token", "received");
    row("none", "", "");
    row("any bytes", "a b\n%20\xFF/\t\"", "a b\n%20\xFF/\t\"");
    row("overlong", QByteArray(1'000'000, 'x'), "");
}

void OnlyInstanceTest::laterStartRaisesTheFirst()
{
    QFETCH(QByteArray, token);
    QFETCH(QByteArray, received);
    const auto first = ready();
    QCOMPARE(startAgain(token), Start::AnotherWasRaised);
    QCOMPARE(m_raised, QByteArrayList{received});
}

void OnlyInstanceTest::firstThatDoesNotAnswerIsGivenUp()
{
    OnlyInstance first(folder());
    QCOMPARE(first.start({}), Start::First);
    // Its event loop does not run.
    QElapsedTimer since;
    since.start();
    OnlyInstance later(folder());
    QCOMPARE(later.start({}), Start::Unanswered);
    QVERIFY(since.elapsed() >= 1400);
    // How long it really takes is the machine's affair; what it waits for leaves room for the start of a process.
    static_assert(OnlyInstance::usualPatience <= 1500ms);
}

void OnlyInstanceTest::answerBeforeTheFirstIsReadyIsWaitedFor()
{
    OnlyInstance first(folder());
    QCOMPARE(first.start({}), Start::First);
    LaterStart later(folder(), "early");
    QThread::msleep(300); // the time that it takes to load a window
    QVERIFY(!later.isDone());
    first.setRaise(raise());
    QTRY_VERIFY(later.isDone());
    QCOMPARE(later.result(), Start::AnotherWasRaised);
    QCOMPARE(m_raised, QByteArrayList{"early"});
}

void OnlyInstanceTest::startWhileTheWindowClosesIsFirst()
{
    auto first = std::make_unique<OnlyInstance>(folder());
    QCOMPARE(first->start({}), Start::First);
    int asked = 0;
    first->setRaise([&](const QByteArray &) {
        ++asked;
        return false;
    });
    LaterStart later(folder());
    QTRY_VERIFY(asked > 1);
    first.reset();
    QTRY_VERIFY(later.isDone());
    QCOMPARE(later.result(), Start::First);
}

void OnlyInstanceTest::socketOfAKilledProcessIsNoObstacle()
{
    QVERIFY(QDir().mkpath(folder()));
    OnlyInstance first(folder());
    // Under another name the listener does not remove it.
    QLocalServer killed;
    QVERIFY(killed.listen(folder(u"store/other"_s)));
    QVERIFY(QFile::rename(folder(u"store/other"_s), first.address()));
    QCOMPARE(first.start({}), Start::First);
    first.setRaise(raise());
    QCOMPARE(startAgain(), Start::AnotherWasRaised);
}

void OnlyInstanceTest::folderThatCannotHoldItLetsSeveralRun_data()
{
    QTest::addColumn<QString>("obstacle");
    QTest::newRow("no folder") << u"store"_s;
    QTest::newRow("no lock") << u"store/instance.lock/x"_s;
    QTest::newRow("no socket") << u"store/instance.socket/x"_s;
}

void OnlyInstanceTest::folderThatCannotHoldItLetsSeveralRun()
{
    QFETCH(QString, obstacle);
    QVERIFY(QDir().mkpath(QFileInfo(folder(obstacle)).path()));
    QFile file(folder(obstacle));
    QVERIFY(file.open(QFile::WriteOnly));
    OnlyInstance one(folder());
    OnlyInstance other(folder());
    QElapsedTimer since;
    since.start();
    QCOMPARE(one.start({}), Start::First);
    QCOMPARE(other.start({}), Start::First);
    QVERIFY(since.elapsed() < 1000);
}

void OnlyInstanceTest::onlyTheUserReachesIt()
{
    // However open the folder was, and however long its name is.
    for (const QString &name : {u"store"_s, QString(150, u'x')}) {
        QVERIFY(QDir().mkpath(folder(name)));
        QFile::setPermissions(folder(name), QFileDevice::Permissions(0x7777));
        OnlyInstance first(folder(name));
        QCOMPARE(first.start({}), Start::First);
        constexpr auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
                                QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
        QVERIFY(!(QFileInfo(folder(name)).permissions() & others));
        for (const QString &file : {first.address(), folder(name + u"/instance.lock"_s)}) {
            QVERIFY2(QFileInfo::exists(file), qPrintable(file));
            QVERIFY2(!(QFileInfo(file).permissions() & (others | QFileDevice::ExeOwner)), qPrintable(file));
        }
        OnlyInstance later(folder(name), 50ms);
        QCOMPARE(later.start({}), Start::Unanswered);
        QCOMPARE(later.address(), first.address());
    }
}

void OnlyInstanceTest::malformedRequestsRaiseNothing_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::newRow("another version") << QByteArray("raise 2 token\n");
    QTest::newRow("no end") << QByteArray("raise 1 token");
    QTest::newRow("endless") << QByteArray(16 * 1024 * 1024, 'a');
    QTest::newRow("overlong") << "raise 1 " + QByteArray(OnlyInstance::longestRequest, 'a') + '\n';
}

void OnlyInstanceTest::malformedRequestsRaiseNothing()
{
    QFETCH(QByteArray, request);
    const auto first = ready();
    QLocalSocket visitor;
    visitor.connectToServer(first->address());
    QTRY_COMPARE(visitor.state(), QLocalSocket::ConnectedState);
    visitor.write(request);
    // It is sent away, at the latest when its time is over, without an answer and without more of it being read.
    QTRY_COMPARE_WITH_TIMEOUT(visitor.state(), QLocalSocket::UnconnectedState, 10000);
    QCOMPARE(visitor.readAll(), QByteArray());
    QCOMPARE(m_raised, QByteArrayList());
    QCOMPARE(startAgain("good"), Start::AnotherWasRaised);
    QCOMPARE(m_raised, QByteArrayList{"good"});
}

void OnlyInstanceTest::silentVisitorsDoNotKeepOthersOut()
{
    const auto first = ready();
    std::vector<std::unique_ptr<QLocalSocket>> visitors;
    for (int i = 0; i < 100; ++i) {
        visitors.push_back(std::make_unique<QLocalSocket>());
        visitors.back()->connectToServer(first->address());
        QTRY_COMPARE(visitors.back()->state(), QLocalSocket::ConnectedState);
        visitors.back()->write("rai");
    }
    QElapsedTimer since;
    since.start();
    QCOMPARE(startAgain(), Start::AnotherWasRaised);
    QVERIFY(since.elapsed() < 1500);
    const auto kept = std::count_if(visitors.begin(), visitors.end(),
                                    [](const auto &each) { return each->state() == QLocalSocket::ConnectedState; });
    QVERIFY2(kept <= OnlyInstance::mostVisitors, qPrintable(QString::number(kept)));
}

void OnlyInstanceTest::anotherAnswerIsNone()
{
    OnlyInstance later(folder(), 200ms);
    QVERIFY(QDir().mkpath(folder()));
    InstanceLock lock(folder(u"store/instance.lock"_s));
    QCOMPARE(lock.take(), InstanceLock::Outcome::Taken);
    // Another program that has come to its place.
    QLocalServer stranger;
    QVERIFY(stranger.listen(later.address()));
    connect(&stranger, &QLocalServer::newConnection, &stranger, [&] {
        QLocalSocket *const visitor = stranger.nextPendingConnection();
        visitor->write("lowered\n");
        visitor->disconnectFromServer();
    });
    LaterStart start(folder(), {}, 200ms);
    QTRY_VERIFY(start.isDone());
    QCOMPARE(start.result(), Start::Unanswered);
}

MAROVENDA_TEST(OnlyInstanceTest)
#include "tst_OnlyInstance.moc"
