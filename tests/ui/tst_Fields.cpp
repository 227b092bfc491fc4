#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class FieldsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void hintGivesWayToText();
    void unfinishedTextReachesTheBoundText();
    void unfinishedTextStaysUntilItIsReplaced();
    void assistiveTechnologyReachesTheBoundText();
    void nothingThatArrivesIsCut();
    void everyFieldAsksForItsKeyboard();
    void secureFieldHidesItsText();
    void longTextShowsItsBeginningUntilItIsEdited();
    void lowFieldHasALargeTarget();
    void textIsSelectedByDragging();
    void emptyTextIsNotHeard_data();
    void emptyTextIsNotHeard();
    void messageBelowACoverIsAnnouncedAfterIt();

private:
    static QByteArray fields()
    {
        return R"qml(Column {
            id: form
            property string plain: ""
            property string number: ""
            property string secret: ""
            CustomTextField { objectName: "plain"; width: 300; hint: "Nombre Completo"; content: form.plain; isDecimal: false
                onEdited: shown => form.plain = shown }
            CustomTextField { objectName: "twin"; width: 300; hint: "El mismo"; content: form.plain; isDecimal: false
                onEdited: shown => form.plain = shown }
            CustomTextField { objectName: "number"; width: 300; hint: "Peso (Lbs)"; content: form.number; isDecimal: true
                onEdited: shown => form.number = shown }
            CustomSecureField { objectName: "secret"; width: 300; hint: "Contraseña"; content: form.secret
                onEdited: shown => form.secret = shown }
        })qml";
    }
};

void FieldsTest::hintGivesWayToText()
{
    TestScreen screen(fields());
    for (const QString &name : {u"plain"_s, u"number"_s, u"secret"_s}) {
        QQuickItem *const field = screen.find(name);
        const QString hint = field->property("hint").toString();
        screen.tap(field);
        QVERIFY(screen.texts(field).contains(hint));
        TestScreen::compose(field, u"n"_s);
        QVERIFY(!screen.texts(field).contains(hint));
        QCOMPARE(field->property("text").toString(), QString());
        TestScreen::compose(field, {});
        QVERIFY(screen.texts(field).contains(hint));
        screen.type(field, u"1"_s);
        QVERIFY(!screen.texts(field).contains(hint));
        // It stays the name that is heard.
        QCOMPARE(screen.named(hint), field);
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

void FieldsTest::unfinishedTextStaysUntilItIsReplaced()
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
    // The bound text replaces what is unfinished.
    screen.tap(field);
    TestScreen::compose(field, u"í"_s);
    screen.root()->setProperty("plain", QString());
    QCOMPARE(field->property("text").toString(), QString());
    QCOMPARE(field->property("preeditText").toString(), QString());
    QCOMPARE(screen.root()->property("plain").toString(), QString());
}

void FieldsTest::assistiveTechnologyReachesTheBoundText()
{
    TestScreen screen(fields());
    for (const char *name : {"plain", "secret"}) {
        QAccessible::queryAccessibleInterface(screen.find(QString::fromLatin1(name)))
            ->setText(QAccessible::Value, u"Dictado"_s);
        QCOMPARE(screen.root()->property(name).toString(), u"Dictado"_s);
    }
}

void FieldsTest::nothingThatArrivesIsCut()
{
    TestScreen screen(fields());
    // Qt's own limit is 32,767.
    const QString longText = u"12 libras "_s + QString(40'000, u'x');
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

void FieldsTest::everyFieldAsksForItsKeyboard()
{
    TestScreen screen(fields());
    const auto hints = [&](const QString &name) {
        return Qt::InputMethodHints(screen.find(name)->property("inputMethodHints").toInt());
    };
    QCOMPARE(hints(u"plain"_s), Qt::InputMethodHints(Qt::ImhNone));
    QCOMPARE(hints(u"number"_s), Qt::InputMethodHints(Qt::ImhFormattedNumbersOnly));
    QCOMPARE(hints(u"secret"_s),
             Qt::ImhHiddenText | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
}

void FieldsTest::secureFieldHidesItsText()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"secret"_s);
    screen.type(field, u"Ábc.1"_s);
    QCOMPARE(screen.root()->property("secret").toString(), u"Ábc.1"_s);
    QCOMPARE(field->property("displayText").toString(), QString(5, u'\u2022'));
    // Nothing of it leaves by the clipboard.
    QGuiApplication::clipboard()->setText(u"before"_s);
    QTest::keySequence(&screen.window(), QKeySequence::SelectAll);
    QTest::keySequence(&screen.window(), QKeySequence::Copy);
    QTest::keySequence(&screen.window(), QKeySequence::Cut);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
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

void FieldsTest::lowFieldHasALargeTarget()
{
    TestScreen screen("Item { FormField { objectName: 'low'; y: 50; width: 200; padding: 6; hint: 'Bajo' } }",
                      {200, 200});
    QQuickItem *const low = screen.find(u"low"_s);
    QCOMPARE(low->height(), 34);
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, QPoint(100, 46));
    QVERIFY(low->hasActiveFocus());
    // A tap needs no focus ring.
    QVERIFY(!low->property("keyboardFocus").toBool());
    for (const auto reason : {Qt::TabFocusReason, Qt::BacktabFocusReason}) {
        low->setFocus(false);
        low->forceActiveFocus(reason);
        QVERIFY(low->property("keyboardFocus").toBool());
    }
}

void FieldsTest::textIsSelectedByDragging()
{
    TestScreen screen(fields());
    QQuickItem *const field = screen.find(u"plain"_s);
    screen.type(field, u"una frase que se puede marcar"_s);
    const QRectF box = TestScreen::box(field);
    const auto at = [&](int x) { return QPoint(int(box.left()) + x, int(box.center().y())); };
    QTest::mousePress(&screen.window(), Qt::LeftButton, {}, at(20));
    for (int x = 30; x <= 120; x += 10)
        QTest::mouseMove(&screen.window(), at(x), 5);
    QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, at(120));
    QVERIFY(!field->property("selectedText").toString().isEmpty());
}

void FieldsTest::emptyTextIsNotHeard_data()
{
    const auto row = columns<QByteArray>("item");
    row("message", "MessageLine { keepsPlace: true }");
    row("text", "AppText {}");
}

void FieldsTest::emptyTextIsNotHeard()
{
    QFETCH(const QByteArray, item);
    TestScreen screen(item);
    const QQmlProperty ignored(screen.root(), u"Accessible.ignored"_s, qmlContext(screen.root()));
    for (const QString &text : {u"Error de conexión"_s, QString()}) {
        screen.root()->setProperty("text", text);
        QCOMPARE(ignored.read().toBool(), text.isEmpty());
        QVERIFY(screen.root()->isVisible());
    }
}

void FieldsTest::messageBelowACoverIsAnnouncedAfterIt()
{
    // Screen readers announce a message that becomes visible.
    TestScreen screen("MessageLine { text: 'Antes' }");
    const QSignalSpy shown(screen.root(), SIGNAL(visibleChanged()));
    screen.root()->setEnabled(false);
    screen.root()->setProperty("text", u"Debajo"_s);
    QCOMPARE(shown.size(), 0);
    screen.root()->setEnabled(true);
    QCOMPARE(shown.size(), 2);
    screen.root()->setEnabled(false);
    screen.root()->setEnabled(true);
    QCOMPARE(shown.size(), 2);
}

MAROVENDA_TEST(FieldsTest)
#include "tst_Fields.moc"
