#include "MisCotizacionesViewModel.h"

#include "ApiClient.h"

MisCotizacionesViewModel::MisCotizacionesViewModel(QObject *parent)
    : ViewModel(parent), m_cotizaciones(decltype(m_cotizaciones)::byPosition)
{
}

void MisCotizacionesViewModel::cargarCotizaciones()
{
    ApiClient::instance().fetchDashboard(
        userId(), [this, alive = hold()](const std::optional<DashboardResponse> &reply) {
            const auto show = [this, alive, reply] {
                m_cotizaciones.setRows(reply && reply->cotizaciones ? *reply->cotizaciones
                                                                    : QList<DashboardResponse::Cotizacion>());
            };
            // Show the rows one turn of the event loop later, as the dashboard does.
            QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
        });
}
