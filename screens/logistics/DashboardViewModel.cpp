#include "DashboardViewModel.h"

#include "ApiClient.h"
#include "Deployment.h"
#include "Links.h"
#include "PaqueteIdentity.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype recentRows = 3;

template <class R>
int countOf(const std::optional<QList<R>> &rows)
{
    return rows ? static_cast<int>(rows->size()) : 0;
}

template <class R>
QList<R> firstOf(const std::optional<QList<R>> &rows)
{
    return rows ? rows->first(std::min(recentRows, rows->size())) : QList<R>();
}

} // namespace

DashboardViewModel::DashboardViewModel(QObject *parent)
    : ViewModel(parent), m_paquetes(identityOf), m_cotizaciones(decltype(m_cotizaciones)::byPosition)
{
}

int DashboardViewModel::paqueteCount() const { return m_data ? countOf(m_data->paquetes) : 0; }
int DashboardViewModel::cotizacionCount() const { return m_data ? countOf(m_data->cotizaciones) : 0; }

void DashboardViewModel::cargarDatos()
{
    ApiClient::instance().fetchDashboard(
        userId(), [this, alive = hold()](const std::optional<DashboardResponse> &reply) {
            // One turn of the main loop later: this screen has always shown its data then.
            QMetaObject::invokeMethod(
                this, [this, alive, reply] { setData(reply); }, Qt::QueuedConnection);
        });
}

void DashboardViewModel::setData(const std::optional<DashboardResponse> &reply)
{
    m_data = reply;
    m_paquetes.setRows(m_data ? firstOf(m_data->paquetes) : QList<DashboardResponse::Paquete>());
    m_cotizaciones.setRows(m_data ? firstOf(m_data->cotizaciones) : QList<DashboardResponse::Cotizacion>());
    emit dataChanged();
}

void DashboardViewModel::abrirTracking(const QVariant &codigo)
{
    if (codigo.typeId() != QMetaType::QString)
        return;
    const QString number = codigo.toString().trimmed();
    if (number.isEmpty() || number == u"N/A"_s)
        return;
    Links::open(Links::fromText(Deployment::trackingUrl() + number));
}

void DashboardViewModel::cerrarSesion() { setUserId(0); }
