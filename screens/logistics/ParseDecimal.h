#pragma once

#include <QString>

/// Parses a number as strtod does in the "C" locale: with a decimal point, an optional sign and exponent,
/// hexadecimal, "inf" and "nan". Returns 0 if the text is not a number, starts with white space, or has anything
/// after the number.
double parseDecimal(const QString &text);
