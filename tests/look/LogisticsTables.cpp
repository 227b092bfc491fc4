#include "Tables.h"

using namespace Qt::StringLiterals;
using namespace look;

namespace {

/// An empty message keeps its line.
Table emptyMessage() { return {{u"msg"_s, {below(u"enviar"_s, 12), height(22)}}}; }

QList<Rule> message() { return {below(u"enviar"_s, 12), left(24), right(24), text(u"body"_s, blue), centredText()}; }

Table summary()
{
    return {
        {u"header"_s, {top(24), left(24), right(24)}},
        {u"photo"_s, {size(50, 50), left(24), level(u"header"_s), symbol(u"person.circle.fill"_s, grey)}},
        {u"greeting"_s, {after(u"photo"_s, 8 + 8), text(u"headline"_s, black)}},
        {u"Bienvenido"_s, {after(u"photo"_s, 8 + 8), below(u"greeting"_s, 8), text(u"subheadline"_s, grey)}},
        {u"cerrarSesion"_s, {right(24), level(u"header"_s), symbol(u"rectangle.portrait.and.arrow.right"_s, black)}},
        {u"summary"_s, {below(u"header"_s, 24), left(24), right(24), shape(24, blue)}},
        {u"Mi Resumen"_s, {inside(u"summary"_s, 16, 16, -1, -1), text(u"title2 bold"_s, white)}},
        {u"paqueteCount"_s, {below(u"Mi Resumen"_s, 8 + 8), inside(u"summary"_s, 16, -1, -1, 16)}},
        {u"cotizacionCount"_s, {below(u"Mi Resumen"_s, 8 + 8), inside(u"summary"_s, -1, -1, 16, 16)}},
        {u"paqueteCount/4"_s, {inside(u"paqueteCount"_s, 0, 0, -1, -1), text(u"largeTitle bold"_s, white)}},
        {u"Paquetes"_s,
         {below(u"paqueteCount/4"_s, 8), inside(u"paqueteCount"_s, 0, -1, -1, 0), text(u"body"_s, white)}},
        {u"cotizacionCount/4"_s, {inside(u"cotizacionCount"_s, 0, 0, -1, -1), text(u"largeTitle bold"_s, white)}},
        {u"Cotizaciones"_s,
         {below(u"cotizacionCount/4"_s, 8), inside(u"cotizacionCount"_s, 0, -1, -1, 0), text(u"body"_s, white)}},
    };
}

Table tiles()
{
    Table table{{u"tiles"_s, {below(u"summary"_s, 24), left(24), right(24)}}};
    const QStringList names{u"Casillero"_s, u"Cotizar"_s, u"Autos"_s, u"Perfil"_s, u"Dev"_s};
    const QStringList symbols{u"shippingbox"_s, u"doc.text"_s, u"car"_s, u"person"_s, u"info.circle"_s};
    for (qsizetype i = 0; i < names.size(); ++i) {
        const QString picture = names[i] + u"Tile"_s;
        table += {
            {picture,
             {left(24 + 80 * qreal(i) + 4), inside(u"tiles"_s, -1, 0, -1, -1), size(56, 56),
              shape(18, faint(blue, 0.1)), symbol(symbols[i], blue)}},
            {names[i],
             {below(picture, 8), left(24 + 80 * qreal(i)), text(u"caption bold"_s, black), centredText(),
              size(64, 16)}},
        };
    }
    return table;
}

Table recentRows()
{
    const auto row = [](const QString &section, const QString &title, const QString &first, const QString &detail,
                        const QString &badge, const QColor &badgeColour) -> Table {
        const QString card = section + u"/card"_s;
        return {
            {section, {left(24), right(24)}},
            {title, {inside(section, 0, 0, -1, -1), text(u"headline"_s, black)}},
            {card, {below(title, 12), left(24), right(24), shape(16, white, true)}},
            {section + u"/tile"_s,
             {size(48, 48), inside(card, 12, -1, -1, -1), level(card), shape(12, faint(grey, 0.1))}},
            {first, {after(section + u"/tile"_s, 8 + 8), text(u"body bold"_s, black)}},
            {detail, {after(section + u"/tile"_s, 8 + 8), below(first, 8), text(u"caption"_s, grey)}},
            {section + u'/' + badge,
             {inside(card, -1, -1, 12, -1), level(card), text(u"caption bold"_s, badgeColour)}},
        };
    };
    Table table = row(u"recentPackages"_s, u"Envíos Recientes"_s, u"Tracking: MRV-100230"_s,
                      u"Computadora portátil de 14 pulgadas"_s, u"RECIBIDO"_s, green) +
                  row(u"recentQuotes"_s, u"Mis Cotizaciones"_s, u"Origen: Miami, USA"_s, u"Bicicleta de niño"_s,
                      u"PENDIENTE"_s, blue);
    return table + Table{
                       {u"recentPackages"_s, {below(u"tiles"_s, 24)}},
                       {u"recentQuotes"_s, {below(u"recentPackages"_s, 24)}},
                       {u"recentQuotes/card"_s, {height(12 + 48 + 12)}},
                       {u"Ver todos"_s, {right(24), level(u"Envíos Recientes"_s), text(u"body"_s, blue)}},
                       {u"Ver todas"_s, {right(24), level(u"Mis Cotizaciones"_s), text(u"body"_s, blue)}},
                   };
}

Table tracking()
{
    return {
        {u"tracking"_s, {below(u"recentQuotes"_s, 24), left(24), right(24), shape(16, white, true)}},
        {u"Rastreo de Paquetes"_s, {inside(u"tracking"_s, 16, 16, -1, -1), text(u"headline"_s, black)}},
        {u"trackingText"_s,
         {below(u"Rastreo de Paquetes"_s, 12), inside(u"tracking"_s, 16, -1, -1, 16), height(46),
          shape(10, faint(grey, 0.1))}},
        {u"buscar"_s,
         {after(u"trackingText"_s, 8), inside(u"tracking"_s, -1, -1, 16, 16), height(46), shape(10, blue),
          text(u"body bold"_s, white)}},
        {u"Buscar"_s, {inside(u"buscar"_s, 16, 12, 16, 12)}},
    };
}

Table rows(const QString &title, const QString &first, const QString &second, const QString &badge,
           const QColor &badgeColour)
{
    return {
        {title, {left(16), text(u"largeTitle bold"_s, black), balancedFrom(title, bar, bar + 52)}},
        {u"rows/card"_s, {left(16), right(16), shape(10, white)}},
        {first, {left(32), inside(u"rows/card"_s, 16, 11 + 4, -1, -1), text(u"body bold"_s, black)}},
        {u"rows/"_s + badge, {right(32), level(first), text(u"caption bold"_s, badgeColour)}},
        {second, {left(32), below(first, 6), text(u"subheadline"_s, grey)}},
        {u"rows/separator"_s, {left(32), right(16), below(second, 4 + 11 - 1), height(1), colour(separator)}},
    };
}

Table noQuotations()
{
    const QString none = u"No tienes cotizaciones registradas."_s;
    return {
        {u"empty"_s, {left(16), right(16), shape(10, white)}},
        {none, {inside(u"empty"_s, 16, 16, 16, 16), text(u"body"_s, grey)}},
    };
}

Table mailbox()
{
    return {
        {u"Mi Casillero"_s, {centred(), text(u"title bold"_s, black), centredText()}},
        {u"card"_s, {below(u"Mi Casillero"_s, 24 + 8), left(24), right(24), height(228), shape(24, white, true)}},
        {u"info"_s, {inside(u"card"_s, 24, 24, 24, -1), text(u"headline"_s, blue), centredText()}},
        {u"direccion"_s,
         {below(u"info"_s, 16), inside(u"card"_s, 24, -1, 24, 24), height(5 * 22 + 4 * 8), centredText()}},
        {u"volver"_s, mainButton(u"card"_s, 32 + 8, u"body"_s)},
        {u"volver"_s, {balancedFrom(u"Mi Casillero"_s, 0, 844)}},
    };
}

Table quotation()
{
    return {
        {u"Cotizar Importación"_s, {top(bar + 24), left(24), text(u"title2 bold"_s, black)}},
        {u"tipo"_s,
         {below(u"Cotizar Importación"_s, 12), left(24), right(24), height(32),
          shape(9, faint(QColor(0x76, 0x76, 0x80), 0.12))}},
        {u"tipo/thumb"_s, {size(171 - 4, 28), inside(u"tipo"_s, 2, 2, -1, 2)}},
        {u"tipo/face"_s, {size(171 - 4, 28), shape(7, white)}},
        {u"peso"_s, field(u"tipo"_s, 8 + 12)},
        {u"valor"_s, field(u"peso"_s, 12)},
        {u"descripcion"_s, field(u"valor"_s, 12)},
        {u"enviar"_s, mainButton(u"descripcion"_s, 12 + 12)},
        {u"msg"_s, message()},
    };
}

Table vehicle()
{
    return {
        {u"Importar Vehículo"_s, {top(bar + 24), left(24), text(u"title2 bold"_s, black)}},
        {u"marca"_s, field(u"Importar Vehículo"_s, 12)},
        {u"modelo"_s, field(u"marca"_s, 12)},
        {u"anio"_s, field(u"modelo"_s, 12)},
        {u"ubicacion"_s, field(u"anio"_s, 12)},
        {u"enviar"_s, mainButton(u"ubicacion"_s, 12 + 12)},
        {u"msg"_s, message()},
    };
}

} // namespace

QList<SceneTable> logisticsTables()
{
    return {
        {"panel", summary() + tiles() + recentRows() + tracking()},
        {"paquetes", rows(u"Mis Paquetes"_s, u"Tracking: MRV-100230"_s, u"Computadora portátil de 14 pulgadas"_s,
                          u"RECIBIDO"_s, green)},
        {"cotizaciones",
         rows(u"Mis Cotizaciones"_s, u"Bicicleta de niño"_s, u"Origen: Miami, USA"_s, u"PENDIENTE"_s, blue)},
        {"cotizaciones-vacio", noQuotations()},
        {"casillero", mailbox()},
        {"cotizar", emptyMessage()},
        {"cotizar-enviado", quotation()},
        {"autos", emptyMessage()},
        {"autos-enviado", vehicle()},
    };
}
