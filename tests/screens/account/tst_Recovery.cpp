#include "LoginViewModel.h"
#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

/// The sign-in's alert for a forgotten password.
class RecoveryTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void everyOpeningAsksWithAnEmptyField();
    void outcomeIsShown_data();
    void outcomeIsShown();
    void nothingIsSentWithoutAnAddressOrAfterCancelling();
    void lateReplyIsNotShownOnALaterScreen();

private:
    static void open(const TestScreen &screen)
    {
        screen.press(u"recuperar"_s);
        QTRY_COMPARE(screen.find(u"recuperarDialog"_s)->opacity(), 1);
    }
    static bool closes(const TestScreen &screen)
    {
        return QTest::qWaitFor([&] { return !screen.find(u"recuperarDialog"_s)->isVisible(); });
    }
    static void ask(const TestScreen &screen, const QString &email)
    {
        open(screen);
        screen.type(screen.find(u"alertInput"_s), email);
        screen.tap(screen.named(u"Enviar"_s));
    }
};

void RecoveryTest::everyOpeningAsksWithAnEmptyField()
{
    const TestScreen screen("LoginView {}");
    open(screen);
    const QStringList shown{u"Recuperar Contraseña"_s,
                            u"Se enviará una solicitud con el enlace de cambio a soporte@marovenda.example."_s,
                            u"Ingresa tu correo registrado"_s, u"Cancelar"_s, u"Enviar"_s};
    QCOMPARE(screen.texts(screen.find(u"recuperarDialog"_s)), shown);
    // The form below can neither be heard nor pressed.
    QVERIFY(!screen.named(u"Iniciar Sesión"_s));
    screen.type(screen.find(u"alertInput"_s), u"x"_s);
    screen.key(Qt::Key_Escape);
    QVERIFY(closes(screen));
    open(screen);
    QCOMPARE(screen.text(u"alertInput"_s), QString());
}

void RecoveryTest::outcomeIsShown_data()
{
    const auto row = columns<QByteArray, QString>("reply", "shown");
    row("no bytes", "", u"Solicitud procesada"_s);
    row("success", R"({"status":"success"})", u"Solicitud procesada"_s);
    row("failure", R"({"status":"error"})", u"Solicitud procesada"_s);
    row("success with message", R"({"status":"success","message":"Revisa"})", u"Revisa"_s);
    row("failure with message", R"({"status":"error","message":" \n No existe\t"})", u" \n No existe\t"_s);
    row("empty message", R"({"message":""})", QString());
}

void RecoveryTest::outcomeIsShown()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const QString, shown);
    server.reply("/api_recuperar.php", reply);
    const TestScreen screen("LoginView {}");
    screen.press(u"iniciarSesion"_s); // another message first
    ask(screen, u" yo@x "_s);
    QTRY_COMPARE(screen.text(u"msg"_s), shown);
    QVERIFY(closes(screen));
    QCOMPARE(server.requests().size(), 1);
    QCOMPARE(server.requests().first().path, "/api_recuperar.php");
    QCOMPARE(server.requests().first().body, R"({"email":" yo@x "})");
}

void RecoveryTest::nothingIsSentWithoutAnAddressOrAfterCancelling()
{
    const TestScreen screen("LoginView {}");
    ask(screen, QString());
    QVERIFY(closes(screen));
    QCOMPARE(screen.text(u"msg"_s), QString());
    open(screen);
    screen.type(screen.find(u"alertInput"_s), u"yo@x"_s);
    screen.tap(screen.named(u"Cancelar"_s));
    QVERIFY(closes(screen));
    // What is sent comes after whatever was sent before.
    ask(screen, u"sent@x"_s);
    QTRY_VERIFY(!server.requests().isEmpty());
    QCOMPARE(server.requests().first().body, R"({"email":"sent@x"})");
}

void RecoveryTest::lateReplyIsNotShownOnALaterScreen()
{
    server.hold("/api_recuperar.php");
    const TestScreen screen("Loader { sourceComponent: Component { LoginView {} } }");
    ask(screen, u"yo@x"_s);
    waitForRequests(1);
    const QPointer<LoginViewModel> gone = qobject_cast<LoginViewModel *>(screen.viewModelOf(u"msg"_s));
    QVERIFY(gone);
    QString written;
    connect(gone, &LoginViewModel::msgChanged, this, [&] { written = gone->msgValue(); });
    const QPointer<QQuickItem> page = screen.find(u"msg"_s);
    screen.root()->setProperty("active", false);
    QTRY_VERIFY(!page);
    QVERIFY(gone);
    // As after signing in and out again.
    screen.root()->setProperty("active", true);
    server.held.first()->send(R"({"message":"Revisa"})");
    QTRY_COMPARE(written, u"Revisa"_s);
    QTRY_VERIFY(!gone);
    QCOMPARE(screen.text(u"msg"_s), QString());
}

MAROVENDA_TEST(RecoveryTest)
#include "tst_Recovery.moc"
