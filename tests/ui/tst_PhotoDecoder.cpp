#include "MarovendaTest.h"
#include "PhotoDecoder.h"
#include "PhotoView.h"
#include "PngDecoder.h"
#include "TestScreen.h"

#include <QBuffer>
#include <QColorSpace>
#include <QHash>
#include <QImageWriter>
#include <QPainter>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QtEndian>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// A view outside of any window, which begins to decode when it is told to.
class LoneView : public PhotoView {
public:
    LoneView() { setSize({20, 20}); }
    QColor middle() const { return paint(1).pixelColor(10, 10); }
    using PhotoView::textureKey;
};

} // namespace

/// What the decoder draws, its bounds and its silence, and what the avatar shows of it.
class PhotoDecoderTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void photoFillsACircle();
    void middleOfThePhotoShows();
    void circleHasASmoothEdge();
    void whatIsNoPhotoShowsThePlaceholder();
    void lateDecodeOfTheFormerPhotoDoesNotShow_data();
    void lateDecodeOfTheFormerPhotoDoesNotShow();
    void photoIsDecodedOnceForEachSize();
    void changedFileIsShown();
    void picturesBeyondTheBoundsAreRefused_data();
    void picturesBeyondTheBoundsAreRefused();
    void pngIsBoundedByItsMemory();
    void exifTurnsThePicture();
    void damagedPicturesAreSilent_data();
    void damagedPicturesAreSilent();
    void pngOfEveryDepthIsRead_data();
    void pngOfEveryDepthIsRead();
    void listedEndingsAreThoseOfTheFormatsThatAreRead();

private:
    static QByteArray encoded(const QImage &image, const char *format, bool progressive = false)
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QImageWriter writer(&buffer, format);
        writer.setProgressiveScanWrite(progressive);
        if (!writer.write(image))
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
    /// One pixel on a canvas of this size.
    static QByteArray gif(quint16 width, quint16 height)
    {
        QByteArray bytes =
            QByteArray::fromHex("47494638396101000100800000ff00000000002c00000000010001000002024401003b");
        qToLittleEndian(width, bytes.data() + 6);
        qToLittleEndian(height, bytes.data() + 8);
        return bytes;
    }
    /// With another size in its frame's header.
    static QByteArray resized(QByteArray jpeg, quint16 width, quint16 height)
    {
        const qsizetype frame = std::max(jpeg.indexOf("\xFF\xC2"), jpeg.indexOf("\xFF\xC0"));
        qToBigEndian(height, jpeg.data() + frame + 5);
        qToBigEndian(width, jpeg.data() + frame + 7);
        return jpeg;
    }
};

void PhotoDecoderTest::photoFillsACircle()
{
    for (const QSize size : {QSize(400, 100), QSize(60, 300), QSize(2, 2)}) {
        const QImage shown = decodePhoto(encoded(halves(size.width(), size.height()), "png"), 100);
        QCOMPARE(shown.pixelColor(2, 50), QColor(Qt::red));
        QCOMPARE(shown.pixelColor(97, 50), QColor(Qt::blue));
        for (const QPoint corner : {QPoint(3, 3), QPoint(96, 3), QPoint(3, 96), QPoint(96, 96)})
            QCOMPARE(shown.pixelColor(corner), QColor(Qt::transparent));
    }
}

void PhotoDecoderTest::middleOfThePhotoShows()
{
    for (const QSize size : {QSize(50, 150), QSize(150, 50)}) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::red);
        QPainter(&image).fillRect((size.width() - 50) / 2, (size.height() - 50) / 2, 50, 50, Qt::green);
        const QImage shown = decodePhoto(encoded(image, "png"), 50, PhotoShape::Square);
        for (const QPoint corner : {QPoint(0, 0), QPoint(49, 0), QPoint(0, 49), QPoint(49, 49)})
            QCOMPARE(shown.pixelColor(corner), QColor(Qt::green));
    }
}

