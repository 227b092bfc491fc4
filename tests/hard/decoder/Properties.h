#pragma once

#include <QtGlobal>

/// Writes random records, `count` of each of the thirteen, and reads them again with both libraries. Prints what
/// failed and a tally; returns the process's exit status.
int tryProperties(quint64 seed, int count);
