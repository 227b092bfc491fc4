#include "RegistroViewModel.h"

#include "ApiClient.h"
#include "Endpoints.h"
#include "ParseUserId.h"
#include "PasswordRule.h"

using namespace Qt::StringLiterals;

void RegistroViewModel::registrar()
{
    const RegistroRequest request{
        .nombre = nom.value().trimmed(),
        .email = email.value().trimmed(),
        .password = pass.value().trimmed(),
        .direccion = direccion.value().trimmed(),
        .ciudad = ciudad.value().trimmed(),
    };
    if (request.nombre.isEmpty() || request.email.isEmpty() || request.direccion.isEmpty() ||
        request.ciudad.isEmpty() || request.password.isEmpty()) {
        msg = u"Por favor completa todos los campos"_s;
        return;
    }
    if (!isAllowedPassword(request.password)) {
        msg = u"La contraseña debe incluir al menos una mayúscula y un carácter especial"_s;
        return;
    }
    ApiClient::instance().post<LoginResponse>(
        Endpoints::registro, request,
        [this, alive = hold(), nombre = request.nombre,
         email = request.email](const std::optional<LoginResponse> &reply) {
            const auto failure = u"Error al registrar"_s;
            if (!reply) {
                msg = failure;
            } else if (reply->status != u"success"_s) {
                msg = reply->message.value_or(failure);
            } else {
                Session::instance().setCustomer(parseUserId(reply->id), reply->nombre.value_or(nombre), email);
            }
        });
}
