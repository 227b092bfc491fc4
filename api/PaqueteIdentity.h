#pragma once

#include "Records.h"

/// What makes a package row that row: its tracking number, so that two with the same number, or without one, are
/// alike.
inline const std::optional<QString> &identityOf(const DashboardResponse::Paquete &row) { return row.tracking; }
