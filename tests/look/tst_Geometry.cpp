#include "MarovendaTest.h"
#include "Scenes.h"
#include "ServiceTest.h"
#include "Tables.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;

/// The numbers of the design against the real layouts.
class GeometryTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { ServiceTest::init(); }
    void cleanup() { ServiceTest::cleanup(); }

    void everyScreenHoldsItsNumbers_data();
    void everyScreenHoldsItsNumbers();
    void everyTargetIsLargeEnough_data();
    void everyTargetIsLargeEnough();
};

void GeometryTest::everyScreenHoldsItsNumbers_data()
{
    QTest::addColumn<Table>("table");
    for (const auto &[scene, table] : accountTables() + logisticsTables())
        QTest::newRow(scene) << table;
}

void GeometryTest::everyScreenHoldsItsNumbers()
{
    QFETCH(Table, table);
    const auto screen = staged(QTest::currentDataTag(), server);
    QVERIFY(screen);
    QStringList wrong;
    for (const auto &[name, rules] : std::as_const(table)) {
        const QQuickItem *const element = elementNamed(*screen, name);
        if (!element)
            wrong += u"there is no "_s + name;
        for (const Rule &rule : rules) {
            if (const QString what = element ? rule(*screen, element) : QString(); !what.isEmpty())
                wrong += name + u": "_s + what;
        }
    }
    QVERIFY2(wrong.isEmpty(), qUtf8Printable(u'\n' + wrong.join(u'\n')));
}

/// Everything that can be touched reaches at least 44 x 44 around its middle, on every screen in every state.
void GeometryTest::everyTargetIsLargeEnough_data()
{
    QTest::addColumn<bool>("hasTargets");
    for (const Scene &scene : scenes())
        QTest::newRow(scene.name) << (scene.name != "inicio");
}

void GeometryTest::everyTargetIsLargeEnough()
{
    QFETCH(bool, hasTargets);
    const auto screen = staged(QTest::currentDataTag(), server);
    QVERIFY(screen);
    bool found = false;
    for (const QString &name : screen->names()) {
        const QQuickItem *const item = screen->named(name);
        const auto role = QAccessible::queryAccessibleInterface(screen->named(name))->role();
        if (role != QAccessible::Button && role != QAccessible::RadioButton && role != QAccessible::EditableText &&
            role != QAccessible::Link)
            continue;
        found = true;
        const QPointF middle(item->width() / 2, item->height() / 2);
        for (const QPointF &off : {QPointF(-21.9, 0), QPointF(21.9, 0), QPointF(0, -21.9), QPointF(0, 21.9)})
            QVERIFY2(item->contains(middle + off), qUtf8Printable(name));
    }
    QCOMPARE(found, hasTargets);
}

MAROVENDA_TEST(GeometryTest)
#include "tst_Geometry.moc"
