#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;

class PressableTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void pointerEndsKeyboardNavigation();
    void everyWayOfPressingIsOnePress_data();
    void everyWayOfPressingIsOnePress();
    void heldKeyIsOnePress();
    void spaceThatWasPressedElsewhereIsNoPress();
    void tapLeavesTheFocusWhereItIs();
    void unfinishedTextIsCommittedBeforeTheAction();
    void pressedButtonIsFainter();
    void smallTextHasALargeTarget();

private:
    static QByteArray form()
    {
        return R"qml(Column {
            id: form
            property int presses: 0
            property string typed: ""
            property string seen: ""
            spacing: 60
            CustomTextField { objectName: "field"; width: 300; hint: "Nombre"; content: form.typed; isDecimal: false
                onEdited: shown => form.typed = shown }
            PrimaryButton { objectName: "button"; width: 300; text: "Enviar"
                onClicked: { ++form.presses; form.seen = form.typed } }
            TextButton { objectName: "link"; text: "Ver"; textStyle: Theme.caption
                onClicked: { ++form.presses; form.seen = form.typed } }
        })qml";
    }
};

void PressableTest::everyWayOfPressingIsOnePress_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"finger", "mouse", "space", "return", "enter", "reader"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void PressableTest::everyWayOfPressingIsOnePress()
{
    QFETCH(QString, way);
    TestScreen screen(form());
    QQuickItem *const item = screen.find(u"button"_s);
    if (way == u"finger"_s) {
        screen.touch(item);
    } else if (way == u"mouse"_s) {
        screen.tap(item);
    } else if (way == u"reader"_s) {
        QCOMPARE(QAccessible::queryAccessibleInterface(item)->role(), QAccessible::Button);
        TestScreen::press(item);
    } else {
        item->forceActiveFocus(Qt::TabFocusReason);
        screen.key(way == u"space"_s ? Qt::Key_Space : way == u"return"_s ? Qt::Key_Return : Qt::Key_Enter);
    }
    QCOMPARE(screen.root()->property("presses").toInt(), 1);
}

void PressableTest::heldKeyIsOnePress()
{
    TestScreen screen(form());
    screen.find(u"button"_s)->forceActiveFocus(Qt::TabFocusReason);
    int presses = 0;
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        for (const bool releasesBetween : {true, false}) {
            screen.hold(key, releasesBetween);
            QCOMPARE(screen.root()->property("presses").toInt(), ++presses);
        }
    }
}

void PressableTest::spaceThatWasPressedElsewhereIsNoPress()
{
    TestScreen screen(form());
    screen.find(u"button"_s)->forceActiveFocus(Qt::TabFocusReason);
    screen.hold(Qt::Key_Space, true, [&] { screen.find(u"link"_s)->forceActiveFocus(Qt::TabFocusReason); });
    QCOMPARE(screen.root()->property("presses").toInt(), 0);
    screen.key(Qt::Key_Space);
    QCOMPARE(screen.root()->property("presses").toInt(), 1);
}

void PressableTest::tapLeavesTheFocusWhereItIs()
{
    TestScreen screen(form());
    QQuickItem *const field = screen.find(u"field"_s);
    screen.type(field, u"Ana"_s);
    field->setProperty("cursorPosition", 1);
    for (const QString &name : {u"button"_s, u"link"_s}) {
        screen.touch(screen.find(name));
        screen.tap(screen.find(name));
        QVERIFY(field->hasActiveFocus());
        QCOMPARE(field->property("cursorPosition").toInt(), 1);
    }
    QCOMPARE(screen.root()->property("presses").toInt(), 4);
}

void PressableTest::unfinishedTextIsCommittedBeforeTheAction()
{
    TestScreen screen(form());
    QQuickItem *const field = screen.find(u"field"_s);
    screen.type(field, u"Ana "_s);
    TestScreen::compose(field, u"Luc"_s);
    QCOMPARE(field->property("preeditText").toString(), u"Luc"_s);

    screen.tap(screen.find(u"button"_s));
    QCOMPARE(screen.root()->property("seen").toString(), u"Ana Luc"_s);
    QCOMPARE(field->property("preeditText").toString(), QString());
    QCOMPARE(field->property("text").toString(), u"Ana Luc"_s);
}

void PressableTest::pressedButtonIsFainter()
{
    TestScreen screen(form());
    for (const auto &[name, opacity] : {std::pair(u"button"_s, 0.8), std::pair(u"link"_s, 0.4)}) {
        const QQuickItem *const button = screen.find(name);
        const QPoint at = TestScreen::box(button).center().toPoint();
        QTest::mousePress(&screen.window(), Qt::LeftButton, {}, at);
        QCOMPARE(button->opacity(), opacity);
        QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, at);
        QCOMPARE(button->opacity(), 1);
    }
}

void PressableTest::smallTextHasALargeTarget()
{
    TestScreen screen(form());
    const QRectF box = TestScreen::box(screen.find(u"link"_s));
    QVERIFY(box.height() < 44 && box.width() < 44);
    for (const QPointF &off : {QPointF(0, -21), QPointF(0, 21), QPointF(21, 0), QPointF(0, 24)})
        QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, (box.center() + off).toPoint());
    // The last one is beyond.
    QCOMPARE(screen.root()->property("presses").toInt(), 3);
}

void PressableTest::pointerEndsKeyboardNavigation()
{
    TestScreen screen(
        "Item { property bool navigating: Keyboard.navigating; PrimaryButton { objectName: 'button'; width: 200 } }");
    const auto navigating = [&] { return screen.root()->property("navigating").toBool(); };
    for (const bool finger : {false, true}) {
        screen.key(Qt::Key_Tab);
        QVERIFY(navigating());
        if (finger)
            screen.touch(screen.find(u"button"_s));
        else
            screen.tap(screen.find(u"button"_s));
        QVERIFY(!navigating());
    }
}

MAROVENDA_TEST(PressableTest)
#include "tst_Pressable.moc"
