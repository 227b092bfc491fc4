#include "FormTest.h"
#include "MarovendaTest.h"

#include "CasilleroViewModel.h"
#include "CotizarViewModel.h"
#include "DashboardViewModel.h"
#include "ImportarAutoViewModel.h"
#include "MisCotizacionesViewModel.h"
#include "MisPaquetesViewModel.h"

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

/// The dashboard, the quotations and the quotation form apply a reply one turn of the main loop after its completion,
/// the other screens in it.
class TurnsTest : public FormTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        signIn();
        server.reply("/api_paquetes.php", R"({"paquetes":[{}],"cotizaciones":[{}]})");
        server.reply("/api_cotizar.php", R"({"status":"success"})");
        server.reply("/api_auto.php", R"({"status":"success"})");
        server.reply("/api_casillero.php", R"({"nombreCompleto":"Ana"})");
    }
    void cleanup() { ServiceTest::cleanup(); }

    void dashboardOneTurnLater()
    {
        DashboardViewModel viewModel;
        QCOMPARE(turnOf(&viewModel, &DashboardViewModel::dataChanged, [&] { viewModel.cargarDatos(); }), 1);
    }
    void quotationsOneTurnLater()
    {
        MisCotizacionesViewModel viewModel;
        QCOMPARE(turnOf(viewModel.cotizaciones(), &QAbstractItemModel::modelReset,
                        [&] { viewModel.cargarCotizaciones(); }),
                 1);
    }
    void quotationFormOneTurnLater()
    {
        CotizarViewModel viewModel;
        QCOMPARE(turnOf(&viewModel, &CotizarViewModel::msgChanged, [&] { viewModel.enviarCotizacion(); }), 1);
    }
    void packagesAtOnce()
    {
        MisPaquetesViewModel viewModel;
        QCOMPARE(turnOf(viewModel.paquetes(), &QAbstractItemModel::modelReset, [&] { viewModel.cargarPaquetes(); }),
                 0);
    }
    void vehicleFormAtOnce()
    {
        ImportarAutoViewModel viewModel;
        QCOMPARE(turnOf(&viewModel, &ImportarAutoViewModel::msgChanged, [&] { viewModel.enviarSolicitud(); }), 0);
    }
    void mailboxAtOnce()
    {
        CasilleroViewModel viewModel;
        QCOMPARE(turnOf(&viewModel, &CasilleroViewModel::infoChanged, [&] { viewModel.cargarCasillero(); }), 0);
    }

private:
    /// 0 when the change that `ask` leads to is made in the reply's own job, 1 when a turn later, -1 when it does not
    /// come.
    template <class Subject, class Signal, class Ask>
    int turnOf(Subject *subject, Signal changed, Ask ask)
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

MAROVENDA_TEST_MAIN(TurnsTest)
#include "tst_Turns.moc"
