#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QTest>

using namespace Qt::StringLiterals;

class FieldsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void hintStandsInAnEmptyFieldAndNeverInItsText();
    void hintGivesWayToUnfinishedText_data();
    void hintGivesWayToUnfinishedText();
    void everyKeystrokeReachesTheBoundText();
    void unfinishedTextReachesTheBoundText();
    void unfinishedTextStaysWhereItsFieldLosesTheFocus();
    void boundTextReplacesUnfinishedText();
    void hintGoesWithTheFirstUnfinishedText();
    void assistiveTechnologyReachesTheBoundText_data();
    void assistiveTechnologyReachesTheBoundText();
    void nothingThatArrivesIsCut();
    void twoFieldsOnOneTextStayInStep();
    void decimalFieldAsksForTheDecimalPadAndKeepsWhatIsPasted();
    void plainFieldAsksForTheDefaultKeyboard();
    void secureFieldHidesItsText();
    void fieldIsAsHighAsItsLineAndPadding();
    void shapeHasTheDesignedCornersAndOutline();
    void returnDoesNothing();
    void focusRingComesWithTheKeyboardOnly();
    void longTextStaysOnOneLine();
    void longTextShowsItsBeginningUntilItIsEdited();
    void hintIsSmallerRatherThanCut();
    void lowFieldHasALargeTarget();

private:
    static QByteArray fields()
    {
        return R"qml(Column {
            id: form
            property string plain: ""
            property string number: ""
            property string secret: ""
            property int submitted: 0
            CustomTextField { objectName: "plain"; width: 300; hint: "Nombre Completo"; content: form.plain; isDecimal: false
                onEdited: shown => form.plain = shown; onAccepted: ++form.submitted }
            CustomTextField { objectName: "twin"; width: 300; hint: "El mismo"; content: form.plain; isDecimal: false
                onEdited: shown => form.plain = shown }
            CustomTextField { objectName: "number"; width: 300; hint: "Peso (Lbs)"; content: form.number; isDecimal: true
                onEdited: shown => form.number = shown }
            CustomSecureField { objectName: "secret"; width: 300; hint: "Contraseña"; content: form.secret
                onEdited: shown => form.secret = shown }
        })qml";
    }
};

void FieldsTest::hintStandsInAnEmptyFieldAndNeverInItsText()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    QVERIFY(screen.texts(field).contains(u"Nombre Completo"_s));
    QCOMPARE(screen.root()->property("plain").toString(), QString());
    screen.type(field, u"A"_s);
    QVERIFY(!screen.texts(field).contains(u"Nombre Completo"_s));
    screen.type(field, QString());
    QVERIFY(screen.texts(field).contains(u"Nombre Completo"_s));
    QCOMPARE(screen.root()->property("plain").toString(), QString());
    // The hint stays the name that is heard, also over a text.
    QCOMPARE(screen.named(u"Nombre Completo"_s), field);
}

void FieldsTest::hintGivesWayToUnfinishedText_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"plain", "number", "secret"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void FieldsTest::hintGivesWayToUnfinishedText()
{
    QFETCH(const QString, name);
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(name);
    const QString hint = field->property("hint").toString();
    screen.tap(field);
    QVERIFY(screen.texts(field).contains(hint));
    QInputMethodEvent unfinished(u"n"_s, {});
    QCoreApplication::sendEvent(field, &unfinished);
    QVERIFY(!screen.texts(field).contains(hint));
    QCOMPARE(field->property("text").toString(), QString());
    QInputMethodEvent given;
    QCoreApplication::sendEvent(field, &given);
    QVERIFY(screen.texts(field).contains(hint));
}

void FieldsTest::everyKeystrokeReachesTheBoundText()
{
    TestScreen screen(fields());
    screen.tap(screen.find(u"plain"_s));
    QString soFar;
    for (const QChar each : u"Ñandú 1"_s) {
        QTest::sendKeyEvent(QTest::Click, &screen.window(), Qt::Key_unknown, QString(each), Qt::NoModifier);
        soFar += each;
        QCOMPARE(screen.root()->property("plain").toString(), soFar);
    }
}

void FieldsTest::unfinishedTextReachesTheBoundText()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    screen.type(field, u"María Díaz"_s);
    field->setProperty("cursorPosition", 6);
    const auto typed = [&] { return screen.root()->property("plain").toString(); };
    TestScreen::compose(field, u"L"_s);
    QCOMPARE(typed(), u"María LDíaz"_s);
    TestScreen::compose(field, u"Lucía "_s);
    QCOMPARE(typed(), u"María Lucía Díaz"_s);
    // It goes on: what reached the bound text does not come back as if the customer had finished.
    QCOMPARE(field->property("preeditText").toString(), u"Lucía "_s);
    QCOMPARE(screen.find(u"twin"_s)->property("text").toString(), u"María Lucía Díaz"_s);
    TestScreen::compose(field, {});
    QCOMPARE(typed(), u"María Díaz"_s);
    TestScreen::compose(field, u"Luz "_s);
    QInputMethodEvent finished;
    finished.setCommitString(u"Luisa "_s);
    QCoreApplication::sendEvent(field, &finished);
    QCOMPARE(typed(), u"María Luisa Díaz"_s);
    QCOMPARE(field->property("text").toString(), typed());

    QQuickItem *const secret = screen.find(u"secret"_s);
    screen.type(secret, u"Cla"_s);
    TestScreen::compose(secret, u"ve.1"_s);
    QCOMPARE(screen.root()->property("secret").toString(), u"Clave.1"_s);
}

