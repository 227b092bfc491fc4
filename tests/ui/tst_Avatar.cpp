#include "MarovendaTest.h"
#include "PhotoDecoder.h"
#include "PhotoView.h"
#include "TestScreen.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>

using namespace Qt::StringLiterals;

class AvatarTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void photoFillsACircle_data();
    void photoFillsACircle();
    void picturesOfEveryDepthKeepTheirColours_data();
    void picturesOfEveryDepthKeepTheirColours();
    void whatIsNoPhotoShowsThePlaceholder_data();
    void whatIsNoPhotoShowsThePlaceholder();
    void newPhotoReplacesTheOldOne();
    void lateDecodeOfTheFormerPhotoDoesNotShow_data();
    void lateDecodeOfTheFormerPhotoDoesNotShow();
    void textChunksOfAPictureAreNotRead();
    void picturesBeyondTheBoundsAreRefused();
    void damagedPicturesNeverHurt();

private:
    static QByteArray encoded(const QImage &image, const char *format)
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        if (!image.save(&buffer, format, 95))
            qFatal("cannot write %s", format);
        return bytes;
    }
    /// Left half red, right half blue.
    static QImage halves(int width, int height)
    {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::blue);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width / 2; ++x)
                image.setPixelColor(x, y, Qt::red);
        }
        return image;
    }
    static QByteArray avatar() { return "Avatar { objectName: 'avatar'; width: 100; height: 100 }"; }
};

namespace {

/// A view outside of any window, which begins to decode when it is told to.
class LoneView : public PhotoView {
public:
    LoneView() { setSize({20, 20}); }
    QColor middle() const { return paint(1).pixelColor(10, 10); }
};

} // namespace

void AvatarTest::photoFillsACircle_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QSize>("size");
    for (const char *format : {"png", "jpeg", "webp", "bmp"}) {
        QTest::addRow("%s wide", format) << QByteArray(format) << QSize(400, 100);
        QTest::addRow("%s tall", format) << QByteArray(format) << QSize(60, 300);
    }
    QTest::newRow("tiny") << QByteArray("png") << QSize(2, 2);
}

void AvatarTest::photoFillsACircle()
{
    QFETCH(QByteArray, format);
    QFETCH(QSize, size);
    TestScreen screen(avatar(), {100, 100});
    screen.root()->setProperty("photo", encoded(halves(size.width(), size.height()), format.constData()));
    QTRY_VERIFY(screen.root()->property("decoded").toBool());
    const QImage drawn = screen.picture();
    QVERIFY(drawn.pixelColor(15, 50).red() > 200 && drawn.pixelColor(15, 50).blue() < 60);
    QVERIFY(drawn.pixelColor(85, 50).blue() > 200 && drawn.pixelColor(85, 50).red() < 60);
    for (const QPoint corner : {QPoint(3, 3), QPoint(96, 3), QPoint(3, 96), QPoint(96, 96)})
        QVERIFY(drawn.pixelColor(corner).green() > 200);
}

void AvatarTest::picturesOfEveryDepthKeepTheirColours_data()
{
    QTest::addColumn<int>("depth");
    for (const auto depth : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_RGB32,
                             QImage::Format_ARGB32, QImage::Format_RGBX64})
        QTest::addRow("%d", int(depth)) << int(depth);
}

void AvatarTest::picturesOfEveryDepthKeepTheirColours()
{
    QFETCH(int, depth);
    QImage red(40, 30, QImage::Format_RGB32);
    red.fill(Qt::red);
    for (const QList<QRgb> &palette : {QList<QRgb>{qRgb(255, 0, 0)}, QList<QRgb>{qRgb(255, 0, 0), qRgb(0, 0, 255)}}) {
        const QImage image = red.convertToFormat(QImage::Format(depth), palette);
        const QImage shown = decodePhoto(encoded(image, "png"), 20);
        for (int y = 6; y < 14; ++y) {
            for (int x = 6; x < 14; ++x)
                QCOMPARE(shown.pixelColor(x, y), QColor(Qt::red));
        }
    }
}

void AvatarTest::whatIsNoPhotoShowsThePlaceholder_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("text") << QByteArray("not a picture");
    QTest::newRow("svg") << QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
    QTest::newRow("half a signature") << QByteArray("\x89PNG");
    QTest::newRow("signature only") << QByteArray("\xFF\xD8\xFF\xE0");
    QTest::newRow("truncated") << encoded(halves(50, 50), "png").first(40);
}

