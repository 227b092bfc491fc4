#include "Examine.h"
#include "Exchange.h"
#include "Forms.h"
#include "MarovendaTest.h"
#include "Screens.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

/// What marovenda-check says a screen would show is what the real screen shows, reply for reply, and how long it
/// takes.
class ScreensAgreeTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ServiceTest::init();
        Session::instance().setUserId(42);
        Session::instance().setUserNombre(u"Ana"_s);
    }

    void listing_data();
    void listing();
    void casillero_data();
    void casillero();
    void forms_data();
    void forms();
    void replyThatTakesFiveSecondsIsAWarning();

private:
    template <class Reply>
    static std::optional<Reply> app(const QByteArray &body)
    {
        Check::Findings findings;
        return Check::readReply<Reply>(body, findings).record;
    }

    /// What marovenda-check says of a form's screen.
    static Check::Screen said(const QByteArray &path, const QByteArray &body)
    {
        if (path == "/api_login.php")
            return Check::loginScreen(app<LoginResponse>(body));
        if (path == "/api_registro.php")
            return Check::registroScreen(app<LoginResponse>(body));
        const auto reply = app<StandardResponse>(body);
        return path == "/api_perfil.php"    ? Check::perfilScreen(reply)
               : path == "/api_cotizar.php" ? Check::cotizarScreen(reply)
               : path == "/api_auto.php"    ? Check::importarAutoScreen(reply)
                                            : Check::recuperarScreen(reply);
    }

    /// Waits until every request has its reply and the screen has dealt with it.
    void finish(TestScreen &screen, int requests)
    {
        waitForRequests(requests);
        QTRY_COMPARE(exchangesInFlight(), 0);
        // One turn of the main loop later, for the screens that take it.
        for (int turn = 0; turn < 3; ++turn)
            QCoreApplication::processEvents();
        screen.settle();
    }

    static QStringList thoseLike(const QStringList &names, const QString &pattern)
    {
        return names.filter(QRegularExpression(pattern));
    }
};

void ScreensAgreeTest::listing_data()
{
    QTest::addColumn<QByteArray>("body");
    const QByteArray row = R"({"tracking":"T","descripcion":"Caja","estado":"en tránsito"})";
    const QByteArray quote = R"({"origen":"O","descripcion":"Silla","estado":"enviada"})";
    const auto reply = [](const QByteArray &rows, const QByteArray &quotes) -> QByteArray {
        return R"({"status":"error","paquetes":[)" + rows + R"(],"cotizaciones":[)" + quotes + "]}";
    };
    QTest::newRow("one of each") << reply(row, quote);
    QTest::newRow("many") << reply((row + ',').repeated(6) + row, (quote + ',').repeated(4) + quote);
    QTest::newRow("none") << reply({}, {});
    QTest::newRow("absent fields") << reply("{},{}", "{}");
    QTest::newRow("empty fields") << reply(R"({"tracking":"","descripcion":"","estado":""})",
                                           R"({"origen":"","descripcion":"","estado":""})");
    QTest::newRow("sharp s") << reply(R"({"estado":"groß ñ ÿ ﬁ"})", R"({"estado":"straße"})");
    QTest::newRow("absent lists") << QByteArray("{}");
    QTest::newRow("not JSON") << QByteArray("<br>" + reply(row, quote));
}

void ScreensAgreeTest::listing()
{
    QFETCH(const QByteArray, body);
    const auto reply = app<DashboardResponse>(body);
    server.reply("/api_paquetes.php", body);

    TestScreen dashboard("NavigationContainer { root: Component { DashboardView { screens: ServiceScreens {} } } }",
                         {390, 1600});
    finish(dashboard, 1);
    QCOMPARE(thoseLike(dashboard.names(), u"^(Hola, |Tracking: |Origen: |\\d+ )"_s),
             Check::dashboardScreen(reply, u"Ana"_s).texts);

    const auto list = [](const char *view) {
        return QByteArray("NavigationContainer { root: Component { ") + view + " { } } }";
    };
    TestScreen packages(list("MisPaquetesView"));
    finish(packages, 2);
    QCOMPARE(thoseLike(packages.names(), u"Tracking: "_s).mid(0, 3), Check::misPaquetesScreen(reply).texts);

    TestScreen quotations(list("MisCotizacionesView"));
    finish(quotations, 3);
    QCOMPARE(thoseLike(quotations.names(), u"Origen: |^No tienes"_s).mid(0, 3),
             Check::misCotizacionesScreen(reply).texts);
}

