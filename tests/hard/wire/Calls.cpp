#include "Calls.h"

#include "ApiClient.h"

#include <QCoreApplication>
#include <QThread>

using namespace Qt::StringLiterals;

namespace Calls {

namespace {

template <Record Reply>
std::function<void(std::optional<Reply>)> noting(const DeliveryPtr &delivery)
{
    return [delivery](const std::optional<Reply> &reply) {
        ++delivery->completions;
        delivery->took = delivery->since.elapsed();
        delivery->misplaced |=
            !delivery->returned || QThread::currentThread() != QCoreApplication::instance()->thread();
        delivery->record = reply ? Json::write(*reply) : std::nullopt;
    };
}

template <Record Reply, Record Request>
Call post(const char *name, const char *endpoint, std::function<Request(const QString &)> request,
          std::function<Reply(const QString &)> reply)
{
    const QByteArray path = QByteArray("/") + endpoint;
    return {name, path, "POST " + path,
            [reply](const QByteArray &text) { return Json::write(reply(QString::fromUtf8(text))).value_or("?"); },
            [endpoint, request](const QByteArray &text, const DeliveryPtr &delivery) {
                ApiClient::instance().post<Reply>(QString::fromUtf8(endpoint), request(QString::fromUtf8(text)),
                                                  noting<Reply>(delivery));
            }};
}

LoginResponse signedIn(const QString &text) { return {u"success"_s, text, u"7"_s, u"Ana"_s}; }
StandardResponse done(const QString &text) { return {u"success"_s, text}; }
CasilleroResponse mailbox(const QString &text) { return {u"success"_s, u"Ana"_s, text}; }

DashboardResponse listing(const QString &text)
{
    return {u"success"_s,
            text,
            {{{u"1Z 1"_s, u"Zapatos"_s, u"En Miami"_s, u"2024-01-02"_s}, {}}},
            {{{u"Miami"_s, u"Libros"_s, u"Pendiente"_s}}}};
}

Call fetch()
{
    constexpr qint64 user = 7;
    return {"listing", "/api_paquetes.php", "GET /api_paquetes.php?user_id=7",
            [](const QByteArray &text) { return Json::write(listing(QString::fromUtf8(text))).value_or("?"); },
            [](const QByteArray &, const DeliveryPtr &delivery) {
                ApiClient::instance().fetchDashboard(user, noting<DashboardResponse>(delivery));
            }};
}

} // namespace

DeliveryPtr Call::start(const QByteArray &text) const
{
    auto delivery = std::make_shared<Delivery>();
    delivery->since.start();
    make(text, delivery);
    delivery->returned = true;
    return delivery;
}

const std::array<Call, count> &all()
{
    static const std::array<Call, count> calls{
        post<LoginResponse, LoginRequest>(
            "sign-in", "api_login.php",
            [](const QString &text) {
                return LoginRequest{text, u"secret"_s};
            },
            signedIn),
        post<StandardResponse, RecuperarRequest>(
            "recovery", "api_recuperar.php", [](const QString &text) { return RecuperarRequest{text}; }, done),
        post<LoginResponse, RegistroRequest>(
            "registration", "api_registro.php",
            [](const QString &text) {
                return RegistroRequest{text, u"a@b.c"_s, u"secret"_s, u"D"_s, u"C"_s};
            },
            signedIn),
        post<StandardResponse, PerfilRequest>(
            "profile", "api_perfil.php",
            [](const QString &text) {
                return PerfilRequest{7, u"Ana"_s, u"a@b.c"_s, {}, text};
            },
            done),
        post<CasilleroResponse, CasilleroRequest>(
            "mailbox", "api_casillero.php", [](const QString &text) { return CasilleroRequest{text}; }, mailbox),
        post<StandardResponse, CotizacionRequest>(
            "quote", "api_cotizar.php",
            [](const QString &text) { return CotizacionRequest{7, u"aereo"_s, u"M"_s, u"C"_s, 1.5, 20, text}; },
            done),
        post<StandardResponse, AutoRequest>(
            "vehicle", "api_auto.php",
            [](const QString &text) {
                return AutoRequest{7, u"Seat"_s, text, u"2020"_s, u"Miami"_s};
            },
            done),
        fetch(),
    };
    return calls;
}

} // namespace Calls
