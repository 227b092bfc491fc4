#include "CasilleroViewModel.h"
#include "CotizarViewModel.h"
#include "DashboardViewModel.h"
#include "Forms.h"
#include "ImportarAutoViewModel.h"
#include "LoginViewModel.h"
#include "MarovendaTest.h"
#include "MisCotizacionesViewModel.h"
#include "MisPaquetesViewModel.h"
#include "PerfilViewModel.h"
#include "RegistroViewModel.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;

/// What all forms have in common, and the texts in which they differ.
class FormsTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ServiceTest::init();
        Session::instance().setUserId(42);
        Session::instance().setUserNombre(u"Ana"_s);
        Session::instance().setUserEmail(u"ana@x"_s);
    }

    void startsAsDesigned_data() { addForms(); }
    void startsAsDesigned();
    void untouchedFormIsSentOrSaidToBeIncomplete_data() { addForms(); }
    void untouchedFormIsSentOrSaidToBeIncomplete();
    void formWithAnEmptyFieldIsNotSent_data();
    void formWithAnEmptyFieldIsNotSent();
    void filledFormIsSentByteForByte_data() { addForms(); }
    void filledFormIsSentByteForByte();
    void everyPressSendsOneMoreAndTheLastReplyWins_data() { addForms(); }
    void everyPressSendsOneMoreAndTheLastReplyWins();
    void refusalIsShownAndKeepsTheForm_data();
    void refusalIsShownAndKeepsTheForm();
    void successIsShown_data();
    void successIsShown();
    void messageIsScrolledIntoView_data();
    void messageIsScrolledIntoView();
    void typingScrollsBackToTheField();
    void layoutsWriteNothingOfTheSessionButTheName();

private:
    static constexpr auto success = R"({"status":"success","message":"Hola"})";

    static void addForms()
    {
        QTest::addColumn<Form>("form");
        for (const Form &form : forms())
            QTest::newRow(form.view) << form;
    }
    static QByteArray shown(const Form &form) { return TestScreen::alone(form.view + " {}"); }
    static void fill(const TestScreen &screen, const Form &form)
    {
        for (const Field &field : form.fields)
            screen.enter(field.name, field.typed);
    }
    static QStringList inFields(const TestScreen &screen, const Form &form)
    {
        QStringList all;
        for (const Field &field : form.fields)
            all.append(screen.text(field.name));
        return all;
    }
    static QStringList typed(const Form &form)
    {
        QStringList all;
        for (const Field &field : form.fields)
            all.append(field.typed);
        return all;
    }
    static QString msg(const TestScreen &screen) { return screen.text(u"msg"_s); }
};

void FormsTest::startsAsDesigned()
{
    QFETCH(const Form, form);
    const TestScreen screen(shown(form));
    QCOMPARE(screen.names(), form.read);
    for (const Field &field : form.fields) {
        QCOMPARE(screen.text(field.name), field.initial);
        QCOMPARE(screen.find(field.name)->property("isDecimal").toBool(), field.decimal);
    }
    QCOMPARE(screen.find(u"msg"_s)->isVisible(), form.emptyMessageTakesALine);
}

void FormsTest::untouchedFormIsSentOrSaidToBeIncomplete()
{
    QFETCH(const Form, form);
    const TestScreen screen(shown(form));
    screen.press(form.button);
    QCOMPARE(msg(screen), form.incomplete);
    // What is sent comes after whatever was sent before.
    fill(screen, form);
    screen.press(form.button);
    QTRY_VERIFY(!server.requests().isEmpty());
    QCOMPARE(server.requests().first().body, form.incomplete.isEmpty() ? form.untouchedBody : form.body);
}

void FormsTest::formWithAnEmptyFieldIsNotSent_data()
{
    const auto row = columns<Form, QString>("form", "field");
    for (const Form &form : forms()) {
        for (const Field &field : form.fields) {
            if (!form.incomplete.isEmpty())
                row(form.view + ", " + field.name.toUtf8(), form, field.name);
        }
    }
}

