#pragma once

#include "SecondLibrary.h"

/// Reads the bytes as each of the thirteen records and holds the result against the second library's view of them.
/// Returns what is wrong, or nothing.
QByteArray judge(QByteArrayView bytes, const SecondLibrary::Document &document);
