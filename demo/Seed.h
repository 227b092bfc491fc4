#pragma once

#include "Records.h"

#include <QList>
#include <QString>

/// A customer of a new database. The passwords are public.
struct DemoCustomer {
    QString nombre;
    QString email;
    QString password;
    QString direccion;
    QString ciudad;
    /// Newest first, as are the quotations.
    QList<DashboardResponse::Paquete> paquetes;
    QList<DashboardResponse::Cotizacion> cotizaciones;
};

/// Returns three customers: one with many packages, one with a few, and one without any. Every call returns the same.
QList<DemoCustomer> demoCustomers();
