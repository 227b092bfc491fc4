#pragma once

#include "Diagnosis.h"

namespace Check {

/// Returns the report as text: the findings, the worst first, with how to fix them; what each screen shows; and the
/// requests. `colours` adds escape sequences for a terminal. Texts from the server contain none.
QString textReport(const Order &order, const Diagnosis &diagnosis, bool colours);

/// Returns the report as a JSON object, which docs/checking-a-server.md describes.
QByteArray jsonReport(const Order &order, const Diagnosis &diagnosis);

/// "fault", "warning", "note"; "works", "fails", "not tried".
QString nameOf(Severity severity);
QString nameOf(Screen::State state);

} // namespace Check
