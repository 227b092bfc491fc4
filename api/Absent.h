#pragma once

#include <QStringView>

/// What the screens show where a row lacks a field.
namespace Absent {

inline constexpr QStringView tracking = u"N/A";
inline constexpr QStringView origen = u"N/A";
inline constexpr QStringView descripcion = u"Sin descripción";
/// The heading of a quotation in the list of all.
inline constexpr QStringView titulo = u"Cotización";
inline constexpr QStringView estadoPaquete = u"RECIBIDO";
inline constexpr QStringView estadoCotizacion = u"PENDIENTE";

} // namespace Absent
