#include "DashboardViewModel.h"

#include "Absent.h"
#include "ApiClient.h"
#include "Deployment.h"
#include "Links.h"
#include "PaqueteIdentity.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype recentRows = 3;

/// Copies the first rows, or none if the list is absent.
template <class R>
QList<R> firstOf(const std::optional<QList<R>> &rows)
{
    return rows ? QList<R>(rows->begin(), rows->begin() + std::min(recentRows, rows->size())) : QList<R>();
}

template <class R>
int countOf(const std::optional<QList<R>> &rows)
{
    return rows ? static_cast<int>(rows->size()) : 0;
}

} // namespace

DashboardViewModel::DashboardViewModel(QObject *parent)
    : ViewModel(parent), m_paquetes(identityOf), m_cotizaciones(decltype(m_cotizaciones)::byPosition)
{
}

void DashboardViewModel::cargarDatos()
{
    ApiClient::instance().fetchDashboard(
        userId(), [this, alive = hold()](const std::optional<DashboardResponse> &reply) {
            // Show the data one turn of the event loop later, as the app has always done.
            QMetaObject::invokeMethod(
                this, [this, alive, reply] { setData(reply); }, Qt::QueuedConnection);
        });
}

void DashboardViewModel::setData(const std::optional<DashboardResponse> &data)
{
    const DashboardResponse shown = data.value_or(DashboardResponse());
    m_paqueteCount = countOf(shown.paquetes);
    m_cotizacionCount = countOf(shown.cotizaciones);
    m_paquetes.setRows(firstOf(shown.paquetes));
    m_cotizaciones.setRows(firstOf(shown.cotizaciones));
    emit dataChanged();
}

void DashboardViewModel::abrirTracking(const QVariant &codigo)
{
    if (codigo.typeId() != QMetaType::QString)
        return;
    const QString number = codigo.toString().trimmed();
    if (number.isEmpty() || number == Absent::tracking)
        return;
    Links::open(Links::fromText(Deployment::trackingUrl() + number));
}

void DashboardViewModel::cerrarSesion() { setUserId(0); }