void AvatarTest::whatIsNoPhotoShowsThePlaceholder()
{
    QFETCH(QByteArray, bytes);
    TestScreen screen(avatar(), {100, 100});
    screen.root()->setProperty("photo", encoded(halves(50, 50), "png"));
    QTRY_VERIFY(screen.root()->property("decoded").toBool());
    screen.root()->setProperty("photo", bytes);
    QTRY_VERIFY(!screen.root()->property("decoded").toBool());
    const QColor ink = screen.picture().pixelColor(50, 4);
    QVERIFY2(qAbs(ink.red() - 0x8E) < 12, qUtf8Printable(ink.name()));
}

void AvatarTest::newPhotoReplacesTheOldOne()
{
    TestScreen screen(avatar(), {100, 100});
    QImage green(20, 20, QImage::Format_RGB32);
    green.fill(Qt::green);
    screen.root()->setProperty("photo", encoded(halves(50, 50), "png"));
    screen.root()->setProperty("photo", encoded(green, "png"));
    QTRY_VERIFY(screen.picture().pixelColor(50, 50).green() > 200);
    QTRY_COMPARE(screen.picture().pixelColor(20, 50), QColor(Qt::green));
}

void AvatarTest::lateDecodeOfTheFormerPhotoDoesNotShow_data()
{
    QTest::addColumn<bool>("files");
    QTest::newRow("photos") << false;
    QTest::newRow("files") << true;
}

void AvatarTest::lateDecodeOfTheFormerPhotoDoesNotShow()
{
    QFETCH(bool, files);
    const QTemporaryDir folder;
    const auto set = [&](LoneView &view, const QColor &color) {
        QImage image(20, 20, QImage::Format_RGB32);
        image.fill(color);
        const QString path = folder.filePath(color.name());
        QVERIFY(image.save(path, "png"));
        if (files)
            view.setFile(QUrl::fromLocalFile(path));
        else
            view.setPhoto(encoded(image, "png"));
    };
    LoneView view;
    set(view, Qt::red);
    view.ensurePolished();
    QTRY_VERIFY(view.decoded());
    set(view, Qt::green);
    view.ensurePolished();
    set(view, Qt::blue);
    // What is decoded after the green one shows after it.
    LoneView next;
    set(next, Qt::red);
    next.ensurePolished();
    QTRY_VERIFY(next.decoded());
    // A new photo leaves the old one on show until it is decoded; another file's picture would be a wrong one.
    QCOMPARE(view.decoded(), !files);
    if (!files)
        QCOMPARE(view.middle(), QColor(Qt::red));
    view.ensurePolished();
    QTRY_VERIFY(view.decoded() && view.middle() == QColor(Qt::blue));
}

void AvatarTest::textChunksOfAPictureAreNotRead()
{
    // A picture with a text chunk whose compressed text claims to be there but is not: read, it would fail or cost.
    QByteArray png = encoded(halves(50, 50), "png");
    const QByteArray text = "Comment" + QByteArray(1, '\0') + QByteArray(1, '\0') + QByteArray(100'000, 'z');
    QByteArray chunk(4, '\0');
    qToBigEndian<quint32>(static_cast<quint32>(text.size()), chunk.data());
    chunk += "zTXt" + text + QByteArray(4, '\0');
    png.insert(33, chunk); // after the header chunk
    QVERIFY(!decodePhoto(png, 20).isNull());
}

void AvatarTest::picturesBeyondTheBoundsAreRefused()
{
    // A header that claims 30,000 x 30,000 pixels in a file of a few bytes.
    QByteArray png = encoded(halves(50, 50), "png");
    qToBigEndian<quint32>(30000, png.data() + 16);
    qToBigEndian<quint32>(30000, png.data() + 20);
    QVERIFY(decodePhoto(png, 20).isNull());
    QVERIFY(decodePhoto(encoded(halves(50, 50), "png"), 0).isNull());
    QVERIFY(decodePhoto(encoded(halves(16385, 1), "png"), 20).isNull());
}

void AvatarTest::damagedPicturesNeverHurt()
{
    for (const char *format : {"png", "jpeg", "webp", "bmp"}) {
        const QByteArray good = encoded(halves(40, 30), format);
        for (qsizetype at = 0; at < good.size(); at += std::max<qsizetype>(1, good.size() / 150)) {
            QByteArray bad = good;
            bad[at] = static_cast<char>(~bad[at]);
            const QImage flipped = decodePhoto(bad, 16);
            QVERIFY(flipped.isNull() || flipped.size() == QSize(16, 16));
            const QImage cut = decodePhoto(good.first(at), 16);
            QVERIFY(cut.isNull() || cut.size() == QSize(16, 16));
        }
    }
}

MAROVENDA_TEST_MAIN(AvatarTest)
#include "tst_Avatar.moc"
