#pragma once

#include <QString>

/// The number that a typed text is, as C reads one whatever the customer's locale: decimal point, optional sign and
/// exponent, hexadecimal, "inf" and "nan" too. 0 for a text that starts with white space, has anything left over, or
/// is no number.
double parseDecimal(const QString &text);
