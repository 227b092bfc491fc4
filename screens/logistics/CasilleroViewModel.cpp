#include "CasilleroViewModel.h"

#include "ApiClient.h"
#include "Deployment.h"
#include "Endpoints.h"

using namespace Qt::StringLiterals;

QString CasilleroViewModel::direccion() const
{
    const QStringList lines{
        u"Dirección: "_s + Deployment::warehouseStreet(),
        u"Ciudad: "_s + Deployment::warehouseCity(),
        u"Estado: Florida"_s,
        u"Zip Code: "_s + Deployment::warehouseZip(),
        u"Teléfono: "_s + Deployment::warehousePhone(),
    };
    return lines.join(u'\n');
}

void CasilleroViewModel::cargarCasillero()
{
    const CasilleroRequest request{.user_id = QString::number(userId())};
    ApiClient::instance().post<CasilleroResponse>(
        Endpoints::casillero, request, [this, alive = hold()](const std::optional<CasilleroResponse> &reply) {
            // The reply's status does not matter.
            info = reply ? reply->nombreCompleto.value_or(u"Error"_s) : u"Error"_s;
        });
}
