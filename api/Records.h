#pragma once

#include <QList>
#include <QString>

#include <boost/describe.hpp>

#include <optional>

// The thirteen records of the service. Json.h reads and writes a record by its described fields: the name of a field
// is its JSON key. The fields of requests are required, those of replies optional. Rows keep the service's order.

struct LoginRequest {
    QString email;
    QString password;
};
BOOST_DESCRIBE_STRUCT(LoginRequest, (), (email, password))

/// The reply to a sign-in and to a registration.
struct LoginResponse {
    std::optional<QString> status;
    std::optional<QString> message;
    /// The customer's number, as text.
    std::optional<QString> id;
    std::optional<QString> nombre;
};
BOOST_DESCRIBE_STRUCT(LoginResponse, (), (status, message, id, nombre))

struct RecuperarRequest {
    QString email;
};
BOOST_DESCRIBE_STRUCT(RecuperarRequest, (), (email))

struct StandardResponse {
    std::optional<QString> status;
    std::optional<QString> message;
};
BOOST_DESCRIBE_STRUCT(StandardResponse, (), (status, message))

struct RegistroRequest {
    QString nombre;
    QString email;
    QString password;
    QString direccion;
    QString ciudad;
};
BOOST_DESCRIBE_STRUCT(RegistroRequest, (), (nombre, email, password, direccion, ciudad))

struct PerfilRequest {
    qint64 user_id = 0;
    QString nombre;
    QString email;
    QString password;
    /// The photo's bytes in base64, or empty.
    QString avatar_base64;

    /// The size of the largest photo, in bytes.
    static constexpr qint64 largestPhoto = qint64(64) * 1024 * 1024;
};
BOOST_DESCRIBE_STRUCT(PerfilRequest, (), (user_id, nombre, email, password, avatar_base64))

struct AutoRequest {
    qint64 user_id = 0;
    QString marca;
    QString modelo;
    /// The year, as text.
    QString anio;
    QString ubicacion;
};
BOOST_DESCRIBE_STRUCT(AutoRequest, (), (user_id, marca, modelo, anio, ubicacion))

struct CotizacionRequest {
    qint64 user_id = 0;
    /// `aereo` or `maritimo`.
    QString tipo;
    QString origen;
    QString destino;
    /// In pounds.
    double peso = 0;
    /// In US dollars.
    double valor = 0;
    QString descripcion;

    static constexpr QStringView aereo = u"aereo";
    static constexpr QStringView maritimo = u"maritimo";
};
BOOST_DESCRIBE_STRUCT(CotizacionRequest, (), (user_id, tipo, origen, destino, peso, valor, descripcion))

struct CasilleroRequest {
    /// The service expects text here, and a number everywhere else.
    QString user_id;
};
BOOST_DESCRIBE_STRUCT(CasilleroRequest, (), (user_id))

struct CasilleroResponse {
    std::optional<QString> status;
    std::optional<QString> nombreCompleto;
    std::optional<QString> message;
};
BOOST_DESCRIBE_STRUCT(CasilleroResponse, (), (status, nombreCompleto, message))

struct DashboardResponse {
    struct Paquete {
        std::optional<QString> tracking;
        std::optional<QString> descripcion;
        std::optional<QString> estado;
        /// The service's own text; never parsed as a date.
        std::optional<QString> fecha_recibido;
    };
    struct Cotizacion {
        std::optional<QString> origen;
        std::optional<QString> descripcion;
        std::optional<QString> estado;
    };

    std::optional<QString> status;
    std::optional<QString> avatar;
    std::optional<QList<Paquete>> paquetes;
    std::optional<QList<Cotizacion>> cotizaciones;
};
BOOST_DESCRIBE_STRUCT(DashboardResponse::Paquete, (), (tracking, descripcion, estado, fecha_recibido))
BOOST_DESCRIBE_STRUCT(DashboardResponse::Cotizacion, (), (origen, descripcion, estado))
BOOST_DESCRIBE_STRUCT(DashboardResponse, (), (status, avatar, paquetes, cotizaciones))