void ScreensAgreeTest::casillero_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("name") << QByteArray(R"({"status":"success","nombreCompleto":"Ana Ríos"})");
    QTest::newRow("name in spite of the status") << QByteArray(R"({"status":"error","nombreCompleto":"Ana"})");
    QTest::newRow("empty name") << QByteArray(R"({"nombreCompleto":""})");
    QTest::newRow("no name") << QByteArray(R"({"status":"success","message":"Hola"})");
    QTest::newRow("not JSON") << QByteArray("x");
}

void ScreensAgreeTest::casillero()
{
    QFETCH(const QByteArray, body);
    server.reply("/api_casillero.php", body);
    TestScreen screen("NavigationContainer { root: Component { CasilleroView {} } }");
    finish(screen, 1);
    QCOMPARE(QStringList(screen.text(u"info"_s)), Check::casilleroScreen(app<CasilleroResponse>(body)).texts);
}

void ScreensAgreeTest::forms_data()
{
    QTest::addColumn<QByteArray>("body");
    for (const char *body :
         {R"({"status":"success"})", R"({"status":"success","message":"Listo"})",
          R"({"status":"success","message":"Hola","id":"7","nombre":"Bea"})", R"({"status":"success","id":"+7"})",
          R"({"status":"success","id":"-7"})", R"({"status":"success","id":" 7"})",
          R"({"status":"error","message":"No se puede","id":"7"})", R"({"status":"error"})",
          R"({"status":"Success","id":"7"})", "{}", "Warning: x {}"})
        QTest::newRow(body) << QByteArray(body);
}

void ScreensAgreeTest::forms()
{
    QFETCH(const QByteArray, body);
    for (const Form &form : ::forms()) {
        const bool signsIn = form.success.isEmpty();
        ServiceTest::cleanup();
        init();
        Session::instance().setUserId(signsIn ? 0 : 42);
        server.reply(form.path, body);
        TestScreen screen(TestScreen::alone(form.view + " {}"));
        for (const Field &field : form.fields)
            screen.enter(field.name, field.typed);
        screen.press(form.button);
        finish(screen, 1);
        const Check::Screen expected = said(form.path, body);
        QCOMPARE(screen.text(u"msg"_s), expected.texts.value(0));
        if (signsIn) {
            QCOMPARE(Session::instance().someoneSignedIn(), expected.state == Check::Screen::State::Works);
            QCOMPARE(Session::instance().someoneSignedIn(), expected.remark == u"opens the dashboard"_s);
        }
    }

    server.reply("/api_recuperar.php", body);
    const qsizetype before = server.requests().size();
    TestScreen screen("LoginView {}");
    screen.press(u"recuperar"_s);
    QTRY_COMPARE(screen.find(u"recuperarDialog"_s)->opacity(), 1);
    screen.type(screen.find(u"alertInput"_s), u"a@b"_s);
    screen.tap(screen.named(u"Enviar"_s));
    finish(screen, int(before) + 1);
    QCOMPARE(screen.text(u"msg"_s), said("/api_recuperar.php", body).texts.value(0));
}

void ScreensAgreeTest::replyThatTakesFiveSecondsIsAWarning()
{
    Check::Exchange exchange;
    exchange.reply.body = "{}";
    exchange.reply.status = 200;
    exchange.reply.complete = true;
    exchange.usable = true;
    Check::Findings findings;
    exchange.milliseconds = 4999;
    Check::judgeTransport(exchange, findings);
    QCOMPARE(findings.count(Check::Severity::Warning), 0);
    exchange.milliseconds = 5000;
    Check::judgeTransport(exchange, findings);
    QCOMPARE(findings.sorted().first().what, u"5.0 s until the reply; the app shows no progress"_s);
}

MAROVENDA_TEST(ScreensAgreeTest)
#include "tst_ScreensAgree.moc"
