#pragma once

#include <QString>

#include <optional>

/// The customer's number from the text that the service gives: an optional sign and ASCII digits, within 64 bits.
/// Anything else, blanks included, is 0, which means nobody.
qint64 parseUserId(const std::optional<QString> &id);
