#pragma once

#include <QStringView>

/// The texts that the screens show for the missing fields of a row.
namespace Absent {

inline constexpr QStringView tracking = u"N/A";
inline constexpr QStringView origen = u"N/A";
inline constexpr QStringView descripcion = u"Sin descripción";
/// The heading of a quotation in the list of quotations.
inline constexpr QStringView titulo = u"Cotización";
inline constexpr QStringView estadoPaquete = u"RECIBIDO";
inline constexpr QStringView estadoCotizacion = u"PENDIENTE";

} // namespace Absent
