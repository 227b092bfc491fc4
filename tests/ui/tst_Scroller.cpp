#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class ScrollerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void inertWhileTheContentFits();
    void flicksWhenTheContentDoesNotFit();
    void focusedFieldIsBroughtIntoView();
    void focusedFieldStaysInViewWhenTheWindowShrinks();
    void shortContentIsCentredWhereAsked();
    void columnIsAtMostSixHundredWideAndCentred();
    void shrinkingContentReturnsToTheTop();
    void indicatorShowsWhileItMoves_data();
    void indicatorShowsWhileItMoves();

private:
    static QByteArray column(int rows, const QByteArray &more = {})
    {
        return "Scroller { objectName: 'scroller'; " + more +
               " Column { objectName: 'column'; width: parent.width; Repeater { model: " + QByteArray::number(rows) +
               "; CustomTextField { required property int index; objectName: 'field' + index; width: parent.width;"
               " hint: 'Campo ' + index; isDecimal: false } } } }";
    }
    static bool isOfType(const QQuickItem *item, const QByteArray &type)
    {
        return QByteArray(item->metaObject()->className()).startsWith(type + "_QMLTYPE");
    }
    /// The first item of a type of ours at or below `from`; null when there is none.
    static const QQuickItem *ofType(const QQuickItem *from, const QByteArray &type)
    {
        if (isOfType(from, type))
            return from;
        for (const QQuickItem *child : from->childItems()) {
            if (const QQuickItem *const found = ofType(child, type))
                return found;
        }
        return nullptr;
    }
    static void drag(TestScreen &screen, int from, int to)
    {
        QTest::mousePress(&screen.window(), Qt::LeftButton, {}, QPoint(380, from));
        const int step = from > to ? -8 : 8;
        for (int y = from; y != to; y += step)
            QTest::mouseMove(&screen.window(), QPoint(380, y), 5);
        QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, QPoint(380, to));
    }
};

void ScrollerTest::inertWhileTheContentFits()
{
    TestScreen screen(column(4));
    QVERIFY(!screen.root()->property("interactive").toBool());
    drag(screen, 600, 200);
    QCOMPARE(screen.root()->property("contentY").toReal(), 0);
    drag(screen, 200, 600);
    QCOMPARE(screen.root()->property("contentY").toReal(), 0);
}

void ScrollerTest::flicksWhenTheContentDoesNotFit()
{
    TestScreen screen(column(40));
    QVERIFY(screen.root()->property("interactive").toBool());
    drag(screen, 600, 200);
    QTRY_VERIFY(screen.root()->property("contentY").toReal() > 100);
    QTRY_VERIFY(!screen.root()->property("moving").toBool());
}

void ScrollerTest::focusedFieldIsBroughtIntoView()
{
    TestScreen screen(column(40));
    for (int i = 0; i < 40; ++i) {
        screen.key(Qt::Key_Tab);
        const QRectF box = TestScreen::box(screen.find(u"field%1"_s.arg(i)));
        QVERIFY(screen.find(u"field%1"_s.arg(i))->hasActiveFocus());
        QVERIFY2(box.top() >= 0 && box.bottom() <= 844, qPrintable(QString::number(i)));
    }
    screen.key(Qt::Key_Backtab, Qt::ShiftModifier);
    screen.find(u"field0"_s)->forceActiveFocus();
    QCOMPARE(screen.root()->property("contentY").toReal(), 0);
}

void ScrollerTest::focusedFieldStaysInViewWhenTheWindowShrinks()
{
    TestScreen screen(column(12));
    QQuickItem *const last = screen.find(u"field11"_s);
    last->forceActiveFocus();
    QVERIFY(TestScreen::box(last).bottom() <= 844);
    screen.window().resize(390, 400);
    QTRY_VERIFY(TestScreen::box(last).bottom() <= 400);
    QVERIFY(TestScreen::box(last).top() >= 0);
}

