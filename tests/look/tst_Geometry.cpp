#include "MarovendaTest.h"
#include "Rules.h"
#include "Scenes.h"
#include "ServiceTest.h"

#include <QAccessible>
#include <QFile>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

/// The numbers of the design, in design.json, against the real layouts.
class GeometryTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void everyScreenHoldsItsNumbers_data();
    void everyScreenHoldsItsNumbers();
    void everyTargetIsLargeEnough_data();
    void everyTargetIsLargeEnough();
};

void GeometryTest::everyScreenHoldsItsNumbers_data()
{
    QTest::addColumn<QJsonObject>("table");
    QFile file(QStringLiteral(DESIGN));
    QVERIFY(file.open(QFile::ReadOnly));
    const QJsonObject tables = QJsonDocument::fromJson(file.readAll()).object();
    QVERIFY(!tables.isEmpty());
    for (auto each = tables.begin(); each != tables.end(); ++each)
        QTest::newRow(each.key().toUtf8()) << each->toObject();
}

void GeometryTest::everyScreenHoldsItsNumbers()
{
    QFETCH(QJsonObject, table);
    const auto screen = staged(QTest::currentDataTag(), server);
    QVERIFY(screen);
    const QStringList wrong = differences(*screen, table);
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
