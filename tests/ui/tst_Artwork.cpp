#include "Artwork.h"
#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class ArtworkTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void picturesOfAllRatios_data();
    void picturesOfAllRatios();
    void unknownNameDrawsNothing();
    void isWholeWithinTheItem();

private:
    /// What is drawn of a picture, on red.
    static QImage drawn(const QByteArray &properties)
    {
        TestScreen screen("Rectangle { color: 'red'; Artwork { anchors.fill: parent; " + properties + " } }",
                          {200, 100});
        return screen.picture();
    }
    static bool isBare(QRgb pixel) { return pixel == qRgb(255, 0, 0); }
};

void ArtworkTest::picturesOfAllRatios_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("width");
    QTest::newRow("background") << u"background"_s << 390;
    QTest::newRow("logo") << u"marovenda_logo"_s << 160;
    QTest::newRow("maker") << u"corvandel"_s << 140;
}

void ArtworkTest::picturesOfAllRatios()
{
    QFETCH(QString, name);
    QFETCH(int, width);
    for (const int ratio : {1, 2, 3})
        QCOMPARE(Artwork::picture(name, ratio).width(), ratio * width);
}

void ArtworkTest::unknownNameDrawsNothing()
{
    QVERIFY(Artwork::picture(u"no such picture"_s, 1).isNull());
    const QImage picture = drawn("name: 'no such picture'");
    QVERIFY(isBare(picture.pixel(100, 50)));
}

void ArtworkTest::isWholeWithinTheItem()
{
    // A square of 100 in the middle of 200 x 100.
    const QImage picture = drawn("name: 'corvandel'");
    QVERIFY(isBare(picture.pixel(45, 50)));
    QVERIFY(isBare(picture.pixel(155, 50)));
    bool something = false;
    for (int x = 50; x < 150; ++x)
        something = something || !isBare(picture.pixel(x, 50));
    QVERIFY(something);
}

MAROVENDA_TEST_MAIN(ArtworkTest)
#include "tst_Artwork.moc"
