#include "MarovendaTest.h"
#include "Scenes.h"
#include "ServiceTest.h"

#include <QDir>
#include <QGuiApplication>
#include <QStyleHints>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Variant {
    QByteArray name;
    QSize size;
    double textScale;
};

const QList<Variant> variants{
    {"390", {390, 844}, 1},
    {"320", {320, 480}, 1},
    {"900", {900, 800}, 1},
    {"text200", {390, 844}, 2},
};

/// What the software renderer may do otherwise: a rounding in the last bits, on a few pixels.
constexpr int levels = 10;
constexpr double share = 0.001;

/// A picture of what differs, in red over a pale copy; null when nothing does.
QImage difference(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return one;
    QImage shown = one.convertToFormat(QImage::Format_RGB32);
    qint64 count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            const int worst =
                std::max({qAbs(a.red() - b.red()), qAbs(a.green() - b.green()), qAbs(a.blue() - b.blue())});
            count += worst > levels;
            const int pale = 200 + qGray(a.rgb()) * 55 / 255;
            shown.setPixelColor(x, y, worst > levels ? QColor(Qt::red) : QColor(pale, pale, pale));
        }
    }
    return count > share * one.width() * one.height() ? shown : QImage();
}

/// Texts that reach out of their items, which is where they are cut or run into others.
QStringList overflowing(const QQuickItem *item, const QRectF &window)
{
    QStringList all;
    if (!item->isVisible() || item->objectName() == u"tiles"_s)
        return all;
    if (item->inherits("QQuickText")) {
        const QRectF box = TestScreen::box(item);
        const bool wide = item->property("contentWidth").toReal() > item->width() + 1;
        const bool outside = box.left() < -0.5 || box.right() > window.right() + 0.5;
        if (wide || outside)
            all.append(item->property("text").toString());
    }
    for (const QQuickItem *child : item->childItems())
        all += overflowing(child, window);
    return all;
}

} // namespace

class PicturesTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QGuiApplication::styleHints()->setCursorFlashTime(0); }
    void everyScreenLooksAsItsReference_data();
    void everyScreenLooksAsItsReference();
    void everyReferenceHasItsScene();
};

void PicturesTest::everyScreenLooksAsItsReference_data()
{
    const auto row = columns<QByteArray, int>("scene", "variant");
    for (const Scene &scene : scenes()) {
        for (int variant = 0; variant < variants.size(); ++variant)
            row(scene.name + "-" + variants[variant].name, scene.name, variant);
    }
}

void PicturesTest::everyScreenLooksAsItsReference()
{
    QFETCH(QByteArray, scene);
    QFETCH(int, variant);
    const Variant &at = variants[variant];
    QFont font;
    font.setPointSizeF(9 * at.textScale);
    QGuiApplication::setFont(font);

    const auto screen = staged(scene, server, at.size);
    QVERIFY(screen);
    QTest::mouseMove(&screen->window(), QPoint(1, 1));
    screen->settle();
    const QImage picture = screen->picture();
    const QStringList cut = overflowing(screen->root(), QRectF(QPointF(), QSizeF(at.size)));
    QVERIFY2(cut.isEmpty(), qUtf8Printable(cut.join(u" | "_s)));

    const QString name = QString::fromUtf8(QTest::currentDataTag()) + u".png"_s;
    const QString reference = QDir(QStringLiteral(REFERENCES)).filePath(name);
    if (qEnvironmentVariableIsSet("MAROVENDA_RENEW_PICTURES")) {
        QDir().mkpath(QStringLiteral(REFERENCES));
        const QImage before(reference);
        if (before.isNull() || !difference(picture, before).isNull())
            QVERIFY(picture.convertToFormat(QImage::Format_RGB888).save(reference));
        return;
    }
    const QImage expected(reference);
    QVERIFY2(!expected.isNull(), "There is no reference picture; see tests/pictures/renew");
    const QImage differs = difference(picture, expected);
    if (!differs.isNull()) {
        QDir().mkpath(QStringLiteral(DIFFERENCES));
        const QString path = QDir(QStringLiteral(DIFFERENCES)).filePath(name);
        differs.save(path);
        picture.save(path.chopped(4) + u"-now.png"_s);
        QFAIL(qUtf8Printable(u"It looks different: "_s + path));
    }
}

void PicturesTest::everyReferenceHasItsScene()
{
    QStringList names;
    for (const Scene &scene : scenes()) {
        for (const Variant &variant : variants)
            names.append(QString::fromUtf8(scene.name + "-" + variant.name + ".png"));
    }
    QStringList files = QDir(QStringLiteral(REFERENCES)).entryList({u"*.png"_s});
    std::sort(names.begin(), names.end());
    std::sort(files.begin(), files.end());
    QCOMPARE(files, names);
}

MAROVENDA_TEST(PicturesTest)
#include "tst_Pictures.moc"
