#pragma once

#include "Records.h"

#include <QVariant>

/// What makes a package row that row: its tracking number, so that two with the same number, or without one, are
/// alike.
inline QVariant identityOf(const DashboardResponse::Paquete &row, int)
{
    return row.tracking ? QVariant(*row.tracking) : QVariant();
}
