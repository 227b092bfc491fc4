#include "Seed.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

using Paquete = DashboardResponse::Paquete;
using Cotizacion = DashboardResponse::Cotizacion;

const QStringList contents{
    u"Zapatillas de montaña para niña, talla 34"_s,
    u"Audífonos inalámbricos con estuche"_s,
    u"Cámara fotográfica y trípode"_s,
    u"Piñata plegable y adornos de cumpleaños"_s,
    u"Repuesto de motor: bomba de agua"_s,
    u"Libros de cocina panameña (3)"_s,
    u"Computadora portátil de 14 pulgadas"_s,
    u"Sábanas de algodón, tamaño queen"_s,
    u"Suplemento de vitamina D, 120 cápsulas"_s,
    u"Muñeca de colección"_s,
    u"Lámpara de pie «Otoño»"_s,
    u"Uniforme de enfermería, azul añil"_s,
    u"Teclado mecánico en español"_s,
    u"Cafetera de émbolo"_s,
    u"Caña de pescar telescópica"_s,
    u"Pañales ecológicos, paquete de 60"_s,
};

const QStringList states{u"recibido"_s, u"en tránsito"_s, u"en aduana"_s, u"listo para retirar"_s, u"entregado"_s};

const QString longDescription =
    u"Juego de comedor desarmado en cuatro cajas: mesa extensible de roble, seis sillas tapizadas en gris, dos "
    "bancos pequeños y un aparador; la caja número tres llegó con una esquina golpeada, se tomaron fotografías, se "
    "avisó al vendedor y se reforzó el empaque con cartón doble y esquineros antes de despacharla por vía marítima"_s;

QString tracking(int number) { return u"MRV-%1"_s.arg(number); }

/// Returns the day on which the package arrived. Four packages a day arrive until the end of 2025.
QString day(int number)
{
    const int before = (230 - number) / 4;
    return u"2025-%1-%2"_s.arg(12 - before / 28, 2, 10, QChar(u'0')).arg(28 - before % 28, 2, 10, QChar(u'0'));
}

/// Returns a package of the customer with many; number 1 is the oldest. Some lack a field, as in real data.
Paquete packageOfMany(int number)
{
    Paquete package{tracking(100000 + number), contents[number % contents.size()], std::nullopt, day(number)};
    package.estado = number > 222 ? states[(230 - number) % 4] : states[(number * 7 + number / 5) % states.size()];
    if (number % 37 == 33)
        package.tracking.reset();
    if (number % 23 == 2)
        package.descripcion.reset();
    if (number % 29 == 8)
        package.estado.reset();
    if (number % 17 == 3)
        package.fecha_recibido.reset();
    if (number == 215)
        package.descripcion = longDescription;
    // Two boxes of the same shipment.
    if (number == 140)
        package.tracking = tracking(100141);
    return package;
}

QList<Paquete> manyPackages()
{
    QList<Paquete> packages;
    for (int number = 230; number >= 1; --number)
        packages.append(packageOfMany(number));
    return packages;
}

QList<Cotizacion> manyQuotations()
{
    const QString miami = u"Miami, USA"_s;
    return {
        {miami, u"Bicicleta de niño"_s, u"pendiente"_s},
        {miami, u"Dos llantas de camión"_s, u"en revisión"_s},
        {miami, u"Refrigeradora pequeña"_s, u"aprobada"_s},
        {miami, std::nullopt, u"aprobada"_s},
        {u"Orlando, USA"_s, u"Piezas de piano, muy frágiles"_s, u"rechazada"_s},
        {miami, u"Colchón individual"_s, std::nullopt},
        {std::nullopt, u"Herramientas de jardín"_s, u"vencida"_s},
        {miami, u"Monitor de 32 pulgadas"_s, u"aprobada"_s},
        {miami, u"Máquina de coser"_s, u"aprobada"_s},
        {miami, u"Instrumentos de dibujo técnico"_s, u"vencida"_s},
        {u"Nueva York, USA"_s, u"Archivo de fotografías del año 1950"_s, u"rechazada"_s},
        {miami, u"Cuna y cambiador de bebé"_s, u"vencida"_s},
    };
}

} // namespace

QList<DemoCustomer> demoCustomers()
{
    const QList<Paquete> few{
        {tracking(200002), u"Mochila escolar y útiles"_s, u"en tránsito"_s, u"2025-12-27"_s},
        {tracking(200001), u"Filtro de aceite para camión pequeño"_s, u"recibido"_s, u"2025-12-22"_s},
    };
    return {
        {u"Ana Lucía Peñalver Ríos"_s, u"ana@marovenda.example"_s, u"Casillero#1"_s,
         u"Calle 50, edificio Ñandú, piso 3"_s, u"Ciudad de Panamá"_s, manyPackages(), manyQuotations()},
        {u"Bruno Díaz"_s,
         u"bruno@marovenda.example"_s,
         u"Casillero#2"_s,
         u"Avenida Central 12"_s,
         u"David"_s,
         few,
         {{u"Miami, USA"_s, u"Motor fuera de borda"_s, u"aprobada"_s}}},
        {u"Carla Núñez"_s, u"carla@marovenda.example"_s, u"Casillero#3"_s, u"Vía España 101"_s, u"Colón"_s, {}, {}},
    };
}
