#pragma once

#include "Records.h"

/// Returns the identity of a package row: its tracking number. Rows with the same number, or without one, are the
/// same.
inline const std::optional<QString> &identityOf(const DashboardResponse::Paquete &row) { return row.tracking; }
