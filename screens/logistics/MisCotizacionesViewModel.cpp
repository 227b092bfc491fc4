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
            // One turn of the main loop later, as on the dashboard.
            QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
        });
}