void FieldsTest::unfinishedTextStaysWhereItsFieldLosesTheFocus()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    screen.type(field, u"e"_s);
    TestScreen::compose(field, u"Luc"_s);
    screen.tap(screen.find(u"number"_s));
    QCOMPARE(field->property("text").toString(), u"eLuc"_s);
    QCOMPARE(field->property("preeditText").toString(), QString());
    QCOMPARE(screen.root()->property("plain").toString(), u"eLuc"_s);
    QCOMPARE(screen.root()->property("number").toString(), QString());
}

void FieldsTest::boundTextReplacesUnfinishedText()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    screen.type(field, u"e"_s);
    TestScreen::compose(field, u"Luc"_s);
    screen.root()->setProperty("plain", QString());
    QCOMPARE(field->property("text").toString(), QString());
    QCOMPARE(field->property("preeditText").toString(), QString());
    QCOMPARE(screen.root()->property("plain").toString(), QString());
}

void FieldsTest::hintGoesWithTheFirstUnfinishedText()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    screen.tap(field);
    TestScreen::compose(field, u"´"_s);
    QVERIFY(!screen.texts(field).contains(u"Nombre Completo"_s));
}

void FieldsTest::assistiveTechnologyReachesTheBoundText_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << u"plain"_s;
    QTest::newRow("secret") << u"secret"_s;
}

void FieldsTest::assistiveTechnologyReachesTheBoundText()
{
    QFETCH(QString, name);
    TestScreen screen(fields());
    QAccessible::queryAccessibleInterface(screen.find(name))->setText(QAccessible::Value, u"Dictado"_s);
    QCOMPARE(screen.root()->property(name.toLatin1()).toString(), u"Dictado"_s);
}

void FieldsTest::nothingThatArrivesIsCut()
{
    TestScreen screen(fields());
    // Qt's own limit is 32,767.
    const QString longText(40'000, u'x');
    screen.root()->setProperty("plain", longText);
    screen.tap(screen.find(u"plain"_s));
    screen.key(Qt::Key_End);
    QTest::sendKeyEvent(QTest::Click, &screen.window(), Qt::Key_unknown, u"y"_s, Qt::NoModifier);
    QCOMPARE(screen.root()->property("plain").toString(), longText + u'y');
    QGuiApplication::clipboard()->setText(longText);
    for (const QString &name : {u"number"_s, u"secret"_s}) {
        screen.tap(screen.find(name));
        QTest::keySequence(&screen.window(), QKeySequence::Paste);
        QCOMPARE(screen.root()->property(name.toLatin1()).toString(), longText);
    }
}

void FieldsTest::twoFieldsOnOneTextStayInStep()
{
    TestScreen screen(fields());
    screen.type(screen.find(u"plain"_s), u"Ana"_s);
    QCOMPARE(screen.find(u"twin"_s)->property("text").toString(), u"Ana"_s);
    screen.type(screen.find(u"twin"_s), u"Bruno"_s);
    QCOMPARE(screen.find(u"plain"_s)->property("text").toString(), u"Bruno"_s);
    screen.root()->setProperty("plain", u"Carla"_s);
    QCOMPARE(screen.find(u"plain"_s)->property("text").toString(), u"Carla"_s);
    QCOMPARE(screen.find(u"twin"_s)->property("text").toString(), u"Carla"_s);
}

void FieldsTest::decimalFieldAsksForTheDecimalPadAndKeepsWhatIsPasted()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"number"_s);
    QCOMPARE(field->property("inputMethodHints").toInt(), int(Qt::ImhFormattedNumbersOnly));
    QGuiApplication::clipboard()->setText(u"12 libras"_s);
    screen.tap(field);
    QTest::keySequence(&screen.window(), QKeySequence::Paste);
    QCOMPARE(screen.root()->property("number").toString(), u"12 libras"_s);
}

void FieldsTest::plainFieldAsksForTheDefaultKeyboard()
{
    TestScreen screen(fields());
    QCOMPARE(screen.find(u"plain"_s)->property("inputMethodHints").toInt(), int(Qt::ImhNone));
}

