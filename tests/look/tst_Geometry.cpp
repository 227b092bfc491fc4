#include "MarovendaTest.h"
#include "Scenes.h"
#include "ServiceTest.h"
#include "Tables.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// The tables of the screens against the real layouts.
class GeometryTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { ServiceTest::init(); }
    void cleanup() { ServiceTest::cleanup(); }

    void everyScreenHoldsItsNumbers_data();
    void everyScreenHoldsItsNumbers();
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
    const QList<Scene> all = scenes();
    const auto wanted =
        std::find_if(all.begin(), all.end(), [](const Scene &each) { return each.name == QTest::currentDataTag(); });
    QVERIFY(wanted != all.end());
    wanted->given(server);
    TestScreen screen(wanted->qml);
    QVERIFY(wanted->when(screen));
    screen.settle();

    QStringList wrong;
    for (const auto &[name, rules] : std::as_const(table)) {
        const QQuickItem *const element = elementNamed(screen, name);
        if (!element)
            wrong += u"there is no "_s + name;
        for (const Rule &rule : rules) {
            if (const QString what = element ? rule(screen, element) : QString(); !what.isEmpty())
                wrong += name + u": "_s + what;
        }
    }
    QVERIFY2(wrong.isEmpty(), qUtf8Printable(u'\n' + wrong.join(u'\n')));
}

MAROVENDA_TEST_MAIN(GeometryTest)
#include "tst_Geometry.moc"
