#pragma once

#include "Records.h"

#include <QList>
#include <QString>

/// A customer of a fresh database. The passwords are public: they are there to try the app with.
struct DemoCustomer {
    QString nombre;
    QString email;
    QString password;
    QString direccion;
    QString ciudad;
    /// Both newest first.
    QList<DashboardResponse::Paquete> paquetes;
    QList<DashboardResponse::Cotizacion> cotizaciones;
};

/// One customer with many packages, one with few, one with none; the same at each call.
QList<DemoCustomer> demoCustomers();
