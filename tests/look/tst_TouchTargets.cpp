#include "MarovendaTest.h"
#include "Scenes.h"
#include "ServiceTest.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;

/// Everything that can be touched reaches at least 44 x 44 around its middle, on every screen in every state.
class TouchTargetsTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { ServiceTest::init(); }
    void cleanup() { ServiceTest::cleanup(); }

    void everyTargetIsLargeEnough_data();
    void everyTargetIsLargeEnough();
};

void TouchTargetsTest::everyTargetIsLargeEnough_data()
{
    QTest::addColumn<int>("scene");
    const QList<Scene> all = scenes();
    for (int scene = 0; scene < all.size(); ++scene)
        QTest::newRow(all[scene].name) << scene;
}

void TouchTargetsTest::everyTargetIsLargeEnough()
{
    QFETCH(int, scene);
    const Scene wanted = scenes()[scene];
    wanted.given(server);
    TestScreen screen(wanted.qml);
    QVERIFY(wanted.when(screen));
    screen.settle();

    int targets = 0;
    for (const QString &name : screen.names()) {
        const QQuickItem *const item = screen.named(name);
        const auto role = QAccessible::queryAccessibleInterface(screen.named(name))->role();
        if (role != QAccessible::Button && role != QAccessible::RadioButton && role != QAccessible::EditableText &&
            role != QAccessible::Link)
            continue;
        ++targets;
        const QPointF middle(item->width() / 2, item->height() / 2);
        for (const QPointF &off : {QPointF(-21.9, 0), QPointF(21.9, 0), QPointF(0, -21.9), QPointF(0, 21.9)})
            QVERIFY2(item->contains(middle + off), qUtf8Printable(name));
    }
    QVERIFY(targets > 0 || wanted.name == "inicio");
}

MAROVENDA_TEST_MAIN(TouchTargetsTest)
#include "tst_TouchTargets.moc"