void FormsTest::formWithAnEmptyFieldIsNotSent()
{
    QFETCH(const Form, form);
    QFETCH(const QString, field);
    const TestScreen screen(shown(form));
    fill(screen, form);
    screen.enter(field, form.blank);
    screen.press(form.button);
    QCOMPARE(msg(screen), form.incomplete);
    fill(screen, form);
    screen.press(form.button);
    QTRY_VERIFY(!server.requests().isEmpty());
    QCOMPARE(server.requests().first().body, form.body);
}

void FormsTest::filledFormIsSentByteForByte()
{
    QFETCH(const Form, form);
    server.hold(form.path);
    const TestScreen screen(shown(form));
    for (const Field &field : form.fields) {
        screen.enter(field.name, field.typed);
        screen.key(Qt::Key_Return);
        screen.key(Qt::Key_Enter);
        QVERIFY(screen.find(field.name)->hasActiveFocus());
    }
    QCOMPARE(msg(screen), QString());
    screen.press(form.button);
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().path, form.path);
    QCOMPARE(server.requests().first().body, form.body);
    // The end of each test relies on this count.
    QCOMPARE(exchangesInFlight(), 1);
    QCOMPARE(msg(screen), QString());
    QCOMPARE(inFields(screen, form), typed(form));
    QVERIFY(screen.find(form.button)->isEnabled());
}

void FormsTest::everyPressSendsOneMoreAndTheLastReplyWins()
{
    QFETCH(const Form, form);
    server.hold(form.path);
    const TestScreen screen(shown(form));
    fill(screen, form);
    screen.press(form.button);
    screen.press(form.button);
    waitForRequests(2);
    server.held[1]->send(R"({"status":"error","message":"dos"})");
    const QString second = form.showsMessage ? u"dos"_s : form.failure;
    QTRY_COMPARE(msg(screen), second);
    screen.press(form.button);
    waitForRequests(3);
    QCOMPARE(msg(screen), second);
    server.held[0]->send(form.showsMessage ? R"({"message":"uno"})" : success);
    QTRY_COMPARE(msg(screen), form.showsMessage ? u"uno"_s : form.success);
}

void FormsTest::refusalIsShownAndKeepsTheForm_data()
{
    const auto add = columns<Form, QByteArray, std::optional<QString>>("form", "reply", "message");
    for (const Form &form : forms()) {
        const auto row = [&](const char *name, const QByteArray &reply, const std::optional<QString> &message = {}) {
            add(form.view + ", " + name, form, reply, message);
        };
        row("no bytes", "");
        row("empty object", "{}");
        row("null", R"({"status":null,"message":null,"id":"7"})");
        row("other letter case", R"({"status":"Success","id":"7"})");
        row("blank after", R"({"status":"success ","id":"7"})");
        row("message", R"({"status":"error","message":" \n <b>Dos</b>  renglones\t"})",
            u" \n <b>Dos</b>  renglones\t"_s);
        row("empty message", R"({"status":"error","message":""})", u""_s);
        row("message alone", R"({"message":"Hola","id":"7"})", u"Hola"_s);
    }
}

void FormsTest::refusalIsShownAndKeepsTheForm()
{
    QFETCH(const Form, form);
    QFETCH(const QByteArray, reply);
    QFETCH(const std::optional<QString>, message);
    server.reply(form.path, reply);
    const TestScreen screen(shown(form));
    // Where it has one, another message comes first.
    if (!form.incomplete.isEmpty())
        screen.press(form.button);
    fill(screen, form);
    screen.press(form.button);
    const QString expected = form.showsMessage ? message.value_or(form.failure) : form.failure;
    QTRY_COMPARE(msg(screen), expected);
    if (!expected.isEmpty()) {
        const QQuickItem *const line = screen.named(expected);
        QCOMPARE(line, screen.find(u"msg"_s));
        QCOMPARE(QAccessible::queryAccessibleInterface(screen.find(u"msg"_s))->role(), QAccessible::AlertMessage);
    }
    QCOMPARE(inFields(screen, form), typed(form));
    QCOMPARE(Session::instance().userId(), 42);
    QCOMPARE(Session::instance().userEmail(), u"ana@x"_s);
    // Nor has anything changed that is not on show.
    screen.press(form.button);
    waitForRequests(2);
    QCOMPARE(server.requests()[1].body, form.body);
}

