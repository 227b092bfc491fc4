#include "Screens.h"

#include "Absent.h"
#include "ParseUserId.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// The texts must equal those of the screens. tests/check/tst_ScreensAgree compares them.

namespace {

using Check::Screen;
using State = Screen::State;

/// The number of rows listed in the report; also the number of rows on the dashboard.
constexpr qsizetype shownRows = 3;

template <class R>
QList<R> rowsOf(const std::optional<QList<R>> &rows)
{
    return rows.value_or(QList<R>());
}

QString textOf(const std::optional<QString> &field, QStringView absent) { return field.value_or(absent.toString()); }

QString headline(const DashboardResponse::Paquete &row)
{
    return u"Tracking: "_s + textOf(row.tracking, Absent::tracking);
}
QString badge(const DashboardResponse::Paquete &row) { return textOf(row.estado, Absent::estadoPaquete).toUpper(); }
QString origin(const DashboardResponse::Cotizacion &row)
{
    return u"Origen: "_s + textOf(row.origen, Absent::origen);
}
QString badge(const DashboardResponse::Cotizacion &row)
{
    return textOf(row.estado, Absent::estadoCotizacion).toUpper();
}
template <class R>
QString detail(const R &row)
{
    return textOf(row.descripcion, Absent::descripcion);
}

template <class R, class Text>
QStringList firstRows(const QList<R> &rows, Text text)
{
    QStringList all;
    for (const R &row : rows.first(std::min(shownRows, rows.size())))
        all += text(row).join(u", "_s);
    return all;
}

Screen form(const QString &name, const std::optional<StandardResponse> &reply, const QString &good,
            const QString &bad)
{
    const bool success = reply && reply->status == u"success"_s;
    return {name, success ? State::Works : State::Fails, {success ? good : bad}, {}};
}

Screen signIn(const QString &name, const std::optional<LoginResponse> &reply, const QString &bad)
{
    if (!reply)
        return {name, State::Fails, {bad}, {}};
    if (reply->status != u"success"_s)
        return {name, State::Fails, {reply->message.value_or(bad)}, {}};
    if (parseUserId(reply->id) == 0)
        return {name, State::Fails, {}, u"the form stays, without a message"_s};
    return {name, State::Works, {}, u"opens the dashboard"_s};
}

} // namespace

namespace Check {

Screen loginScreen(const std::optional<LoginResponse> &reply)
{
    return signIn(ScreenName::login(), reply, u"Error de credenciales"_s);
}

Screen registroScreen(const std::optional<LoginResponse> &reply)
{
    return signIn(ScreenName::registro(), reply, u"Error al registrar"_s);
}

Screen recuperarScreen(const std::optional<StandardResponse> &reply)
{
    const auto done = u"Solicitud procesada"_s;
    if (!reply)
        return {ScreenName::recuperar(), State::Fails, {done}, u"although the request failed"_s};
    // The screen ignores the status, so the customer cannot see the difference.
    const bool success = reply->status == u"success"_s;
    return {ScreenName::recuperar(), success ? State::Works : State::Fails, {reply->message.value_or(done)}, {}};
}

Screen dashboardScreen(const std::optional<DashboardResponse> &reply, const QString &nombre)
{
    const auto shown = reply.value_or(DashboardResponse());
    const auto paquetes = rowsOf(shown.paquetes);
    const auto cotizaciones = rowsOf(shown.cotizaciones);
    QStringList texts{u"Hola, "_s + nombre, u"%1 Paquetes"_s.arg(paquetes.size()),
                      u"%1 Cotizaciones"_s.arg(cotizaciones.size())};
    texts += firstRows(paquetes, [](const auto &row) { return QStringList{headline(row), detail(row), badge(row)}; });
    texts += firstRows(cotizaciones, [](const auto &row) {
        return QStringList{origin(row), detail(row), badge(row)};
    });
    return {ScreenName::dashboard(), reply ? State::Works : State::Fails, texts, {}};
}

Screen misPaquetesScreen(const std::optional<DashboardResponse> &reply)
{
    const auto paquetes = rowsOf(reply.value_or(DashboardResponse()).paquetes);
    const auto texts = firstRows(paquetes, [](const auto &row) {
        return QStringList{headline(row), detail(row), badge(row)};
    });
    QString remark = u"a blank list"_s;
    if (!paquetes.isEmpty())
        remark = u"%1 in all"_s.arg(paquetes.size());
    return {ScreenName::misPaquetes(), reply ? State::Works : State::Fails, texts, remark};
}

Screen misCotizacionesScreen(const std::optional<DashboardResponse> &reply)
{
    const auto cotizaciones = rowsOf(reply.value_or(DashboardResponse()).cotizaciones);
    QStringList texts{u"No tienes cotizaciones registradas."_s};
    QString remark;
    if (!cotizaciones.isEmpty()) {
        texts = firstRows(cotizaciones, [](const auto &row) {
            return QStringList{textOf(row.descripcion, Absent::titulo), badge(row), origin(row)};
        });
        remark = u"%1 in all"_s.arg(cotizaciones.size());
    }
    return {ScreenName::misCotizaciones(), reply ? State::Works : State::Fails, texts, remark};
}

Screen casilleroScreen(const std::optional<CasilleroResponse> &reply)
{
    const bool named = reply && reply->nombreCompleto;
    return {ScreenName::casillero(),
            named ? State::Works : State::Fails,
            {named ? *reply->nombreCompleto : u"Error"_s},
            u"above the warehouse's address"_s};
}

Screen cotizarScreen(const std::optional<StandardResponse> &reply)
{
    return form(ScreenName::cotizar(), reply, u"Enviado con éxito"_s, u"Error al cotizar"_s);
}

Screen importarAutoScreen(const std::optional<StandardResponse> &reply)
{
    return form(ScreenName::importarAuto(), reply, u"Solicitud enviada"_s, u"Error al enviar"_s);
}

Screen perfilScreen(const std::optional<StandardResponse> &reply)
{
    return form(ScreenName::perfil(), reply, u"Perfil actualizado con éxito"_s, u"Error al actualizar"_s);
}

Screen notTried(const QString &name, const QString &remark) { return {name, State::NotTried, {}, remark}; }

QString ScreenName::login() { return u"Iniciar Sesión"_s; }
QString ScreenName::registro() { return u"Crear Cuenta"_s; }
QString ScreenName::recuperar() { return u"Recuperar Contraseña"_s; }
QString ScreenName::dashboard() { return u"Mi Resumen"_s; }
QString ScreenName::misPaquetes() { return u"Mis Paquetes"_s; }
QString ScreenName::misCotizaciones() { return u"Mis Cotizaciones"_s; }
QString ScreenName::casillero() { return u"Mi Casillero"_s; }
QString ScreenName::cotizar() { return u"Cotizar Importación"_s; }
QString ScreenName::importarAuto() { return u"Importar Vehículo"_s; }
QString ScreenName::perfil() { return u"Mi Perfil"_s; }

} // namespace Check
