#pragma once

#include "Diagnosis.h"

namespace Check {

/// The report for people: worst first, a line each, how to fix it, what each screen shows, what was asked. With
/// `colours` for a terminal that has some. Nothing of the server's in it can command a terminal.
QString textReport(const Order &order, const Diagnosis &diagnosis, bool colours);

/// The same for machines: one JSON object, described in docs/checking-a-server.md.
QByteArray jsonReport(const Order &order, const Diagnosis &diagnosis);

/// A text as it may be printed: harmless, and without the password should the server have sent it back.
QString printable(const Order &order, const QString &text);

/// "fault", "warning", "note"; "works", "fails", "not tried".
QString nameOf(Severity severity);
QString nameOf(Screen::State state);

} // namespace Check
