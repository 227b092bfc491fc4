#pragma once

#include "Json.h"
#include "Records.h"

#include <QByteArrayList>
#include <QMetaType>

#include <bit>
#include <type_traits>

/// The records of Records.h, and what a test does with any of them by its field list.
namespace RecordTools {

/// All of them: a new record is added here and nowhere else in the tests.
using All =
    boost::mp11::mp_list<LoginRequest, RecuperarRequest, RegistroRequest, PerfilRequest, AutoRequest,
                         CotizacionRequest, CasilleroRequest, LoginResponse, StandardResponse, CasilleroResponse,
                         DashboardResponse, DashboardResponse::Paquete, DashboardResponse::Cotizacion>;

template <Record R>
inline const char *const name = QMetaType::fromType<R>().name();

/// Calls `visit` with a default value of each record of a list.
template <class List, class Visit>
void forEachRecord(const Visit &visit)
{
    boost::mp11::mp_for_each<boost::mp11::mp_transform<std::type_identity, List>>(
        [&](auto type) { visit(typename decltype(type)::type{}); });
}

/// Calls `visit(key, value)` with each field of a record.
template <class R, class Visit>
requires Record<std::remove_const_t<R>>
void forEachField(R &record, const Visit &visit)
{
    boost::mp11::mp_for_each<Json::Fields<std::remove_const_t<R>>>(
        [&](auto field) { visit(field.name, record.*field.pointer); });
}

/// A record with some of its fields set: `with(&LoginResponse::id, u"42"_s, &LoginResponse::nombre, u""_s)`.
template <Record R, class T, class... More>
R with(T R::*field, std::type_identity_t<T> value, More... more)
{
    R record;
    if constexpr (sizeof...(More) > 0)
        record = with(more...);
    record.*field = std::move(value);
    return record;
}

// Something in every field, different in each.

inline void fill(QString &value, const char *key)
{
    value = QString::fromLatin1(key) + QStringLiteral(" ñ/\\\"\n\u0001 \U0001F4E6");
}
inline void fill(qint64 &value, const char *) { value = -9007199254740993; }
inline void fill(double &value, const char *key) { value = static_cast<double>(qstrlen(key)) + 0.1; }
template <class T>
void fill(QList<T> &rows, const char *key);
template <class T>
void fill(std::optional<T> &value, const char *key);
template <Record R>
void fill(R &record, const char *)
{
    forEachField(record, [](const char *key, auto &value) { fill(value, key); });
}
template <class T>
void fill(QList<T> &rows, const char *key)
{
    rows.resize(2);
    fill(rows[1], key);
}
template <class T>
void fill(std::optional<T> &value, const char *key)
{
    fill(value.emplace(), key);
}

template <Record R>
R filled()
{
    R record;
    fill(record, "");
    return record;
}

// Equality to the bit: records have none of their own.

template <class T>
bool same(const std::optional<T> &one, const std::optional<T> &other);
template <class T>
bool same(const QList<T> &one, const QList<T> &other);
template <class T>
bool same(const T &one, const T &other)
{
    if constexpr (Record<T>) {
        bool equal = true;
        boost::mp11::mp_for_each<Json::Fields<T>>(
            [&](auto field) { equal = equal && same(one.*field.pointer, other.*field.pointer); });
        return equal;
    } else if constexpr (std::is_same_v<T, double>) {
        return std::bit_cast<quint64>(one) == std::bit_cast<quint64>(other);
    } else {
        return one == other;
    }
}
template <class T>
bool same(const std::optional<T> &one, const std::optional<T> &other)
{
    return one.has_value() == other.has_value() && (!one || same(*one, *other));
}
template <class T>
bool same(const QList<T> &one, const QList<T> &other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const T &left, const T &right) { return same(left, right); });
}

/// What a value of a field is in JSON, as the reader's reasons name it.
template <class T>
inline constexpr const char *wanted = "number";
template <>
inline constexpr const char *wanted<QString> = "text";
template <class T>
inline constexpr const char *wanted<QList<T>> = "array";
template <class T>
inline constexpr const char *wanted<std::optional<T>> = wanted<T>;

/// A value that a field of this kind takes.
inline QByteArray goodToken(QByteArrayView kind)
{
    return kind == "text" ? "\"good\"" : kind == "array" ? "[{}]" : "7";
}

/// The JSON object of a record with a good value in each field, but `token` in the field `key`, which is left out
/// when there is none.
template <Record R>
QByteArray document(QByteArrayView key = {}, const QByteArray &token = {})
{
    QByteArrayList members;
    R record;
    forEachField(record, [&]<class T>(const char *each, T &) {
        const QByteArray value = key == each ? token : goodToken(wanted<T>);
        if (!value.isEmpty())
            members += '"' + QByteArray(each) + "\":" + value;
    });
    return '{' + members.join(',') + '}';
}

} // namespace RecordTools
