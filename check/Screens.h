#pragma once

#include "Records.h"

#include <QStringList>

#include <optional>

namespace Check {

/// What a screen of the app shows for a reply.
struct Screen {
    enum class State { Works, Fails, NotTried };

    /// The screen's title, for example "Mis Paquetes".
    QString name;
    State state = State::NotTried;
    /// The texts on the screen, as a screen reader reads them.
    QStringList texts;
    /// A remark for the engineer.
    QString remark;
};

// One function for each screen. Its argument is the record that the app receives, or nothing if the reply is
// unreadable.

Screen loginScreen(const std::optional<LoginResponse> &reply);
Screen registroScreen(const std::optional<LoginResponse> &reply);
Screen recuperarScreen(const std::optional<StandardResponse> &reply);
/// `nombre` is the name in the reply to the sign-in.
Screen dashboardScreen(const std::optional<DashboardResponse> &reply, const QString &nombre);
Screen misPaquetesScreen(const std::optional<DashboardResponse> &reply);
Screen misCotizacionesScreen(const std::optional<DashboardResponse> &reply);
Screen casilleroScreen(const std::optional<CasilleroResponse> &reply);
Screen cotizarScreen(const std::optional<StandardResponse> &reply);
Screen importarAutoScreen(const std::optional<StandardResponse> &reply);
Screen perfilScreen(const std::optional<StandardResponse> &reply);

/// Returns a screen that was not tried; `remark` says why.
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
