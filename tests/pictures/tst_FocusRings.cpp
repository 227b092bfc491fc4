#include "MarovendaTest.h"
#include "Scenes.h"
#include "ServiceTest.h"

#include <QDir>
#include <QGuiApplication>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

/// Relative luminance (https://www.w3.org/TR/WCAG21/#dfn-relative-luminance).
double luminance(QRgb colour)
{
    const auto linear = [](int channel) {
        const double c = channel / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrast(QRgb one, QRgb other)
{
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

/// Whether a line of at least 3 : 1 against what it is drawn on goes around `middle` without a gap: the
/// way from the middle to the picture's edge, in steps to the four neighbours, is barred.
bool isClosedRing(const QImage &without, const QImage &with, QPoint middle)
{
    const auto isLine = [&](QPoint at) {
        const QRgb before = without.pixel(at);
        const QRgb now = with.pixel(at);
        return before != now && contrast(before, now) >= 3;
    };
    QImage seen(with.size(), QImage::Format_Grayscale8);
    seen.fill(0);
    QList<QPoint> open{middle};
    while (!open.isEmpty()) {
        const QPoint at = open.takeLast();
        if (!seen.rect().contains(at))
            return false;
        uchar &visited = seen.scanLine(at.y())[at.x()];
        if (visited || isLine(at))
            continue;
        visited = 1;
        for (const QPoint step : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)})
            open.append(at + step);
    }
    return true;
}

} // namespace

class FocusRingsTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void everyStopOfTheTabKeyHasAClosedRing_data();
    void everyStopOfTheTabKeyHasAClosedRing();
    void ringFollowsTheCornersOfItsStop_data();
    void ringFollowsTheCornersOfItsStop();

private:
    static void check(TestScreen &screen);
};

void FocusRingsTest::everyStopOfTheTabKeyHasAClosedRing_data()
{
    const auto row = columns<QByteArray, double>("scene", "textScale");
    // One state of each screen; the others have no more stops.
    for (const char *const name : {"ingreso", "recuperar", "registro", "perfil", "fotos", "panel", "cotizar", "autos",
                                   "casillero", "paquetes", "cotizaciones-vacio", "creditos"}) {
        const QByteArray scene(name);
        row(scene + "-390", scene, 1.0);
        row(scene + "-text200", scene, 2.0);
    }
}

void FocusRingsTest::everyStopOfTheTabKeyHasAClosedRing()
{
    QFETCH(QByteArray, scene);
    QFETCH(double, textScale);
    QFont font;
    font.setPointSizeF(9 * textScale);
    QGuiApplication::setFont(font);
    const auto screen = staged(scene, server);
    QVERIFY(screen);

    QList<const QQuickItem *> stops;
    for (int i = 0; i < 30; ++i) {
        screen->key(Qt::Key_Tab);
        const QQuickItem *const item = screen->window().activeFocusItem();
        if (stops.contains(item))
            break;
        stops.append(item);
        check(*screen);
        // In a list and among photos the arrows go on.
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_End}) {
            if (!item->inherits("QQuickItemView"))
                break;
            screen->key(key);
            check(*screen);
        }
        if (QTest::currentTestFailed())
            return;
    }
    QVERIFY(!stops.isEmpty());
}

void FocusRingsTest::ringFollowsTheCornersOfItsStop_data()
{
    const auto row = columns<QByteArray, QString, double>("scene", "stop", "radius");
    row("photo", "perfil", u"Cambiar foto"_s, 53.0);
    row("segment", "cotizar", u"Aéreo"_s, 12.0);
    row("list", "paquetes", u"Mis Paquetes"_s, 10.0);
}

void FocusRingsTest::ringFollowsTheCornersOfItsStop()
{
    QFETCH(QByteArray, scene);
    QFETCH(QString, stop);
    const auto screen = staged(scene, server);
    QVERIFY(screen);
    screen->key(Qt::Key_Tab);
    for (int i = 0; i < 30 && screen->focusedName() != stop; ++i)
        screen->key(Qt::Key_Tab);
    QList<QQuickItem *> rings = screen->all(u"focusRing"_s);
    rings.removeIf([](const QQuickItem *ring) { return !ring->isVisible(); });
    QCOMPARE(rings.size(), 1);
    QTEST(rings.first()->property("radius").toDouble(), "radius");
}

void FocusRingsTest::check(TestScreen &screen)
{
    QImage with;
    const auto isSeen = [&] {
        QList<QQuickItem *> rings = screen.all(u"focusRing"_s);
        rings.removeIf([](const QQuickItem *ring) { return !ring->isVisible(); });
        with = screen.picture();
        if (rings.size() != 1)
            return false;
        rings.first()->setOpacity(0);
        const QImage without = screen.picture();
        rings.first()->setOpacity(1);
        return isClosedRing(without, with, TestScreen::box(rings.first()).center().toPoint());
    };
    // A list may have to scroll first.
    const bool seen = QTest::qWaitFor(isSeen, 3000);
    if (!seen) {
        QDir().mkpath(QStringLiteral(DIFFERENCES));
        with.save(QStringLiteral(DIFFERENCES "/ring-%1.png").arg(QString::fromUtf8(QTest::currentDataTag())));
    }
    QVERIFY2(seen, screen.focusedName().toUtf8() +
                       ": it has no ring, or one with a gap or hard to see; see picture-differences");
}

MAROVENDA_TEST(FocusRingsTest)
#include "tst_FocusRings.moc"