void PhotoDecoderTest::circleHasASmoothEdge()
{
    QImage image(50, 50, QImage::Format_RGB32);
    image.fill(Qt::white);
    const QImage shown = decodePhoto(encoded(image, "png"), 50);
    int soft = 0;
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 50; ++x) {
            const QColor color = shown.pixelColor(x, y);
            soft += color.alpha() > 0 && color.alpha() < 255;
            QVERIFY(color.alpha() == 0 || color.lightness() > 250);
        }
    }
    QVERIFY(soft > 50);
}

void PhotoDecoderTest::whatIsNoPhotoShowsThePlaceholder()
{
    TestScreen screen("Avatar { width: 100; height: 100 }", {100, 100});
    const QByteArray photo = encoded(halves(50, 50), "png");
    for (const QByteArray &bytes : {QByteArray(), QByteArray("no photo"), photo.first(40)}) {
        screen.root()->setProperty("photo", photo);
        QTRY_VERIFY(screen.root()->property("decoded").toBool());
        screen.root()->setProperty("photo", bytes);
        QTRY_VERIFY(!screen.root()->property("decoded").toBool());
        const QColor ink = screen.picture().pixelColor(50, 4);
        QVERIFY2(qAbs(ink.red() - 0x8E) < 12, qUtf8Printable(ink.name()));
    }
}

void PhotoDecoderTest::lateDecodeOfTheFormerPhotoDoesNotShow_data()
{
    QTest::addColumn<bool>("files");
    QTest::newRow("photos") << false;
    QTest::newRow("files") << true;
}

void PhotoDecoderTest::lateDecodeOfTheFormerPhotoDoesNotShow()
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
    set(next, Qt::black);
    next.ensurePolished();
    QTRY_COMPARE(next.middle(), QColor(Qt::black));
    // A new photo leaves the old one on show until it is decoded; another file's picture would be a wrong one.
    QCOMPARE(view.decoded(), !files);
    if (!files)
        QCOMPARE(view.middle(), QColor(Qt::red));
    view.ensurePolished();
    QTRY_VERIFY(view.decoded() && view.middle() == QColor(Qt::blue));
    // What is decoded for a size that there is no more does not show either.
    set(view, Qt::green);
    view.ensurePolished();
    view.setSize({});
    view.ensurePolished();
    set(next, Qt::white);
    next.ensurePolished();
    QTRY_COMPARE(next.middle(), QColor(Qt::white));
    QVERIFY(!view.decoded());
}

void PhotoDecoderTest::photoIsDecodedOnceForEachSize()
{
    const auto shownAt = [](int size, const QByteArray &photo) {
        LoneView view;
        view.setSize({qreal(size), qreal(size)});
        view.setPhoto(photo);
        view.ensurePolished();
        [[maybe_unused]] const bool decoded = QTest::qWaitFor([&] { return view.decoded(); });
        return view.textureKey();
    };
    const QByteArray photo = encoded(halves(40, 40), "png");
    // The same bytes elsewhere in memory, as after the next start of a screen.
    const QByteArray copy(photo.constData(), photo.size());
    const QString first = shownAt(20, photo);
    const QString larger = shownAt(30, photo);
    QVERIFY(!first.isEmpty());
    QVERIFY(larger != first);
    QCOMPARE(shownAt(20, copy), first);
    QCOMPARE(shownAt(30, copy), larger);
    // Only the last ones are kept.
    for (int size = 1; size <= 4; ++size)
        shownAt(size, photo);
    QVERIFY(shownAt(20, photo) != first);
}

void PhotoDecoderTest::changedFileIsShown()
{
    const QTemporaryDir folder;
    TestScreen screen("PhotoView { square: true }", {20, 20});
    for (const QColor color : {QColor(Qt::red), QColor(Qt::blue)}) {
        QImage image(20, 20, QImage::Format_RGB32);
        image.fill(color);
        const QString path = folder.filePath(color.name());
        QVERIFY(image.save(path, "png"));
        screen.root()->setProperty("file", QUrl::fromLocalFile(path));
        QTRY_COMPARE(screen.picture().pixelColor(10, 10), color);
    }
}

