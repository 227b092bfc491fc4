#include "MarovendaAppViewModel.h"
#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QDeadlineTimer>
#include <QTest>
#include <QTimer>
#include <QtMath>

#include <chrono>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SplashViewTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void logoComesInAtOnceAndTheSplashGoesAfterTwoAndAHalfSeconds();
    void elementsStandWhereTheyAreDesigned_data();
    void elementsStandWhereTheyAreDesigned();
    void logoGrowsFromItsCentre();
    void logoFadesInAndGrowsAsOne();
    void spinnerTurnsOnceASecond();
    void spinnerRestsWhileInvisible();
    void pictureIsCroppedNeverStretched();

private:
    static QByteArray splash(double opacity, double scale)
    {
        return "import Marovenda.App\nSplashView { property bool started: false; logoOpacity: started ? 1 : " +
               QByteArray::number(opacity) + "; logoScale: started ? 1 : " + QByteArray::number(scale) + " }";
    }
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

void SplashViewTest::elementsStandWhereTheyAreDesigned_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("phone") << QSize(390, 844);
    QTest::newRow("small") << QSize(320, 480);
    QTest::newRow("wide") << QSize(1280, 800);
}

void SplashViewTest::elementsStandWhereTheyAreDesigned()
{
    QFETCH(QSize, size);
    TestScreen screen(splash(1, 1), size);
    const auto box = [&](const QString &name) { return TestScreen::box(screen.find(name)); };
    QCOMPARE(box(u"background"_s), QRectF(QPointF(), QSizeF(size)));
    QCOMPARE(box(u"logo"_s).size(), QSizeF(160, 160));
    QCOMPARE(box(u"logo"_s).center().x(), size.width() / 2.0);
    // Logo, 20, then 16 above the spinner; all of it centred.
    const QRectF spinner = TestScreen::box(screen.named(u"Cargando"_s));
    QCOMPARE(spinner.size(), QSizeF(20, 20));
    QCOMPARE(spinner.top() - box(u"logo"_s).bottom(), 20 + 16);
    QVERIFY(qAbs((box(u"logo"_s).top() + spinner.bottom()) / 2 - size.height() / 2.0) <= 0.5);

    const QQuickItem *const credit = screen.find(u"credit"_s);
    QCOMPARE(credit->property("text").toString(), u"Desarrollado por Corvandel"_s);
    QCOMPARE(credit->property("font").value<QFont>().pixelSize(), 12);
    QCOMPARE(credit->property("font").value<QFont>().weight(), QFont::Bold);
    QCOMPARE(credit->property("color").value<QColor>(), QColor(Qt::black));
    QCOMPARE(box(u"credit"_s).bottom(), size.height());
    QCOMPARE(credit->property("bottomPadding").toReal(), 32);
}

void SplashViewTest::logoGrowsFromItsCentre()
{
    TestScreen small(splash(1, 0.8));
    TestScreen whole(splash(1, 1));
    const QRectF first = TestScreen::box(small.find(u"logo"_s));
    const QRectF last = TestScreen::box(whole.find(u"logo"_s));
    QCOMPARE(first.size(), QSizeF(128, 128));
    QCOMPARE(first.center(), last.center());
}

void SplashViewTest::logoFadesInAndGrowsAsOne()
{
    TestScreen screen(splash(0, 0.8));
    const QQuickItem *const logo = screen.find(u"logo"_s);
    QCOMPARE(logo->opacity(), 0);
    QCOMPARE(logo->scale(), 0.8);
    screen.root()->setProperty("started", true);
    const QDeadlineTimer deadline(20s);
    while (logo->opacity() < 1 && !deadline.hasExpired()) {
        QVERIFY(qAbs((logo->scale() - 0.8) / 0.2 - logo->opacity()) < 0.05);
        QTest::qWait(15);
    }
    QCOMPARE(logo->opacity(), 1);
    QCOMPARE(logo->scale(), 1);
}

void SplashViewTest::spinnerTurnsOnceASecond()
{
    TestScreen screen(splash(1, 1));
    QQuickItem *const spinner = screen.find(u"spinner"_s);
    QList<const QQuickItem *> spokes;
    for (const QQuickItem *child : spinner->childItems()) {
        if (child->inherits("QQuickRectangle"))
            spokes.append(child);
    }
    QCOMPARE(spokes.size(), 8);
    // Where the brightest spoke points, as the hand of a clock of eight hours.
    QList<int> hours;
    for (const QQuickItem *spoke : std::as_const(spokes)) {
        connect(spoke, &QQuickItem::opacityChanged, spinner, [&hours, spinner, spoke] {
            if (spoke->opacity() < 1)
                return;
            const QPointF at = spoke->mapToItem(spinner, QPointF(spoke->width() / 2, 0)) - QPointF(10, 10);
            hours.append((qRound(qRadiansToDegrees(std::atan2(at.x(), -at.y())) / 45) + 8) % 8);
        });
    }
    const auto *const timer = spinner->findChild<QObject *>(u"tick"_s);
    QVERIFY(timer);
    QCOMPARE(timer->property("interval").toInt() * 8, 1000);
    QVERIFY(timer->property("repeat").toBool());
    QTRY_VERIFY_WITH_TIMEOUT(hours.size() > 8, 20'000);
    for (qsizetype i = 1; i < hours.size(); ++i)
        QCOMPARE(hours[i], (hours[i - 1] + 1) % 8);
}

void SplashViewTest::spinnerRestsWhileInvisible()
{
    TestScreen screen("Item { property bool on: true; Spinner { objectName: 'spinner'; visible: parent.on } }");
    const auto *const timer = screen.root()->findChild<QObject *>(u"tick"_s);
    QVERIFY(timer->property("running").toBool());
    screen.root()->setProperty("on", false);
    QVERIFY(!timer->property("running").toBool());
}

void SplashViewTest::pictureIsCroppedNeverStretched()
{
    TestScreen screen(splash(1, 1), {1280, 800});
    const QQuickItem *const picture = screen.find(u"background"_s);
    QVERIFY(picture->property("cropped").toBool()); // what that draws is the picture's own test
    QCOMPARE(picture->size(), QSizeF(1280, 800));
}

MAROVENDA_TEST_MAIN(SplashViewTest)
#include "tst_SplashView.moc"
