#include "Artwork.h"
#include "ContinuousRectangle.h"
#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class LookTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void coloursThatNoTableHolds();
    void curvesThatNoTableHolds();
    void alertComesInAFifthOfASecond();
    void ringIsTwoWide();
    void changedShapeIsDrawnAnew_data();
    void changedShapeIsDrawnAnew();
    void outlineHasTheDesignedCurve();
    void radiusIsLimitedByTheShorterSide();
    void artworkIsThereForAllRatios_data();
    void artworkIsThereForAllRatios();
    void artworkIsWholeWithinItsItem();
};

/// The tables of the screens hold the others.
void LookTest::coloursThatNoTableHolds()
{
    TestScreen screen("Item { property color hint: Theme.placeholder; property color back: Theme.screenBackground }");
    QCOMPARE(screen.root()->property("hint").value<QColor>().rgba(), qRgba(0x3C, 0x3C, 0x43, qRound(0.30 * 255)));
    // Grey at 10 % over white.
    QCOMPARE(screen.root()->property("back").value<QColor>().rgba(), qRgb(244, 244, 244));
}

void LookTest::curvesThatNoTableHolds()
{
    TestScreen screen("Item { property list<real> into: Theme.easeIn; property list<real> out: Theme.easeOut }");
    QCOMPARE(screen.root()->property("into").value<QList<qreal>>(), QList<qreal>({0.42, 0, 1, 1, 1, 1}));
    QCOMPARE(screen.root()->property("out").value<QList<qreal>>(), QList<qreal>({0, 0, 0.58, 1, 1, 1}));
}

void LookTest::alertComesInAFifthOfASecond()
{
    const TestScreen screen("Item { property int duration: Theme.alertDuration }");
    QCOMPARE(screen.root()->property("duration").toInt(), 200);
}

void LookTest::ringIsTwoWide()
{
    TestScreen screen("Rectangle { color: 'white'; FocusRing { anchors.fill: parent; anchors.margins: 10; radius: 4; "
                      "shown: true } }",
                      {60, 60});
    const QImage shown = screen.picture();
    int wide = 0;
    for (int x = 0; x < 30; ++x)
        wide += shown.pixelColor(x, 30) != QColor(Qt::white);
    QCOMPARE(wide, 2);
}

void LookTest::changedShapeIsDrawnAnew_data()
{
    const auto row = columns<QByteArray, QByteArray, QVariant>("shape", "property", "value");
    const QByteArray rectangle =
        "ContinuousRectangle { radius: 4; color: 'blue'; borderWidth: 2; borderColor: 'black' }";
    const QByteArray symbol = "Symbol { name: 'car'; color: 'blue' }";
    const QByteArray artwork = "Artwork { name: 'background' }";
    row("radius", rectangle, "radius", 12);
    row("color", rectangle, "color", QColor(Qt::green));
    row("width of the border", rectangle, "borderWidth", 6);
    row("color of the border", rectangle, "borderColor", QColor(Qt::red));
    row("symbol", symbol, "name", u"shippingbox"_s);
    row("color of a symbol", symbol, "color", QColor(Qt::red));
    row("artwork", artwork, "name", u"corvandel"_s);
    row("cropped artwork", artwork, "cropped", true);
}

void LookTest::changedShapeIsDrawnAnew()
{
    QFETCH(const QByteArray, shape);
    QFETCH(const QByteArray, property);
    QFETCH(const QVariant, value);
    TestScreen screen(shape, {60, 60});
    const QImage before = screen.picture();
    screen.root()->setProperty(property, value);
    QVERIFY(screen.picture() != before);
}

void LookTest::outlineHasTheDesignedCurve()
{
    const QPainterPath path = ContinuousRectangle::outline(QRectF(0, 0, 400, 300), 20);
    // The start and the two joints of the corner, on each of the four corners.
    const QList<QPointF> joints{{1.528665, 0}, {0.631494, 0.074911}, {0.074911, 0.631494}, {0, 1.528665}};
    for (const bool right : {false, true}) {
        for (const bool down : {false, true}) {
            for (const QPointF &joint : joints) {
                const QPointF at(right ? 400 - 20 * joint.x() : 20 * joint.x(),
                                 down ? 300 - 20 * joint.y() : 20 * joint.y());
                bool found = false;
                for (int i = 0; i < path.elementCount(); ++i)
                    found = found || (QPointF(path.elementAt(i)) - at).manhattanLength() < 1e-6;
                QVERIFY(found);
            }
        }
    }
    QVERIFY(path.contains(QPointF(200, 150)));
    QVERIFY(!path.contains(QPointF(2, 2)));
}

void LookTest::radiusIsLimitedByTheShorterSide()
{
    QCOMPARE(ContinuousRectangle::limitedRadius({300, 54}, 16), 16);
    QVERIFY(qAbs(ContinuousRectangle::limitedRadius({300, 54}, 20) - 54 / 2 / 1.528665) < 1e-6);
    QCOMPARE(ContinuousRectangle::limitedRadius({0, 54}, 20), 0);
}

void LookTest::artworkIsThereForAllRatios_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("width");
    QTest::newRow("background") << u"background"_s << 390;
    QTest::newRow("logo") << u"marovenda_logo"_s << 160;
    QTest::newRow("maker") << u"corvandel"_s << 140;
}

void LookTest::artworkIsThereForAllRatios()
{
    QFETCH(QString, name);
    QFETCH(int, width);
    for (const int ratio : {1, 2, 3}) {
        const QImage picture = Artwork::picture(name, ratio);
        QCOMPARE(picture.width(), ratio * width);
        Artwork::decodeAhead(name, ratio);
        QVERIFY(Artwork::picture(name, ratio) == picture);
        QVERIFY(Artwork::picture(name, ratio) == picture);
    }
}

void LookTest::artworkIsWholeWithinItsItem()
{
    TestScreen screen("Rectangle { property alias name: art.name; color: 'red';"
                      " Artwork { id: art; anchors.fill: parent; name: 'corvandel' } }",
                      {200, 100});
    const QImage drawn = screen.picture();
    screen.root()->setProperty("name", u"unknown"_s);
    const QImage bare = screen.picture();
    // A square of 100 in the middle of 200 x 100.
    QCOMPARE(drawn.copy(0, 0, 50, 100), bare.copy(0, 0, 50, 100));
    QCOMPARE(drawn.copy(150, 0, 50, 100), bare.copy(150, 0, 50, 100));
    QVERIFY(drawn.copy(50, 0, 100, 100) != bare.copy(50, 0, 100, 100));
    QCOMPARE(bare.pixelColor(100, 50), QColor(Qt::red));
}

MAROVENDA_TEST(LookTest)
#include "tst_Look.moc"
