#pragma once

#include <QString>

namespace Check {

/// A text of the server or of the user, with what a terminal would obey or hide written as \uXXXX: control
/// characters, line breaks, marks that turn the direction of writing, invisible characters, halves of characters.
QString harmless(const QString &text);

/// The same in quotation marks, cut after `most` characters.
QString quoted(const QString &text, qsizetype most = 60);

/// "1 byte", "2 bytes": a number with the noun it counts.
QString counted(qsizetype number, const QString &noun);

} // namespace Check
