#pragma once

#include "Records.h"

#include <QLatin1StringView>
#include <QString>

#include <tuple>

/// An endpoint that receives a record in a POST. Names are relative to the service's base address.
template <class Request, class Reply>
struct PostEndpoint {
    QLatin1StringView name;

    explicit constexpr PostEndpoint(const char *name) : name(name) {}
    operator QString() const { return name; }
};

/// An endpoint that receives a customer's number in the query of a GET.
template <class Reply>
struct GetEndpoint {
    QLatin1StringView name;
    QLatin1StringView parameter;

    constexpr GetEndpoint(const char *name, const char *parameter) : name(name), parameter(parameter) {}
    operator QString() const { return name; }
};

/// The service's endpoints.
namespace Endpoints {

inline constexpr PostEndpoint<LoginRequest, LoginResponse> login{"api_login.php"};
inline constexpr PostEndpoint<RegistroRequest, LoginResponse> registro{"api_registro.php"};
inline constexpr PostEndpoint<RecuperarRequest, StandardResponse> recuperar{"api_recuperar.php"};
inline constexpr GetEndpoint<DashboardResponse> paquetes{"api_paquetes.php", "user_id"};
inline constexpr PostEndpoint<CasilleroRequest, CasilleroResponse> casillero{"api_casillero.php"};
inline constexpr PostEndpoint<CotizacionRequest, StandardResponse> cotizar{"api_cotizar.php"};
inline constexpr PostEndpoint<AutoRequest, StandardResponse> importarAuto{"api_auto.php"};
inline constexpr PostEndpoint<PerfilRequest, StandardResponse> perfil{"api_perfil.php"};

/// All of the above, for the description that marovenda-check prints.
inline constexpr std::tuple all{login, registro, recuperar, paquetes, casillero, cotizar, importarAuto, perfil};

} // namespace Endpoints
