#pragma once

#include "Tally.h"
#include "Wire.h"

#include <QString>

/// What takes its time: servers that fall silent, which end an exchange as absent when the limit on silence is
/// reached, not before and not much later; and slow ones, which do not.
namespace Silences {

/// How many milliseconds later is not much later, on a machine that has other things to do.
constexpr qint64 late = 3000;

/// With a limit of a second.
void shortened(Tally &tally, Wire &wire);

/// With the limit that customers get, each check in a process of its own and many of them at a time.
void real(Tally &tally);

/// One of the above's processes. The name is what `real` gave.
void alone(Tally &tally, Wire &wire, const QString &name);

} // namespace Silences
