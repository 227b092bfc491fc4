#pragma once

#include <QLatin1StringView>

/// The service's endpoints, relative to its base address. Each comment names the records of the request and the
/// reply. Requests are POSTs, except that of the listing.
namespace Endpoints {

/// LoginRequest; LoginResponse.
inline constexpr QLatin1StringView login{"api_login.php"};
/// RegistroRequest; LoginResponse.
inline constexpr QLatin1StringView registro{"api_registro.php"};
/// RecuperarRequest; StandardResponse.
inline constexpr QLatin1StringView recuperar{"api_recuperar.php"};
/// PerfilRequest; StandardResponse.
inline constexpr QLatin1StringView perfil{"api_perfil.php"};
/// CasilleroRequest; CasilleroResponse.
inline constexpr QLatin1StringView casillero{"api_casillero.php"};
/// CotizacionRequest; StandardResponse.
inline constexpr QLatin1StringView cotizar{"api_cotizar.php"};
/// AutoRequest; StandardResponse.
inline constexpr QLatin1StringView importarAuto{"api_auto.php"};
/// The listing: a GET with the customer's number in `user_id`; DashboardResponse.
inline constexpr QLatin1StringView paquetes{"api_paquetes.php"};

} // namespace Endpoints
