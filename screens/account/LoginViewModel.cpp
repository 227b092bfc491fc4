#include "LoginViewModel.h"

#include "ApiClient.h"
#include "Deployment.h"
#include "Endpoints.h"
#include "ParseUserId.h"

using namespace Qt::StringLiterals;

QString LoginViewModel::supportEmail() const { return Deployment::supportEmail(); }

void LoginViewModel::iniciarSesion()
{
    if (email.value().isEmpty() || pass.value().isEmpty()) {
        msg = u"Completa los campos"_s;
        return;
    }
    const LoginRequest request{.email = email, .password = pass};
    ApiClient::instance().post<LoginResponse>(
        Endpoints::login, request, [this, alive = hold()](const std::optional<LoginResponse> &reply) {
            const auto failure = u"Error de credenciales"_s;
            if (!reply) {
                msg = failure;
            } else if (reply->status != u"success"_s) {
                msg = reply->message.value_or(failure);
            } else {
                Session::instance().setCustomer(parseUserId(reply->id), reply->nombre.value_or(QString()), email);
            }
        });
}

void LoginViewModel::abrirRecuperacion()
{
    recuperarEmail = QString();
    showRecuperarDialog = true;
}

void LoginViewModel::enviarRecuperacion()
{
    if (recuperarEmail.value().isEmpty())
        return;
    const RecuperarRequest request{.email = recuperarEmail};
    ApiClient::instance().post<StandardResponse>(
        Endpoints::recuperar, request, [this, alive = hold()](const std::optional<StandardResponse> &reply) {
            // A failure looks like a success, so that nobody learns which addresses have an account.
            const auto done = u"Solicitud procesada"_s;
            msg = reply ? reply->message.value_or(done) : done;
        });
}
