#include "CotizarViewModel.h"

#include "ApiClient.h"
#include "Endpoints.h"
#include "ParseDecimal.h"

using namespace Qt::StringLiterals;

namespace {

/// Compares canonically: an accented letter may be one code point or two.
bool isSameText(const QString &one, const QString &other)
{
    return one.normalized(QString::NormalizationForm_C) == other.normalized(QString::NormalizationForm_C);
}

} // namespace

QStringList CotizarViewModel::tipos() const { return {u"Aéreo"_s, u"Marítimo"_s}; }

void CotizarViewModel::enviarCotizacion()
{
    const CotizacionRequest request{
        .user_id = userId(),
        .tipo = (isSameText(tipo, u"Marítimo"_s) ? CotizacionRequest::maritimo : CotizacionRequest::aereo).toString(),
        .origen = origen,
        .destino = destino,
        .peso = parseDecimal(peso),
        .valor = parseDecimal(valor),
        .descripcion = descripcion,
    };
    ApiClient::instance().post<StandardResponse>(
        Endpoints::cotizar, request, [this, alive = hold()](const std::optional<StandardResponse> &reply) {
            const bool success = reply && reply->status == u"success"_s;
            // Show the result one turn of the event loop later, as the dashboard does.
            const auto show = [this, alive, success] {
                if (!success) {
                    msg = u"Error al cotizar"_s;
                    return;
                }
                msg = u"Enviado con éxito"_s;
                peso = QString();
                valor = QString();
                descripcion = QString();
            };
            QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
        });
}
