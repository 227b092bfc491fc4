#include "ImportarAutoViewModel.h"

#include "ApiClient.h"
#include "Endpoints.h"

using namespace Qt::StringLiterals;

void ImportarAutoViewModel::enviarSolicitud()
{
    const AutoRequest request{
        .user_id = userId(),
        .marca = marca,
        .modelo = modelo,
        .anio = anio,
        .ubicacion = ubicacion,
    };
    ApiClient::instance().post<StandardResponse>(
        Endpoints::importarAuto, request, [this, alive = hold()](const std::optional<StandardResponse> &reply) {
            msg = reply && reply->status == u"success"_s ? u"Solicitud enviada"_s : u"Error al enviar"_s;
        });
}
