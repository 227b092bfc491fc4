#include "ContinuousRectangle.h"
#include "TestScreen.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSGRendererInterface>
#include <QTest>

using namespace Qt::StringLiterals;

/// The shapes as a backend draws them at a device pixel ratio, both given by on_display.py.
class ShapesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void backendIsTheOneThatWasAskedFor();
    void drawnShapeFollowsTheOutline_data();
    void drawnShapeFollowsTheOutline();
    void translucentShapeIsEvenAcrossItsPieces();

private:
    static int ratio() { return qEnvironmentVariableIntValue("MAROVENDA_RATIO"); }
};

void ShapesTest::backendIsTheOneThatWasAskedFor()
{
    TestScreen screen("Item {}", {100, 100});
    const auto api = screen.window().rendererInterface()->graphicsApi();
    QCOMPARE(api, qEnvironmentVariable("MAROVENDA_BACKEND") == u"opengl"_s ? QSGRendererInterface::OpenGL
                                                                           : QSGRendererInterface::Software);
    QCOMPARE(screen.window().effectiveDevicePixelRatio(), ratio());
}

void ShapesTest::drawnShapeFollowsTheOutline_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("radius");
    QTest::addColumn<double>("border");
    QTest::newRow("field") << QSize(326, 54) << 16.0 << 1.0;
    QTest::newRow("button") << QSize(326, 54) << 20.0 << 0.0;
    QTest::newRow("card") << QSize(342, 200) << 24.0 << 1.0;
    QTest::newRow("tile") << QSize(56, 56) << 18.0 << 0.0;
    QTest::newRow("small") << QSize(9, 9) << 18.0 << 0.0;
    QTest::newRow("odd") << QSize(101, 53) << 14.0 << 1.0;
    QTest::newRow("thick") << QSize(100, 60) << 14.0 << 3.0;
}

void ShapesTest::drawnShapeFollowsTheOutline()
{
    QFETCH(QSize, size);
    QFETCH(double, radius);
    QFETCH(double, border);
    const QByteArray qml =
        "Rectangle { color: 'white'; ContinuousRectangle { x: 10; y: 10; width: " + QByteArray::number(size.width()) +
        "; height: " + QByteArray::number(size.height()) + "; radius: " + QByteArray::number(radius) +
        "; color: '#007AFF'; borderColor: '#000000'; borderWidth: " + QByteArray::number(border) + " } }";
    TestScreen screen(qml, {size.width() + 20, size.height() + 20});
    const QImage drawn = screen.picture().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(drawn.width(), (size.width() + 20) * ratio());

    QImage wanted(drawn.size(), QImage::Format_RGB32);
    wanted.fill(Qt::white);
    QPainter painter(&wanted);
    painter.scale(ratio(), ratio());
    painter.setRenderHint(QPainter::Antialiasing);
    const QPainterPath path = ContinuousRectangle::outline(QRectF(QPointF(10, 10), QSizeF(size)), radius);
    painter.fillPath(path, QColor(0x00, 0x7A, 0xFF));
    if (border > 0)
        painter.strokePath(path, QPen(Qt::black, border, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    painter.end();

    int worst = 0;
    for (int y = 0; y < wanted.height(); ++y) {
        for (int x = 0; x < wanted.width(); ++x) {
            const QColor a = drawn.pixelColor(x, y);
            const QColor b = wanted.pixelColor(x, y);
            worst =
                std::max({worst, qAbs(a.red() - b.red()), qAbs(a.green() - b.green()), qAbs(a.blue() - b.blue())});
        }
    }
    QVERIFY2(worst <= 8, qPrintable(u"differs by %1 levels"_s.arg(worst)));
}

void ShapesTest::translucentShapeIsEvenAcrossItsPieces()
{
    TestScreen screen(
        "Rectangle { color: 'white'; ContinuousRectangle { x: 10; y: 10; width: 180; height: 80; radius: 16;"
        " color: '#80000000' } }",
        {200, 100});
    const QImage drawn = screen.picture();
    for (int y = 40 * ratio(); y < 60 * ratio(); ++y) {
        for (int x = 12 * ratio(); x < 188 * ratio(); ++x)
            QVERIFY(qAbs(drawn.pixelColor(x, y).red() - 127) <= 1);
    }
}

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    ShapesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Shapes.moc"
