#pragma once

#include "Records.h"

#include <QStringList>

#include <optional>

namespace Check {

/// What a screen of the app comes to with a reply, in the customer's terms.
struct Screen {
    enum class State { Works, Fails, NotTried };

    /// As the customer knows it: "Mis Paquetes".
    QString name;
    State state = State::NotTried;
    /// What stands on the screen, in Spanish, as a screen reader reads it.
    QStringList texts;
    /// For the engineer.
    QString remark;
};

// One function for each screen, with the record that the app gets for a reply, or nothing where it gets none.

/// Signing in with the form, and registering: both answer alike. What they show when they fail differs.
Screen loginScreen(const std::optional<LoginResponse> &reply);
Screen registroScreen(const std::optional<LoginResponse> &reply);
Screen recuperarScreen(const std::optional<StandardResponse> &reply);
/// `nombre` is the name that the sign-in gave.
Screen dashboardScreen(const std::optional<DashboardResponse> &reply, const QString &nombre);
Screen misPaquetesScreen(const std::optional<DashboardResponse> &reply);
Screen misCotizacionesScreen(const std::optional<DashboardResponse> &reply);
Screen casilleroScreen(const std::optional<CasilleroResponse> &reply);
Screen cotizarScreen(const std::optional<StandardResponse> &reply);
Screen importarAutoScreen(const std::optional<StandardResponse> &reply);
Screen perfilScreen(const std::optional<StandardResponse> &reply);

/// A screen that was not come to, and why.
Screen notTried(const QString &name, const QString &remark);

namespace ScreenName {
QString login();
QString registro();
QString recuperar();
QString dashboard();
QString misPaquetes();
QString misCotizaciones();
QString casillero();
QString cotizar();
QString importarAuto();
QString perfil();
} // namespace ScreenName

} // namespace Check
