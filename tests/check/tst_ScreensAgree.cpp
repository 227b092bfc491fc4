#include "Examine.h"
#include "MarovendaTest.h"
#include "Screens.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

/// What marovenda-check says a screen would show is what the real screen shows, reply for reply.
class ScreensAgreeTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ServiceTest::init();
        Session::instance().setUserId(42);
        Session::instance().setUserNombre(u"Ana"_s);
    }
    void cleanup() { ServiceTest::cleanup(); }

    void listing_data();
    void listing();
    void casillero_data();
    void casillero();
    void forms_data();
    void forms();
    void signingIn_data();
    void signingIn();

private:
    template <class Reply>
    static std::optional<Reply> app(const QByteArray &body)
    {
        Check::Findings findings;
        return Check::readReply<Reply>(body, findings).record;
    }

    /// Waits until every request has its reply and the screen has dealt with it.
    void finish(TestScreen &screen, int requests)
    {
        waitForRequests(requests);
        const auto busy = [] {
            const auto all = QCoreApplication::instance()->children();
            return std::any_of(all.begin(), all.end(), [](const QObject *each) {
                return qstrcmp(each->metaObject()->className(), "QObject") == 0; // an exchange in flight
            });
        };
        QTRY_VERIFY(!busy());
        // One turn of the main loop later, for the screens that take it.
        for (int turn = 0; turn < 3; ++turn)
            QCoreApplication::processEvents();
        screen.settle();
    }

    static QStringList thoseLike(const QStringList &names, const QString &pattern)
    {
        return names.filter(QRegularExpression(pattern));
    }

    void showForm(const QByteArray &qml, const QStringList &fields, const QString &button)
    {
        TestScreen screen(qml);
        for (const QString &field : fields)
            screen.type(screen.find(field), u"Ana@x.A_"_s);
        screen.tap(screen.find(button));
        finish(screen, 1);
        m_msg = screen.find(u"msg"_s)->property("text").toString();
    }

    void showRecovery()
    {
        TestScreen screen("LoginView {}");
        screen.tap(screen.find(u"recuperar"_s));
        QTRY_COMPARE(screen.find(u"recuperarDialog"_s)->opacity(), 1);
        screen.type(screen.find(u"alertInput"_s), u"a@b"_s);
        screen.tap(screen.named(u"Enviar"_s));
        finish(screen, 1);
        m_msg = screen.find(u"msg"_s)->property("text").toString();
    }

    QString m_msg;
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
    QCOMPARE(QStringList(screen.find(u"info"_s)->property("text").toString()),
             Check::casilleroScreen(app<CasilleroResponse>(body)).texts);
}

void ScreensAgreeTest::forms_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("success") << QByteArray(R"({"status":"success"})");
    QTest::newRow("success with message") << QByteArray(R"({"status":"success","message":"Listo"})");
    QTest::newRow("refusal") << QByteArray(R"({"status":"error","message":"No se puede"})");
    QTest::newRow("capitals") << QByteArray(R"({"status":"Success"})");
    QTest::newRow("no status") << QByteArray("{}");
    QTest::newRow("not JSON") << QByteArray("Warning: x {}");
}

void ScreensAgreeTest::forms()
{
    QFETCH(const QByteArray, body);
    const auto reply = app<StandardResponse>(body);
    const auto answer = [&](const QByteArray &path) {
        ServiceTest::cleanup();
        init();
        server.reply(path, body);
    };
    answer("/api_cotizar.php");
    showForm("CotizarView {}", {}, u"enviar"_s);
    QCOMPARE(QStringList(m_msg), Check::cotizarScreen(reply).texts);
    answer("/api_auto.php");
    showForm("ImportarAutoView {}", {}, u"enviar"_s);
    QCOMPARE(QStringList(m_msg), Check::importarAutoScreen(reply).texts);
    answer("/api_perfil.php");
    showForm("NavigationContainer { root: Component { PerfilView {} } }", {}, u"guardar"_s);
    QCOMPARE(QStringList(m_msg), Check::perfilScreen(reply).texts);
    answer("/api_recuperar.php");
    showRecovery();
    QCOMPARE(QStringList(m_msg), Check::recuperarScreen(reply).texts);
}

void ScreensAgreeTest::signingIn_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("success") << QByteArray(R"({"status":"success","message":"Hola","id":"7","nombre":"Bea"})");
    QTest::newRow("plus") << QByteArray(R"({"status":"success","id":"+7"})");
    QTest::newRow("negative") << QByteArray(R"({"status":"success","id":"-7"})");
    QTest::newRow("blank before") << QByteArray(R"({"status":"success","id":" 7"})");
    QTest::newRow("no id") << QByteArray(R"({"status":"success","message":"Hola"})");
    QTest::newRow("refusal") << QByteArray(R"({"status":"error","message":"No es usted","id":"7"})");
    QTest::newRow("refusal without words") << QByteArray(R"({"status":"error"})");
    QTest::newRow("capitals") << QByteArray(R"({"status":"SUCCESS","id":"7"})");
    QTest::newRow("not JSON") << QByteArray("{");
}

void ScreensAgreeTest::signingIn()
{
    QFETCH(const QByteArray, body);
    const auto reply = app<LoginResponse>(body);
    const auto agrees = [&](const Check::Screen &said) {
        QCOMPARE(m_msg, said.texts.value(0));
        QCOMPARE(Session::instance().someoneSignedIn(), said.state == Check::Screen::State::Works);
        QCOMPARE(said.remark == u"opens the dashboard"_s, Session::instance().someoneSignedIn());
    };
    Session::instance().setUserId(0);
    server.reply("/api_login.php", body);
    showForm("LoginView {}", {u"email"_s, u"pass"_s}, u"iniciarSesion"_s);
    agrees(Check::loginScreen(reply));

    ServiceTest::cleanup();
    init();
    Session::instance().setUserId(0);
    server.reply("/api_registro.php", body);
    showForm("RegistroView {}", {u"nom"_s, u"email"_s, u"direccion"_s, u"ciudad"_s, u"pass"_s}, u"registrar"_s);
    agrees(Check::registroScreen(reply));
}

MAROVENDA_TEST_MAIN(ScreensAgreeTest)
#include "tst_ScreensAgree.moc"
