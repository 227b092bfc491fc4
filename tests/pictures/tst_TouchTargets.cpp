#include "MarovendaTest.h"
#include "Scenes.h"
#include "ServiceTest.h"

#include <QGuiApplication>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

/// What fingers and a mouse's other button do, on every screen in its states.
class TouchTargetsTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void everyControlIsLargeEnough_data();
    void everyControlIsLargeEnough();
    void rightClickInAFieldOpensNothing_data();
    void rightClickInAFieldOpensNothing();
};

namespace {

/// A finger's size (https://www.w3.org/TR/WCAG21/#target-size).
constexpr double minimum = 44;

/// What is pressed or typed into, below an item.
QList<QQuickItem *> controls(QQuickItem *from)
{
    QList<QQuickItem *> all;
    if (!from->isVisible() || !from->isEnabled())
        return all;
    const auto handlesTaps = [](const QObject *each) {
        return each->inherits("QQuickTapHandler") && each->property("enabled").toBool() &&
               each->property("acceptedButtons").value<Qt::MouseButtons>().testFlag(Qt::LeftButton);
    };
    if (from->inherits("QQuickAbstractButton") || from->inherits("QQuickTextInput") ||
        std::ranges::any_of(from->children(), handlesTaps))
        all.append(from);
    for (QQuickItem *const child : from->childItems())
        all += controls(child);
    return all;
}

/// Whether a square of the minimum size around the middle of an item belongs to it.
bool isLargeEnough(const QQuickItem *item)
{
    const QPointF middle(item->width() / 2, item->height() / 2);
    const double reach = minimum / 2 - 0.01;
    for (const QPointF corner :
         {QPointF(-reach, -reach), QPointF(reach, -reach), QPointF(-reach, reach), QPointF(reach, reach)}) {
        if (!item->contains(middle + corner))
            return false;
    }
    return true;
}

} // namespace

void TouchTargetsTest::everyControlIsLargeEnough_data()
{
    const auto row = columns<QByteArray, double>("scene", "textScale");
    for (const double textScale : {0.8, 1.0}) {
        for (const Scene &scene : scenes())
            row(scene.name + "-" + QByteArray::number(100 * textScale), scene.name, textScale);
    }
}

void TouchTargetsTest::everyControlIsLargeEnough()
{
    QFETCH(QByteArray, scene);
    QFETCH(double, textScale);
    const TextScale scale(textScale);
    const auto screen = staged(scene, server);
    QVERIFY(screen);
    const QList<QQuickItem *> found = controls(screen->root());
    QVERIFY(!found.isEmpty() || scene == "inicio");
    QStringList small;
    for (const QQuickItem *const control : found) {
        if (!isLargeEnough(control))
            small.append(u"%1 «%2» %3 x %4"_s
                             .arg(QString::fromLatin1(control->metaObject()->className()),
                                  control->property("text").toString())
                             .arg(control->width())
                             .arg(control->height()));
    }
    QVERIFY2(small.isEmpty(), qUtf8Printable(small.join(u" | "_s)));
}

void TouchTargetsTest::rightClickInAFieldOpensNothing_data()
{
    const auto row = columns<QByteArray>("scene");
    for (const char *const scene : {"ingreso", "recuperar", "registro", "perfil", "panel", "cotizar", "autos"})
        row(scene, QByteArray(scene));
}

void TouchTargetsTest::rightClickInAFieldOpensNothing()
{
    QFETCH(QByteArray, scene);
    const auto screen = staged(scene, server);
    QVERIFY(screen);
    int fields = 0;
    for (QQuickItem *const field : controls(screen->root())) {
        if (!field->inherits("QQuickTextInput"))
            continue;
        ++fields;
        screen->scrollTo(field);
        const QStringList names = screen->names();
        const QImage picture = screen->picture();
        const qsizetype windows = QGuiApplication::allWindows().size();
        QTest::mouseClick(&screen->window(), Qt::RightButton, {}, TestScreen::box(field).center().toPoint());
        screen->settle();
        QCOMPARE(screen->names(), names);
        QCOMPARE(QGuiApplication::allWindows().size(), windows);
        QCOMPARE(screen->picture(), picture);
    }
    QVERIFY(fields > 0);
}

MAROVENDA_TEST(TouchTargetsTest)
#include "tst_TouchTargets.moc"