void FieldsTest::secureFieldHidesItsText()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"secret"_s);
    screen.type(field, u"Ábc.1"_s);
    QCOMPARE(screen.root()->property("secret").toString(), u"Ábc.1"_s);
    QCOMPARE(field->property("displayText").toString(), QString(5, u'\u2022'));
    const auto hints = Qt::InputMethodHints(field->property("inputMethodHints").toInt());
    QVERIFY(hints.testFlag(Qt::ImhHiddenText));
    QVERIFY(hints.testFlag(Qt::ImhSensitiveData));
    QVERIFY(!hints.testFlag(Qt::ImhDigitsOnly) && !hints.testFlag(Qt::ImhFormattedNumbersOnly));
    // Nothing of it leaves by the clipboard.
    QGuiApplication::clipboard()->setText(u"before"_s);
    QTest::keySequence(&screen.window(), QKeySequence::SelectAll);
    QTest::keySequence(&screen.window(), QKeySequence::Copy);
    QTest::keySequence(&screen.window(), QKeySequence::Cut);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
}

void FieldsTest::fieldIsAsHighAsItsLineAndPadding()
{
    TestScreen screen(fields());
    for (const QString &name : {u"plain"_s, u"number"_s, u"secret"_s}) {
        QCOMPARE(screen.find(name)->height(), 16 + 22 + 16);
        QCOMPARE(screen.find(name)->width(), 300);
    }
}

void FieldsTest::shapeHasTheDesignedCornersAndOutline()
{
    TestScreen screen(fields());
    for (const QString &name : {u"plain"_s, u"secret"_s}) {
        const auto *const shape = screen.find(name)->property("background").value<QQuickItem *>();
        QCOMPARE(shape->property("radius").toReal(), 16);
        QCOMPARE(shape->property("color").value<QColor>(), QColor(Qt::white));
        QCOMPARE(shape->property("borderWidth").toReal(), 1);
        const QColor outline = shape->property("borderColor").value<QColor>();
        QCOMPARE(outline.rgb(), qRgb(0x8E, 0x8E, 0x93));
        QVERIFY(qAbs(outline.alphaF() - 0.2) < 0.01);
    }
}

void FieldsTest::returnDoesNothing()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    screen.type(field, u"Ana"_s);
    screen.key(Qt::Key_Return);
    QCOMPARE(screen.root()->property("plain").toString(), u"Ana"_s);
    QVERIFY(field->hasActiveFocus());
}

void FieldsTest::focusRingComesWithTheKeyboardOnly()
{
    TestScreen screen(fields());
    screen.tap(screen.find(u"plain"_s));
    QVERIFY(!screen.find(u"plain"_s)->property("keyboardFocus").toBool());
    screen.key(Qt::Key_Tab);
    QVERIFY(screen.find(u"twin"_s)->hasActiveFocus());
    QVERIFY(screen.find(u"twin"_s)->property("keyboardFocus").toBool());
    screen.key(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(screen.find(u"plain"_s)->property("keyboardFocus").toBool());
}

void FieldsTest::longTextStaysOnOneLine()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    QGuiApplication::clipboard()->setText(u"uno\ndos\r\ntres "_s + QString(2000, u'x'));
    screen.tap(field);
    QTest::keySequence(&screen.window(), QKeySequence::Paste);
    QCOMPARE(field->height(), 54);
    QVERIFY(field->property("text").toString().contains(u"tres"_s));
}

void FieldsTest::longTextShowsItsBeginningUntilItIsEdited()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    const QString name = u"María Fernanda Montserrat del Carmen Echeverría-Gutiérrez"_s;
    screen.root()->setProperty("plain", name);
    QCOMPARE(field->property("cursorPosition").toInt(), 0);
    field->forceActiveFocus(Qt::TabFocusReason);
    QCOMPARE(field->property("cursorPosition").toInt(), name.size());
    screen.find(u"number"_s)->forceActiveFocus(Qt::TabFocusReason);
    QCOMPARE(field->property("cursorPosition").toInt(), 0);
    // Another window in between does not move the cursor.
    field->forceActiveFocus(Qt::TabFocusReason);
    field->setProperty("cursorPosition", 5);
    QQuickWindow other;
    other.show();
    other.requestActivate();
    QTRY_VERIFY(other.isActive());
    screen.window().requestActivate();
    QTRY_VERIFY(screen.window().isActive());
    QCOMPARE(field->property("cursorPosition").toInt(), 5);
}

void FieldsTest::hintIsSmallerRatherThanCut()
{
    const QByteArray hint = "Descripción del contenido";
    TestScreen screen("CustomTextField { width: 200; hint: '" + hint + "'; isDecimal: false }", {200, 60});
    for (const QQuickItem *child : screen.root()->childItems()) {
        if (child->property("text").toString().toUtf8() == hint) {
            QVERIFY(!child->property("truncated").toBool());
            QVERIFY(child->property("contentWidth").toReal() <= 200 - 2 * 16 + 1);
            return;
        }
    }
    QFAIL("There is no hint");
}

void FieldsTest::lowFieldHasALargeTarget()
{
    TestScreen screen("Item { FormField { objectName: 'low'; y: 50; width: 200; padding: 6; hint: 'Bajo' } }",
                      {200, 200});
    QQuickItem *const low = screen.find(u"low"_s);
    QCOMPARE(low->height(), 34);
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, QPoint(100, 46));
    QVERIFY(low->hasActiveFocus());
}

MAROVENDA_TEST_MAIN(FieldsTest)
#include "tst_Fields.moc"
