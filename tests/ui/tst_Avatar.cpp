#include "MarovendaTest.h"
#include "PhotoView.h"
#include "TestScreen.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class AvatarTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void photoFillsACircle_data();
    void photoFillsACircle();
    void whatIsNoPhotoShowsThePlaceholder();
    void lateDecodeOfTheFormerPhotoDoesNotShow_data();
    void lateDecodeOfTheFormerPhotoDoesNotShow();

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
    QTest::newRow("wide") << QByteArray("png") << QSize(400, 100);
    QTest::newRow("tall") << QByteArray("jpeg") << QSize(60, 300);
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

void AvatarTest::whatIsNoPhotoShowsThePlaceholder()
{
    TestScreen screen(avatar(), {100, 100});
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

MAROVENDA_TEST_MAIN(AvatarTest)
#include "tst_Avatar.moc"
