#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "TestScreen.h"

#include "CasilleroViewModel.h"
#include "CotizarViewModel.h"
#include "DashboardViewModel.h"
#include "ImportarAutoViewModel.h"
#include "MisCotizacionesViewModel.h"
#include "MisPaquetesViewModel.h"

#include <QPointer>
#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// Puts a mark into the main loop's queue just before each job of the application runs. A change while a mark still
/// waits was made by that job; one that the mark has overtaken was made a turn later.
class Marks : public QObject {
public:
    Marks() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == qApp && event->type() == QEvent::MetaCall) {
            ++waiting;
            QMetaObject::invokeMethod(
                this, [this] { --waiting; }, Qt::QueuedConnection);
        }
        return false;
    }

    int waiting = 0;
};

} // namespace

/// When a reply is applied, and what becomes of one that finds its screen gone.
class RepliesTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void lateReplyFindsTheViewModelAndLetsItGo_data();
    void lateReplyFindsTheViewModelAndLetsItGo();
    void replyIsAppliedInItsTurn_data();
    void replyIsAppliedInItsTurn();

private:
    /// 0 when the change that `ask` leads to is made in the reply's own job, 1 when a turn later, -1 when it does not
    /// come.
    template <class Subject, class Signal, class Ask>
    static int turnOf(Subject *subject, Signal changed, Ask ask)
    {
        Marks marks;
        int turn = -1;
        const auto link = connect(subject, changed, &marks, [&] { turn = marks.waiting > 0 ? 0 : 1; });
        ask();
        [[maybe_unused]] const bool came = QTest::qWaitFor([&] { return turn >= 0; }, 20000);
        disconnect(link);
        return turn;
    }
};

void RepliesTest::lateReplyFindsTheViewModelAndLetsItGo_data()
{
    const auto add = columns<QByteArray, QByteArray, QString, QString>("view", "path", "button", "place");
    const auto row = [&add](const QByteArray &view, auto... more) { add(view, view, more...); };
    const QString none;
    row("PerfilView {}", "/api_perfil.php", u"guardar"_s, u"msg"_s);
    row("CotizarView {}", "/api_cotizar.php", u"enviar"_s, u"msg"_s);
    row("ImportarAutoView {}", "/api_auto.php", u"enviar"_s, u"msg"_s);
    row("CasilleroView {}", "/api_casillero.php", none, u"info"_s);
    row("DashboardView { screens: ServiceScreens {} }", "/api_paquetes.php", none, u"buscar"_s);
    row("MisPaquetesView {}", "/api_paquetes.php", none, u"rows"_s);
    row("MisCotizacionesView {}", "/api_paquetes.php", none, u"rows"_s);
}

void RepliesTest::lateReplyFindsTheViewModelAndLetsItGo()
{
    QFETCH(const QByteArray, view);
    QFETCH(const QByteArray, path);
    QFETCH(const QString, button);
    QFETCH(const QString, place);
    server.hold(path);
    auto screen = std::make_unique<TestScreen>(TestScreen::alone(view));
    if (!button.isEmpty())
        screen->press(button);
    waitForRequests(1);
    const QPointer<QObject> viewModel = screen->viewModelOf(place);
    screen.reset();
    QVERIFY(viewModel);
    server.held.first()->send(R"({"status":"success","nombreCompleto":"Ana","paquetes":[{}],"cotizaciones":[{}]})");
    QTRY_VERIFY(!viewModel);
}

void RepliesTest::replyIsAppliedInItsTurn_data()
{
    // The dashboard, the quotations and the quotation form apply a reply one turn of the main loop after its
    // completion, the other screens in it.
    const auto row = columns<int, std::function<int()>>("turn", "found");
    row("dashboard", 1, [] {
        DashboardViewModel it;
        return turnOf(&it, &DashboardViewModel::dataChanged, [&] { it.cargarDatos(); });
    });
    row("quotations", 1, [] {
        MisCotizacionesViewModel it;
        return turnOf(it.cotizaciones(), &QAbstractItemModel::modelReset, [&] { it.cargarCotizaciones(); });
    });
    row("quotation form", 1, [] {
        CotizarViewModel it;
        return turnOf(&it, &CotizarViewModel::msgChanged, [&] { it.enviarCotizacion(); });
    });
    row("packages", 0, [] {
        MisPaquetesViewModel it;
        return turnOf(it.paquetes(), &QAbstractItemModel::modelReset, [&] { it.cargarPaquetes(); });
    });
    row("vehicle form", 0, [] {
        ImportarAutoViewModel it;
        return turnOf(&it, &ImportarAutoViewModel::msgChanged, [&] { it.enviarSolicitud(); });
    });
    row("mailbox", 0, [] {
        CasilleroViewModel it;
        return turnOf(&it, &CasilleroViewModel::infoChanged, [&] { it.cargarCasillero(); });
    });
}

void RepliesTest::replyIsAppliedInItsTurn()
{
    QFETCH(const std::function<int()>, found);
    server.reply("/api_paquetes.php", R"({"paquetes":[{}],"cotizaciones":[{}]})");
    server.reply("/api_casillero.php", R"({"nombreCompleto":"Ana"})");
    QTEST(found(), "turn");
}

MAROVENDA_TEST(RepliesTest)
#include "tst_Replies.moc"
