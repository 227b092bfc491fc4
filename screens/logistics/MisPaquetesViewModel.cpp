#include "MisPaquetesViewModel.h"

#include "ApiClient.h"
#include "PaqueteIdentity.h"

MisPaquetesViewModel::MisPaquetesViewModel(QObject *parent) : ViewModel(parent), m_paquetes(identityOf) {}

void MisPaquetesViewModel::cargarPaquetes()
{
    ApiClient::instance().fetchDashboard(
        userId(), [this, alive = hold()](const std::optional<DashboardResponse> &reply) {
            m_paquetes.setRows(reply && reply->paquetes ? *reply->paquetes : QList<DashboardResponse::Paquete>());
        });
}
