#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;

class AlertTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void fadesInAndIsAllThatIsHeard();
    void focusStartsInTheInputAndCannotLeave();
    void sendingCommitsUnfinishedTextFirst();
    void heldKeyThatOpenedItNeitherSendsNorCancels_data();
    void heldKeyThatOpenedItNeitherSendsNorCancels();
    void nothingBelowCanBeUsedWhileItFades();
    void focusComesBackToWhereItWas_data();
    void focusComesBackToWhereItWas();

private:
    static QByteArray page()
    {
        return R"qml(Item {
            id: page
            property string typed: ""
            property int accepts: 0
            property int cancels: 0
            property int presses: 0
            property string sent: ""
            property bool asking: false
            property int strayKeys: 0
            Keys.onPressed: event => { ++page.strayKeys; event.accepted = false }
            Column {
                width: 300
                enabled: !alert.covering
                PrimaryButton { objectName: "below"; text: "Debajo"; width: 300; onClicked: ++page.presses }
                CustomTextField { objectName: "field"; width: 300; hint: "Nombre"; isDecimal: false }
                CustomTextField { objectName: "lower"; width: 300; height: 400; hint: "Ciudad"; isDecimal: false }
            }
            Alert {
                id: alert
                objectName: "alert"
                shown: page.asking
                title: "Recuperar"
                message: "Se enviará un enlace."
                placeholder: "Tu correo"
                acceptText: "Enviar"
                content: page.typed
                onEdited: shown => page.typed = shown
                onAccepted: { ++page.accepts; page.sent = page.typed; page.asking = false }
                onCancelled: { ++page.cancels; page.asking = false }
            }
        })qml";
    }
    static void open(TestScreen &screen)
    {
        screen.root()->setProperty("asking", true);
        QTRY_VERIFY(qFuzzyCompare(screen.find(u"alert"_s)->opacity(), 1.0));
    }
};

void AlertTest::fadesInAndIsAllThatIsHeard()
{
    TestScreen screen(page());
    screen.root()->setProperty("asking", true);
    QVERIFY(screen.find(u"alert"_s)->isVisible());
    QVERIFY(screen.find(u"alert"_s)->opacity() < 1);
    open(screen);
    const QStringList heard{u"Recuperar"_s, u"Se enviará un enlace."_s, u"Tu correo"_s, u"Cancelar"_s, u"Enviar"_s};
    QCOMPARE(screen.names(), heard);
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(u"Recuperar"_s))->role(), QAccessible::Dialog);
}

void AlertTest::focusStartsInTheInputAndCannotLeave()
{
    TestScreen screen(page());
    open(screen);
    QQuickItem *const input = screen.find(u"alertInput"_s);
    QVERIFY(input->hasActiveFocus());
    QCOMPARE(screen.tabStops(4), QStringList({u"Cancelar"_s, u"Enviar"_s, u"Tu correo"_s, u"Cancelar"_s}));
    for (const QString &name : {u"Tu correo"_s, u"Enviar"_s, u"Cancelar"_s}) {
        screen.key(Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(screen.focusedName(), name);
    }
}

void AlertTest::sendingCommitsUnfinishedTextFirst()
{
    for (const bool byReturn : {true, false}) {
        TestScreen screen(page());
        open(screen);
        TestScreen::compose(screen.find(u"alertInput"_s), u"ana@x"_s);
        if (byReturn)
            screen.key(Qt::Key_Return);
        else
            TestScreen::press(screen.named(u"Enviar"_s));
        QCOMPARE(screen.root()->property("accepts").toInt(), 1);
        QCOMPARE(screen.root()->property("sent").toString(), u"ana@x"_s);
    }
}

void AlertTest::heldKeyThatOpenedItNeitherSendsNorCancels_data()
{
    QTest::addColumn<Qt::Key>("key");
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape})
        QTest::addRow("%#x", unsigned(key)) << key;
}

void AlertTest::heldKeyThatOpenedItNeitherSendsNorCancels()
{
    QFETCH(Qt::Key, key);
    TestScreen screen(page());
    screen.hold(key, true, [&] { open(screen); });
    QCOMPARE(screen.root()->property("accepts").toInt(), 0);
    QCOMPARE(screen.root()->property("cancels").toInt(), 0);
    QVERIFY(screen.root()->property("asking").toBool());
    screen.key(key);
    QCOMPARE(screen.root()->property("accepts").toInt(), key == Qt::Key_Escape ? 0 : 1);
    QCOMPARE(screen.root()->property("cancels").toInt(), key == Qt::Key_Escape ? 1 : 0);
}

void AlertTest::nothingBelowCanBeUsedWhileItFades()
{
    TestScreen screen(page(), {300, 200});
    QQuickItem *const field = screen.find(u"field"_s);
    QQuickItem *const alert = screen.find(u"alert"_s);
    open(screen);
    screen.key(Qt::Key_Escape);
    QVERIFY(alert->isVisible());
    screen.tap(screen.find(u"below"_s));
    screen.touch(screen.find(u"below"_s));
    screen.tap(field);
    // The fading buttons are no buttons any more, for the second of two quick clicks neither.
    const QPoint accept = TestScreen::box(screen.find(u"aceptar"_s)).center().toPoint();
    QTest::mouseDClick(&screen.window(), Qt::LeftButton, {}, accept);
    QVERIFY(TestScreen::box(screen.find(u"lower"_s)).contains(accept));
    QVERIFY(alert->isVisible());
    QCOMPARE(screen.root()->property("presses").toInt(), 0);
    QCOMPARE(screen.root()->property("accepts").toInt(), 0);
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Tab})
        screen.key(key);
    QCOMPARE(screen.root()->property("strayKeys").toInt(), 0);
    QVERIFY(!field->hasActiveFocus() && !screen.find(u"lower"_s)->hasActiveFocus());
    QVERIFY(!screen.named(u"Debajo"_s) && !screen.named(u"Enviar"_s));
    QTRY_VERIFY(!alert->isVisible());
    screen.tap(screen.find(u"below"_s));
    QCOMPARE(screen.root()->property("presses").toInt(), 1);
}

void AlertTest::focusComesBackToWhereItWas_data()
{
    QTest::addColumn<QString>("below");
    QTest::addColumn<Qt::FocusReason>("reason");
    QTest::newRow("tapped field") << u"field"_s << Qt::MouseFocusReason;
    QTest::newRow("field by key") << u"field"_s << Qt::TabFocusReason;
    QTest::newRow("button by key") << u"below"_s << Qt::TabFocusReason;
}

void AlertTest::focusComesBackToWhereItWas()
{
    QFETCH(QString, below);
    QFETCH(Qt::FocusReason, reason);
    TestScreen screen(page());
    QQuickItem *const item = screen.find(below);
    QQuickItem *const field = screen.find(u"field"_s);
    field->setProperty("text", u"Ana Lucía"_s);
    item->forceActiveFocus(reason);
    field->setProperty("cursorPosition", 3);
    open(screen);
    QVERIFY(!item->hasActiveFocus());
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(item->hasActiveFocus());
    // The caret is where it was, and the focus ring is there if it was.
    QCOMPARE(item->property("focusReason").value<Qt::FocusReason>(), reason);
    QCOMPARE(field->property("cursorPosition").toInt(), 3);
}

MAROVENDA_TEST(AlertTest)
#include "tst_Alert.moc"
