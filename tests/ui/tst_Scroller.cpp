#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class ScrollerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void inertWhileTheContentFits();
    void focusedFieldIsBroughtIntoView();
    void focusedFieldStaysInViewWhenTheWindowShrinks();
    void focusElsewhereScrollsNothing();
    void shrinkingContentReturnsToTheTop();
    void indicatorShowsWhileItMoves();

private:
    static QByteArray column(int rows, const QByteArray &more = {})
    {
        return "Scroller { objectName: 'scroller'; anchors.fill: parent; " + more +
               " Column { objectName: 'column'; width: parent.width; Repeater { model: " + QByteArray::number(rows) +
               "; CustomTextField { required property int index; objectName: 'field' + index; width: parent.width;"
               " hint: 'Campo ' + index; isDecimal: false } } } }";
    }
    /// Calls `whileDown` before the finger is lifted.
    static void drag(
        TestScreen &screen, int from, int to, const std::function<void()> &whileDown = [] {})
    {
        QTest::mousePress(&screen.window(), Qt::LeftButton, {}, QPoint(380, from));
        const int step = from > to ? -8 : 8;
        for (int y = from; y != to; y += step)
            QTest::mouseMove(&screen.window(), QPoint(380, y), 5);
        whileDown();
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
    // The customer may scroll it away again.
    screen.root()->setProperty("contentY", 0);
    screen.settle();
    QCOMPARE(screen.root()->property("contentY").toReal(), 0);
}

void ScrollerTest::focusElsewhereScrollsNothing()
{
    TestScreen screen("Item { " + column(40) +
                      "CustomTextField { objectName: 'outside'; y: 2000; hint: ''; isDecimal: "
                      "false } }");
    QQuickItem *const scroller = screen.find(u"scroller"_s);
    scroller->setProperty("contentY", 200);
    screen.find(u"outside"_s)->forceActiveFocus();
    screen.settle();
    QCOMPARE(scroller->property("contentY").toReal(), 200);
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

void ScrollerTest::indicatorShowsWhileItMoves()
{
    TestScreen screen(column(40));
    const QList<QQuickItem *> children = screen.root()->childItems();
    const auto *const indicator = *std::find_if(children.begin(), children.end(), [](const QQuickItem *each) {
        return QByteArray(each->metaObject()->className()).startsWith("ScrollIndicator");
    });
    const auto indicatorShown = [&] {
        return indicator->isVisible() && indicator->width() > 0 &&
               indicator->property("color").value<QColor>().alpha() > 0;
    };
    QVERIFY(!indicatorShown());
    drag(screen, 600, 200, [&] { QVERIFY(indicatorShown()); });
    QTRY_VERIFY(screen.root()->property("contentY").toReal() > 100);
    QTRY_VERIFY(!screen.root()->property("moving").toBool());
    QVERIFY(!indicatorShown());
    screen.root()->setProperty("contentHeight", 1e6);
    QCOMPARE(indicator->height(), 24);
}

MAROVENDA_TEST(ScrollerTest)
#include "tst_Scroller.moc"
