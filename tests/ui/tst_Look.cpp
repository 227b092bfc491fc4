#include "ContinuousRectangle.h"
#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class LookTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void colours_data();
    void colours();
    void textStyles_data();
    void textStyles();
    void outlineHasTheDesignedCurve();
    void radiusIsLimitedByTheShorterSide();
    void everySymbolIsDrawnInItsColour_data();
    void everySymbolIsDrawnInItsColour();
};

void LookTest::colours_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QColor>("value");
    const auto row = [](const char *name, QColor value) {
        QTest::newRow(name) << QString::fromLatin1(name) << value;
    };
    row("blue", QColor(0x00, 0x7A, 0xFF));
    row("grey", QColor(0x8E, 0x8E, 0x93));
    row("green", QColor(0x34, 0xC7, 0x59));
    row("red", QColor(0xFF, 0x3B, 0x30));
    row("white", QColor(255, 255, 255));
    row("primaryText", QColor(0, 0, 0));
    row("placeholder", QColor(0x3C, 0x3C, 0x43, qRound(0.30 * 255)));
    row("separator", QColor(0x3C, 0x3C, 0x43, qRound(0.29 * 255)));
    row("outline", QColor(0x8E, 0x8E, 0x93, 51));
    row("greyFill", QColor(0x8E, 0x8E, 0x93, qRound(25.5)));
    row("blueFill", QColor(0x00, 0x7A, 0xFF, qRound(25.5)));
    // Grey at 10 % over white.
    row("screenBackground", QColor(244, 244, 244));
}

void LookTest::colours()
{
    QFETCH(QString, name);
    QFETCH(QColor, value);
    TestScreen screen("Item { property color value: Theme." + name.toLatin1() + " }");
    const QColor found = screen.root()->property("value").value<QColor>();
    for (const auto part : {&QColor::red, &QColor::green, &QColor::blue, &QColor::alpha})
        QVERIFY2(qAbs((found.*part)() - (value.*part)()) <= 1, qUtf8Printable(found.name(QColor::HexArgb)));
}

void LookTest::textStyles_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("weight");
    QTest::newRow("largeTitle") << QByteArray("largeTitle") << 34 << 41 << 400;
    QTest::newRow("title") << QByteArray("title") << 28 << 34 << 400;
    QTest::newRow("title2") << QByteArray("title2") << 22 << 28 << 400;
    QTest::newRow("headline") << QByteArray("headline") << 17 << 22 << 600;
    QTest::newRow("body") << QByteArray("body") << 17 << 22 << 400;
    QTest::newRow("subheadline") << QByteArray("subheadline") << 15 << 20 << 400;
    QTest::newRow("footnote") << QByteArray("footnote") << 13 << 18 << 400;
    QTest::newRow("caption") << QByteArray("caption") << 12 << 16 << 400;
}

void LookTest::textStyles()
{
    QFETCH(QByteArray, name);
    QFETCH(int, size);
    QFETCH(int, line);
    QFETCH(int, weight);
    TestScreen screen("Column { AppText { objectName: 'plain'; text: 'Ñandú'; textStyle: Theme." + name +
                      " } AppText { objectName: 'bold'; text: 'Ñandú'; bold: true; textStyle: Theme." + name +
                      " } }");
    const QQuickItem *const plain = screen.find(u"plain"_s);
    QCOMPARE(plain->property("font").value<QFont>().pixelSize(), size);
    QCOMPARE(plain->property("font").value<QFont>().weight(), weight);
    QCOMPARE(plain->property("font").value<QFont>().family(), u"Inter"_s);
    // Where the face is higher than the line, it stands out by less than a point.
    QVERIFY(plain->height() >= line && plain->height() <= line + 1);
    QCOMPARE(screen.find(u"bold"_s)->property("font").value<QFont>().weight(), 700);
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

void LookTest::everySymbolIsDrawnInItsColour_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : {"shippingbox", "doc.text", "car", "person", "info.circle", "person.circle.fill",
                             "rectangle.portrait.and.arrow.right", "chevron.left"})
        QTest::newRow(name) << QByteArray(name);
}

void LookTest::everySymbolIsDrawnInItsColour()
{
    QFETCH(QByteArray, name);
    TestScreen screen("Rectangle { color: 'white'; Symbol { anchors.fill: parent; color: '#FF0000'; name: '" + name +
                          "' } }",
                      {96, 96});
    const QImage drawn = screen.picture();
    int inked = 0;
    for (int y = 0; y < 96; ++y) {
        for (int x = 0; x < 96; ++x) {
            const QColor pixel = drawn.pixelColor(x, y);
            QVERIFY(pixel.red() > 250);
            inked += pixel.green() < 128;
        }
    }
    QVERIFY2(inked > 96 * 96 / 50, qPrintable(QString::number(inked)));
    TestScreen unknown("Rectangle { color: 'white'; Symbol { anchors.fill: parent; name: 'unknown' } }", {96, 96});
    QCOMPARE(unknown.picture().pixelColor(48, 48), QColor(Qt::white));
}

MAROVENDA_TEST_MAIN(LookTest)
#include "tst_Look.moc"