void FormsTest::successIsShown_data()
{
    QTest::addColumn<Form>("form");
    for (const Form &form : forms()) {
        if (!form.success.isEmpty())
            QTest::newRow(form.view) << form;
    }
}

void FormsTest::successIsShown()
{
    QFETCH(const Form, form);
    server.reply(form.path, success, 500);
    const TestScreen screen(shown(form));
    fill(screen, form);
    screen.press(form.button);
    QTRY_COMPARE(msg(screen), form.success);
    QCOMPARE(inFields(screen, form),
             form.emptiesOnSuccess ? QStringList(form.fields.size(), QString()) : typed(form));
    screen.press(form.button);
    waitForRequests(2);
    QCOMPARE(server.requests()[1].body, form.emptiesOnSuccess ? form.untouchedBody : form.body);
}

void FormsTest::messageIsScrolledIntoView_data()
{
    const auto row = columns<Form, QSize, double>("form", "size", "textScale");
    for (const Form &form : forms()) {
        row(form.view + " on a small phone", form, {320, 480}, 1);
        row(form.view + " in large text", form, {390, 844}, 2);
    }
}

void FormsTest::messageIsScrolledIntoView()
{
    QFETCH(const Form, form);
    QFETCH(const QSize, size);
    QFETCH(const double, textScale);
    const TextScale scale(textScale);
    const TestScreen screen(shown(form), size);
    const QQuickItem *const message = screen.find(u"msg"_s);
    // The field keeps the focus, far above the message.
    screen.press(form.fields.first().name);
    QTest::mouseMove(&screen.window(), QPoint(1, 1));
    screen.press(form.button);
    QTRY_VERIFY(!msg(screen).isEmpty());
    const auto inView = [&] { return QRectF(QPointF(), QSizeF(size)).contains(TestScreen::box(message)); };
    QTRY_VERIFY(inView());
    // What is laid out later leaves it there.
    for (int i = 0; i < 3; ++i)
        screen.settle();
    QVERIFY(inView());
    QVERIFY(screen.find(form.fields.first().name)->hasActiveFocus());
}

void FormsTest::typingScrollsBackToTheField()
{
    const TextScale scale(2);
    const TestScreen screen(TestScreen::alone("RegistroView {}"), {320, 480});
    const QQuickItem *const field = screen.find(u"nom"_s);
    screen.tap(field);
    screen.press(u"registrar"_s);
    screen.settle();
    QVERIFY(TestScreen::box(field).top() < 0);
    QTest::sendKeyEvent(QTest::Click, &screen.window(), Qt::Key_unknown, u"A"_s, Qt::NoModifier);
    QTRY_VERIFY(TestScreen::box(field).top() >= 0);
}

void FormsTest::layoutsWriteNothingOfTheSessionButTheName()
{
    QStringList writable;
    for (const QMetaObject *const model :
         {&CasilleroViewModel::staticMetaObject, &CotizarViewModel::staticMetaObject,
          &DashboardViewModel::staticMetaObject, &ImportarAutoViewModel::staticMetaObject,
          &LoginViewModel::staticMetaObject, &MisCotizacionesViewModel::staticMetaObject,
          &MisPaquetesViewModel::staticMetaObject, &PerfilViewModel::staticMetaObject,
          &RegistroViewModel::staticMetaObject}) {
        for (const char *const name : {"userId", "userNombre", "userEmail", "userAvatarData"}) {
            if (model->property(model->indexOfProperty(name)).isWritable())
                writable += QLatin1String(model->className()) + u'.' + QLatin1String(name);
        }
    }
    QCOMPARE(writable, QStringList(u"PerfilViewModel.userNombre"_s));
}

MAROVENDA_TEST(FormsTest)
#include "tst_Forms.moc"
