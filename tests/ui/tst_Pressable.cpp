#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class PressableTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyWayOfPressingIsOnePress_data();
    void everyWayOfPressingIsOnePress();
    void heldKeyIsOnePress_data();
    void heldKeyIsOnePress();
    void spaceThatWasPressedElsewhereIsNoPress();
    void tapLeavesTheFocusWhereItIs_data();
    void tapLeavesTheFocusWhereItIs();
    void unfinishedTextIsCommittedBeforeTheAction();
    void primaryButtonHasTheDesignedLook();
    void smallTextHasALargeTarget();
    void disabledButtonIsNeitherPressedNorHeard();
    void focusRingComesWithTheKeyboardOnly();

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
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("way");
    for (const char *button : {"button", "link"}) {
        for (const char *way : {"finger", "mouse", "space", "return", "enter", "reader"})
            QTest::addRow("%s by %s", button, way) << QString::fromLatin1(button) << QString::fromLatin1(way);
    }
}

void PressableTest::everyWayOfPressingIsOnePress()
{
    QFETCH(QString, button);
    QFETCH(QString, way);
    TestScreen screen(form());
    QQuickItem *const item = screen.find(button);
    if (way == u"finger"_s) {
        screen.touch(item);
    } else if (way == u"mouse"_s) {
        screen.tap(item);
    } else if (way == u"reader"_s) {
        QAccessibleInterface *const found = QAccessible::queryAccessibleInterface(item);
        QCOMPARE(found->role(), QAccessible::Button);
        found->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    } else {
        item->forceActiveFocus(Qt::TabFocusReason);
        screen.key(way == u"space"_s ? Qt::Key_Space : way == u"return"_s ? Qt::Key_Return : Qt::Key_Enter);
    }
    QCOMPARE(screen.root()->property("presses").toInt(), 1);
}

void PressableTest::heldKeyIsOnePress_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<bool>("releasesBetween");
    for (const char *button : {"button", "link"}) {
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
            for (const bool releasesBetween : {true, false})
                QTest::addRow("%s, %#x, %d", button, unsigned(key), releasesBetween)
                    << QString::fromLatin1(button) << key << releasesBetween;
        }
    }
}

void PressableTest::heldKeyIsOnePress()
{
    QFETCH(QString, button);
    QFETCH(Qt::Key, key);
    QFETCH(bool, releasesBetween);
    TestScreen screen(form());
    screen.find(button)->forceActiveFocus(Qt::TabFocusReason);
    screen.hold(key, releasesBetween);
    QCOMPARE(screen.root()->property("presses").toInt(), 1);
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

void PressableTest::tapLeavesTheFocusWhereItIs_data()
{
    QTest::addColumn<bool>("byFinger");
    QTest::newRow("mouse") << false;
    QTest::newRow("finger") << true;
}

void PressableTest::tapLeavesTheFocusWhereItIs()
{
    QFETCH(bool, byFinger);
    TestScreen screen(form());
    QQuickItem *const field = screen.find(u"field"_s);
    screen.type(field, u"Ana"_s);
    field->setProperty("cursorPosition", 1);
    for (const QString &name : {u"button"_s, u"link"_s}) {
        if (byFinger)
            screen.touch(screen.find(name));
        else
            screen.tap(screen.find(name));
        QVERIFY(field->hasActiveFocus());
        QCOMPARE(field->property("cursorPosition").toInt(), 1);
    }
    QCOMPARE(screen.root()->property("presses").toInt(), 2);
}

void PressableTest::unfinishedTextIsCommittedBeforeTheAction()
{
    TestScreen screen(form());
    QQuickItem *const field = screen.find(u"field"_s);
    screen.type(field, u"Ana "_s);
    TestScreen::compose(field, u"Luc"_s);
    QCOMPARE(field->property("preeditText").toString(), u"Luc"_s);

    QAccessibleInterface *const button = QAccessible::queryAccessibleInterface(screen.find(u"button"_s));
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(screen.root()->property("seen").toString(), u"Ana Luc"_s);
    QCOMPARE(field->property("preeditText").toString(), QString());
    QCOMPARE(field->property("text").toString(), u"Ana Luc"_s);
}

void PressableTest::primaryButtonHasTheDesignedLook()
{
    TestScreen screen(form());
    QQuickItem *const button = screen.find(u"button"_s);
    QCOMPARE(button->size(), QSizeF(300, 54));
    const auto *const shape = button->property("background").value<QQuickItem *>();
    QCOMPARE(shape->property("radius").toReal(), 20);
    QCOMPARE(shape->property("color").value<QColor>(), QColor(0x00, 0x7A, 0xFF));
    const auto *const label = button->property("contentItem").value<QQuickItem *>();
    QCOMPARE(label->property("color").value<QColor>(), QColor(Qt::white));
    QCOMPARE(label->property("font").value<QFont>().weight(), QFont::Bold);
    QCOMPARE(label->property("font").value<QFont>().pixelSize(), 17);
    QTest::mousePress(&screen.window(), Qt::LeftButton, {}, TestScreen::box(button).center().toPoint());
    QCOMPARE(button->opacity(), 0.8);
    QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, TestScreen::box(button).center().toPoint());
    QCOMPARE(button->opacity(), 1);
}

void PressableTest::smallTextHasALargeTarget()
{
    TestScreen screen(form());
    const QRectF box = TestScreen::box(screen.find(u"link"_s));
    QVERIFY(box.height() < 44 && box.width() < 44);
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {},
                      QPoint(int(box.center().x()), int(box.center().y() - 21)));
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {},
                      QPoint(int(box.center().x()), int(box.center().y() + 21)));
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {},
                      QPoint(int(box.center().x() + 21), int(box.center().y())));
    QCOMPARE(screen.root()->property("presses").toInt(), 3);
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {},
                      QPoint(int(box.center().x()), int(box.center().y() + 24)));
    QCOMPARE(screen.root()->property("presses").toInt(), 3);
}

void PressableTest::disabledButtonIsNeitherPressedNorHeard()
{
    TestScreen screen(form());
    QQuickItem *const button = screen.find(u"button"_s);
    QVERIFY(screen.named(u"Enviar"_s));
    screen.root()->setEnabled(false);
    screen.tap(button);
    QCOMPARE(screen.root()->property("presses").toInt(), 0);
    QVERIFY(!screen.named(u"Enviar"_s));
}

void PressableTest::focusRingComesWithTheKeyboardOnly()
{
    TestScreen screen(form());
    QQuickItem *const button = screen.find(u"button"_s);
    screen.tap(button);
    QVERIFY(!button->property("visualFocus").toBool());
    screen.tap(screen.find(u"field"_s));
    screen.key(Qt::Key_Tab);
    QVERIFY(button->property("visualFocus").toBool());
    screen.key(Qt::Key_Tab);
    QVERIFY(screen.find(u"link"_s)->property("visualFocus").toBool());
}

MAROVENDA_TEST_MAIN(PressableTest)
#include "tst_Pressable.moc"