void PhotoDecoderTest::picturesBeyondTheBoundsAreRefused_data()
{
    const auto row = columns<QByteArray, int, bool>("bytes", "diameter", "shown");
    const QByteArray small = encoded(halves(50, 50), "png");
    row("no diameter", small, 0, false);
    row("a diameter of 1", small, 1, true);
    // A header that claims 30,000 x 30,000 pixels in a file of a few bytes.
    QByteArray png = small;
    qToBigEndian<quint32>(30000, png.data() + 16);
    qToBigEndian<quint32>(30000, png.data() + 20);
    row("png, 30,000 x 30,000", png, 20, false);
    for (const QByteArray format : {"png", "jpeg", "bmp"}) {
        row(format + ", as wide as may be", encoded(halves(16384, 1), format), 20, true);
        row(format + ", one wider", encoded(halves(16385, 1), format), 20, false);
    }
    row("gif, as wide as may be", gif(16384, 1), 20, true);
    row("gif, one wider", gif(16385, 1), 20, false);
    // 12 bytes a pixel of the canvas.
    row("gif, 4,600 x 4,600", gif(4600, 4600), 20, true);
    row("gif, 4,700 x 4,700", gif(4700, 4700), 20, false);
    // A JPEG is first scaled to up to twice the wanted side, which needs 8 bytes a pixel; in one part it needs no
    // more.
    const QByteArray jpeg = encoded(halves(64, 64), "jpeg");
    row("jpeg, a wanted side of 2,800", resized(jpeg, 6000, 6000), 2800, true);
    row("jpeg, a wanted side of 2,900", resized(jpeg, 6000, 6000), 2900, false);
    row("jpeg, 12,000 x 9,000", resized(jpeg, 12000, 9000), 20, true);
    const QByteArray inParts = resized(encoded(halves(64, 64), "jpeg", true), 4000, 3000);
    row("jpeg in parts, 4,000 x 3,000", inParts, 20, true);
    row("jpeg in parts, 12,000 x 9,000", resized(inParts, 12000, 9000), 20, false);
    const qsizetype last = inParts.lastIndexOf("\xFF\xDA");
    const QByteArray scan = inParts.sliced(last).chopped(2);
    row("jpeg in 3,000 more parts", inParts.first(last) + scan.repeated(3000) + "\xFF\xD9", 20, false);
}

void PhotoDecoderTest::picturesBeyondTheBoundsAreRefused()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const int, diameter);
    QTEST(!decodePhoto(bytes, diameter).isNull(), "shown");
}

void PhotoDecoderTest::pngIsBoundedByItsMemory()
{
    const QByteArray png = encoded(halves(40, 30), "png");
    QVERIFY(!decodePng(png, 4 * 40 * 30).isNull());
    QVERIFY(decodePng(png, 4 * 40 * 30 - 1).isNull());
}

void PhotoDecoderTest::exifTurnsThePicture()
{
    QByteArray jpeg = encoded(halves(64, 40), "jpeg");
    // A quarter turn to the right: what was left is on top.
    const QByteArray exif("Exif\0\0MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0", 32);
    jpeg.insert(2, QByteArray("\xFF\xE1\x00\x22", 4) + exif);
    for (const QByteArray &notes : {QByteArray(), QByteArray("\xFF\xE1\x00\x05xmp", 7).repeated(1000)}) {
        QByteArray noted = jpeg;
        const QImage shown = decodePhoto(noted.insert(2, notes), 20, PhotoShape::Square);
        QVERIFY(shown.pixelColor(10, 3).red() > 200);
        QVERIFY(shown.pixelColor(10, 16).blue() > 200);
    }
}

