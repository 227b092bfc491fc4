#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;

class SecureFieldTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void roleNameAndBulletsAreHeard();
    void clearTextIsNeverExposed();
    void assistiveTechnologyFocusesAndWrites();
    void hasTheGeometryAndTheParentOfTheField();

private:
    static QByteArray form()
    {
        return "Column { CustomSecureField { objectName: 'pass'; width: 300; hint: 'Contraseña' }"
               " CustomTextField { objectName: 'plain'; width: 300; hint: 'Nombre'; isDecimal: false } }";
    }
    static QAccessibleInterface *heardOf(TestScreen &screen)
    {
        return QAccessible::queryAccessibleInterface(screen.find(u"pass"_s));
    }
};

void SecureFieldTest::roleNameAndBulletsAreHeard()
{
    TestScreen screen(form());
    screen.type(screen.find(u"pass"_s), u"Secreto#1"_s);
    QAccessibleInterface *const field = heardOf(screen);
    QCOMPARE(field->role(), QAccessible::EditableText);
    QVERIFY(field->state().passwordEdit);
    QVERIFY(field->state().editable);
    QVERIFY(field->state().selectableText);
    QVERIFY(field->state().focused);
    QCOMPARE(field->text(QAccessible::Name), u"Contraseña"_s);
    QCOMPARE(field->textInterface()->characterCount(), 9);
    QCOMPARE(field->textInterface()->text(0, 9), QString(9, u'\u2022'));
    QCOMPARE(field->textInterface()->text(2, 4), QString(2, u'\u2022'));
    QCOMPARE(field->textInterface()->text(-5, 900), QString(9, u'\u2022'));
    // A negative end is that of the text.
    QCOMPARE(field->textInterface()->text(3, -1), QString(6, u'\u2022'));
    QCOMPARE(field->textInterface()->text(0, 0), QString());
    // All of it has the same attributes.
    int start = 5;
    int end = 6;
    QCOMPARE(field->textInterface()->attributes(5, &start, &end), QString());
    QCOMPARE(start, 0);
    QCOMPARE(end, 9);
}

void SecureFieldTest::clearTextIsNeverExposed()
{
    TestScreen screen(form());
    screen.type(screen.find(u"pass"_s), u"Secreto#1"_s);
    QAccessibleInterface *const field = heardOf(screen);
    for (const auto which : {QAccessible::Name, QAccessible::Value, QAccessible::Description, QAccessible::Help,
                             QAccessible::Accelerator, QAccessible::DebugDescription})
        QVERIFY(!field->text(which).contains(u"ecret"_s));
    QVERIFY(!field->valueInterface());
    int start = 0;
    int end = 0;
    for (const auto boundary : {QAccessible::CharBoundary, QAccessible::WordBoundary, QAccessible::LineBoundary})
        QVERIFY(!field->textInterface()->textAtOffset(1, boundary, &start, &end).contains(u"e"_s));
    for (int i = 0; i < field->childCount(); ++i)
        QVERIFY(!field->child(i)->text(QAccessible::Name).contains(u"ecret"_s));
}

void SecureFieldTest::assistiveTechnologyFocusesAndWrites()
{
    TestScreen screen(form());
    QAccessibleInterface *const field = heardOf(screen);
    field->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    QVERIFY(screen.find(u"pass"_s)->hasActiveFocus());
    field->setText(QAccessible::Value, u"nuevo"_s);
    QCOMPARE(screen.find(u"pass"_s)->property("text").toString(), u"nuevo"_s);
    // Parts of it too, though only bullets are to be read.
    field->editableTextInterface()->insertText(5, u"!"_s);
    field->editableTextInterface()->deleteText(0, 1);
    QCOMPARE(screen.find(u"pass"_s)->property("text").toString(), u"uevo!"_s);
    field->editableTextInterface()->replaceText(1, -1, u"no"_s);
    field->editableTextInterface()->insertText(0, u"b"_s);
    QCOMPARE(screen.find(u"pass"_s)->property("text").toString(), u"buno"_s);
    field->editableTextInterface()->replaceText(-3, 900, u"nuevo"_s);
    QCOMPARE(screen.find(u"pass"_s)->property("text").toString(), u"nuevo"_s);
    field->textInterface()->setCursorPosition(2);
    QCOMPARE(screen.find(u"pass"_s)->property("cursorPosition").toInt(), 2);
    QCOMPARE(field->textInterface()->cursorPosition(), 2);
    field->textInterface()->setSelection(0, 1, 3);
    QCOMPARE(screen.find(u"pass"_s)->property("selectedText").toString(), u"ue"_s);
    QCOMPARE(field->textInterface()->selectionCount(), 1);
    field->textInterface()->removeSelection(0);
    QCOMPARE(field->textInterface()->selectionCount(), 0);
}

void SecureFieldTest::hasTheGeometryAndTheParentOfTheField()
{
    TestScreen screen(form());
    QAccessibleInterface *const field = heardOf(screen);
    QCOMPARE(field->rect().size(), QSize(300, 54));
    QVERIFY(field->parent());
    QCOMPARE(field->window(), &screen.window());
    QQuickItem *const item = screen.find(u"pass"_s);
    for (const char *property : {"visible", "opacity"}) {
        QVERIFY(!field->state().invisible);
        item->setProperty(property, 0);
        QVERIFY2(field->state().invisible, property);
        item->setProperty(property, 1);
    }
    screen.window().hide();
    QVERIFY(field->state().invisible);
}

MAROVENDA_TEST(SecureFieldTest)
#include "tst_SecureField.moc"
