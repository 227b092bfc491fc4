#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class SplashViewTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void elementsStandWhereTheyAreDesigned_data();
    void elementsStandWhereTheyAreDesigned();
    void logoFadesInAndGrowsOverOneSecondEasingOut();
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

void SplashViewTest::logoFadesInAndGrowsOverOneSecondEasingOut()
{
    TestScreen screen(splash(0, 0.8));
    QQuickItem *const logo = screen.find(u"logo"_s);
    QCOMPARE(logo->opacity(), 0);
    QCOMPARE(logo->scale(), 0.8);
    QElapsedTimer since;
    since.start();
    screen.root()->setProperty("started", true);
    QList<QPointF> seen;
    while (logo->opacity() < 1 && since.elapsed() < 5000) {
        // Both move as one.
        QVERIFY(qAbs((logo->scale() - 0.8) / 0.2 - logo->opacity()) < 0.05);
        seen.append({double(since.elapsed()), logo->opacity()});
        QTest::qWait(15);
    }
    QVERIFY(since.elapsed() >= 950);
    QCOMPARE(logo->scale(), 1);
    // Ahead of a steady pace: it starts fast and ends slow.
    const auto middle =
        std::find_if(seen.begin(), seen.end(), [](QPointF at) { return at.y() > 0.4 && at.y() < 0.8; });
    QVERIFY(middle != seen.end());
    int ahead = 0;
    int behind = 0;
    for (const QPointF &at : std::as_const(seen)) {
        if (at.y() > 0.1 && at.y() < 0.9)
            ++(at.y() > at.x() / 1000 ? ahead : behind);
    }
    QVERIFY2(ahead > behind, qPrintable(u"%1 ahead, %2 behind"_s.arg(ahead).arg(behind)));
}

void SplashViewTest::spinnerTurnsOnceASecond()
{
    TestScreen screen("Spinner { objectName: 'spinner' }", {40, 40});
    QCOMPARE(screen.root()->childItems().size() >= 8, true);
    const auto *const timer = screen.root()->findChild<QObject *>(u"tick"_s);
    QVERIFY(timer);
    QCOMPARE(timer->property("interval").toInt() * 8, 1000);
    const int before = screen.root()->property("head").toInt();
    QTRY_VERIFY(screen.root()->property("head").toInt() != before);
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