void PhotoDecoderTest::damagedPicturesAreSilent_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray jpeg = encoded(halves(50, 50), "jpeg");
    QByteArray bad = encoded(halves(50, 50), "png");
    bad[20] = static_cast<char>(~bad[20]);
    QTest::newRow("png, checksum of the header") << bad;
    QTest::newRow("jpeg, more before its end") << jpeg.first(jpeg.size() - 2) + "more\xFF\xD9";
    QImage profiled = halves(20, 20);
    profiled.setColorSpace(QColorSpace::DisplayP3);
    QByteArray webp = encoded(profiled, "webp");
    webp[webp.indexOf("ICCP") + 140] = '\x7F';
    QTest::newRow("webp, profile") << webp;
    QImage large(12'000, 5'000, QImage::Format_Mono);
    large.fill(0);
    QTest::newRow("bmp, large") << encoded(large, "bmp");
}

void PhotoDecoderTest::damagedPicturesAreSilent()
{
    QFETCH(QByteArray, bytes);
    // What libraries write themselves, and what goes through Qt.
    QTemporaryFile caught;
    QVERIFY(caught.open());
    static QByteArray messages;
    messages.clear();
    const int stderrBefore = dup(STDERR_FILENO);
    dup2(caught.handle(), STDERR_FILENO);
    const QtMessageHandler handlerBefore = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { messages += text.toUtf8() + '\n'; });
    const QImage shown = decodePhoto(bytes, 20);
    qInstallMessageHandler(handlerBefore);
    dup2(stderrBefore, STDERR_FILENO);
    close(stderrBefore);
    caught.seek(0);
    QCOMPARE(caught.readAll(), QByteArray());
    QCOMPARE(messages, QByteArray());
}

void PhotoDecoderTest::pngOfEveryDepthIsRead_data()
{
    QTest::addColumn<int>("depth");
    for (const auto depth : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_RGB32,
                             QImage::Format_ARGB32, QImage::Format_RGBA64, QImage::Format_RGBX64})
        QTest::addRow("%d", int(depth)) << int(depth);
}

void PhotoDecoderTest::pngOfEveryDepthIsRead()
{
    QFETCH(int, depth);
    const QImage image = halves(40, 40).convertToFormat(QImage::Format(depth), {qRgb(255, 0, 0), qRgb(0, 0, 255)});
    const QImage shown = decodePhoto(encoded(image, "png"), 40, PhotoShape::Square);
    QCOMPARE(shown.pixelColor(5, 5), QColor(Qt::red));
    QCOMPARE(shown.pixelColor(35, 35), QColor(Qt::blue));
    // Half as opaque where there is opacity.
    if (image.hasAlphaChannel()) {
        QImage clear(40, 40, QImage::Format_ARGB32);
        clear.fill(QColor(255, 0, 0, 128));
        const QByteArray bytes = encoded(clear.convertToFormat(QImage::Format(depth)), "png");
        QCOMPARE(decodePhoto(bytes, 40, PhotoShape::Square).pixelColor(20, 20), QColor(255, 0, 0, 128));
    }
}

void PhotoDecoderTest::listedEndingsAreThoseOfTheFormatsThatAreRead()
{
    // Every format that Qt can write here, in a file of its ending, and the one that it cannot.
    QHash<QString, QByteArray> files{{u"gif"_s, gif(1, 1)}};
    for (const QByteArray &format : QImageWriter::supportedImageFormats())
        files[QString::fromLatin1(format)] = encoded(halves(32, 32), format.constData());
    QVERIFY(files.size() > 6);
    QStringList read;
    for (const auto &[ending, bytes] : files.asKeyValueRange()) {
        if (!decodePhoto(bytes, 20).isNull())
            read += ending;
    }
    read.sort();
    QStringList listed = photoEndings();
    listed.sort();
    QCOMPARE(listed, read);
}

MAROVENDA_TEST(PhotoDecoderTest)
#include "tst_PhotoDecoder.moc"
