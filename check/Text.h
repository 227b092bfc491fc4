#pragma once

#include <QString>

namespace Check {

/// Returns the text with everything that could control a terminal or is invisible written as \uXXXX: control
/// characters, line breaks, direction marks, invisible characters and lone surrogates.
QString harmless(const QString &text);

/// Returns the harmless text in quotation marks, truncated to `most` characters.
QString quoted(const QString &text, qsizetype most = 60);

/// Returns a number with its noun: "1 byte", "2 bytes".
QString counted(qsizetype number, const QString &noun);

} // namespace Check
