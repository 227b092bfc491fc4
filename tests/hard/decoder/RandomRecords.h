#pragma once

#include <QtGlobal>

class Tally;

/// Writes random records, `count` of each of the thirteen, and reads them again with both libraries.
void tryRandomRecords(Tally &tally, quint64 seed, int count);
