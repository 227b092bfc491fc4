#pragma once

#include <QString>

#include <optional>

/// Parses the customer's number in a reply: an optional sign and ASCII digits, within 64 bits. Returns 0, which means
/// nobody, for any other text, including text with blanks.
qint64 parseUserId(const std::optional<QString> &id);