void ScrollerTest::shortContentIsCentredWhereAsked()
{
    TestScreen centred(column(2, "centred: true;"));
    QCOMPARE(TestScreen::box(centred.find(u"column"_s)).top(), (844 - 2 * 54) / 2);
    TestScreen atTop(column(2));
    QCOMPARE(TestScreen::box(atTop.find(u"column"_s)).top(), 0);
    TestScreen tall(column(40, "centred: true;"));
    QCOMPARE(TestScreen::box(tall.find(u"column"_s)).top(), 0);
}

void ScrollerTest::columnIsAtMostSixHundredWideAndCentred()
{
    TestScreen wide(column(2), {1280, 800});
    QCOMPARE(TestScreen::box(wide.find(u"column"_s)).left(), 340);
    QCOMPARE(wide.find(u"column"_s)->width(), 600);
    TestScreen narrow(column(2), {320, 480});
    QCOMPARE(narrow.find(u"column"_s)->width(), 320);
}

void ScrollerTest::shrinkingContentReturnsToTheTop()
{
    TestScreen screen(
        "Scroller { id: s; property int rows: 40; Column { width: parent.width; Repeater { model: s.rows;"
        " Item { width: 10; height: 60 } } } }");
    screen.root()->setProperty("contentY", 500);
    screen.root()->setProperty("rows", 3);
    QTRY_COMPARE(screen.root()->property("contentY").toReal(), 0);
}

void ScrollerTest::indicatorShowsWhileItMoves_data()
{
    QTest::addColumn<QByteArray>("view");
    QTest::addColumn<QString>("area");
    QTest::addColumn<bool>("shown");
    QTest::newRow("quotation form") << QByteArray("CotizarView {}") << QString() << true;
    QTest::newRow("vehicle form") << QByteArray("ImportarAutoView {}") << QString() << true;
    QTest::newRow("registration") << QByteArray("RegistroView {}") << QString() << true;
    QTest::newRow("dashboard") << QByteArray("DashboardView { screens: ServiceScreens {} }") << QString() << true;
    QTest::newRow("tiles") << QByteArray("DashboardView { screens: ServiceScreens {} }") << u"tileScroll"_s << false;
}

void ScrollerTest::indicatorShowsWhileItMoves()
{
    QFETCH(QByteArray, view);
    QFETCH(QString, area);
    QFETCH(bool, shown);
    TestScreen screen(view, {390, 300});
    const QQuickItem *const moved = area.isEmpty() ? ofType(screen.root(), "Scroller") : screen.find(area);
    QVERIFY(moved);
    QVERIFY(moved->property("interactive").toBool());
    // Its own, not one of an area inside.
    const auto indicatorShown = [&] {
        const QList<QQuickItem *> children = moved->childItems();
        return std::any_of(children.begin(), children.end(), [](const QQuickItem *each) {
            return isOfType(each, "ScrollIndicator") && each->isVisible() && each->width() > 0 &&
                   each->property("color").value<QColor>().alpha() > 0;
        });
    };
    QVERIFY(!indicatorShown());
    if (!area.isEmpty())
        screen.scrollTo(moved);
    QPoint finger = TestScreen::box(moved).center().toPoint();
    const QPoint step = area.isEmpty() ? QPoint(0, -8) : QPoint(-8, 0);
    if (area.isEmpty())
        finger = QPoint(380, 250);
    QTest::mousePress(&screen.window(), Qt::LeftButton, {}, finger);
    for (int i = 0; i < 10; ++i)
        QTest::mouseMove(&screen.window(), finger += step, 5);
    QVERIFY(moved->property("moving").toBool());
    QCOMPARE(indicatorShown(), shown);
    QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, finger);
    QTRY_VERIFY(!moved->property("moving").toBool());
    QVERIFY(!indicatorShown());
}

MAROVENDA_TEST_MAIN(ScrollerTest)
#include "tst_Scroller.moc"
