#include "MarovendaAppViewModel.h"
#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QTest>
#include <QTimer>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SplashViewTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void logoComesInAtOnceAndTheSplashGoesAfterTwoAndAHalfSeconds();
    void spinnerTurnsOnceASecond();
    void spinnerRestsWhileInvisible();
};

void SplashViewTest::logoComesInAtOnceAndTheSplashGoesAfterTwoAndAHalfSeconds()
{
    QStringList order;
    MarovendaAppViewModel viewModel;
    QCOMPARE(viewModel.logoOpacityValue(), 0.0);
    QCOMPARE(viewModel.logoScaleValue(), 0.8);
    QVERIFY(viewModel.showSplashValue());
    connect(&viewModel, &MarovendaAppViewModel::showSplashChanged, &viewModel, [&] { order.append(u"end"_s); });
    // Timers end in the order in which they are due, however late they all are: this needs no fast machine.
    QTimer::singleShot(2490ms, Qt::PreciseTimer, &viewModel, [&] { order.append(u"earlier"_s); });
    viewModel.iniciarSplash();
    QTimer::singleShot(2510ms, Qt::PreciseTimer, &viewModel, [&] { order.append(u"later"_s); });
    QCOMPARE(viewModel.logoOpacityValue(), 1.0);
    QCOMPARE(viewModel.logoScaleValue(), 1.0);
    QTRY_COMPARE_WITH_TIMEOUT(order.size(), 3, 20'000);
    QCOMPARE(order, QStringList({u"earlier"_s, u"end"_s, u"later"_s}));
    QVERIFY(!viewModel.showSplashValue());
}

void SplashViewTest::spinnerTurnsOnceASecond()
{
    TestScreen screen("SplashView { logoOpacity: 1; logoScale: 1 }");
    QQuickItem *const spinner = screen.find(u"spinner"_s);
    QList<const QQuickItem *> spokes;
    for (const QQuickItem *child : spinner->childItems()) {
        if (child->inherits("QQuickRectangle"))
            spokes.append(child);
    }
    QCOMPARE(spokes.size(), 8);
    QList<qsizetype> brightest;
    for (qsizetype i = 0; i < spokes.size(); ++i) {
        connect(spokes[i], &QQuickItem::opacityChanged, spinner, [&brightest, &spokes, i] {
            if (spokes[i]->opacity() == 1)
                brightest.append(i);
        });
    }
    const auto *const timer = spinner->findChild<QObject *>(u"tick"_s);
    QVERIFY(timer);
    QCOMPARE(timer->property("interval").toInt() * 8, 1000);
    QVERIFY(timer->property("repeat").toBool());
    QTRY_VERIFY_WITH_TIMEOUT(brightest.size() > 8, 20'000);
    for (qsizetype i = 1; i < brightest.size(); ++i)
        QCOMPARE(brightest[i], (brightest[i - 1] + 1) % 8);
}

void SplashViewTest::spinnerRestsWhileInvisible()
{
    TestScreen screen("Item { property bool on: true; Spinner { objectName: 'spinner'; visible: parent.on } }");
    const auto *const timer = screen.root()->findChild<QObject *>(u"tick"_s);
    QVERIFY(timer->property("running").toBool());
    screen.root()->setProperty("on", false);
    QVERIFY(!timer->property("running").toBool());
}

MAROVENDA_TEST(SplashViewTest)
#include "tst_SplashView.moc"
