#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

namespace Check {

/// The place at which the app's reader refuses a document, the reason, and how to fix it.
struct JsonTrouble {
    /// In bytes.
    qsizetype offset = 0;
    QString what;
    QString remedy;

    /// Returns the place as "line 1, byte 0". Lines are counted from 1, bytes of a line from 0.
    QString place(QByteArrayView bytes) const;
};

/// Finds the place and the likely cause of the first error in a document. The app's reader (see Json.h) decides
/// whether a document is valid, but does not report the place. Returns nothing if no error is found.
std::optional<JsonTrouble> findJsonTrouble(QByteArrayView bytes);

/// Finds what surrounds a valid document and is skipped by the app's reader: a byte-order mark and blanks.
QList<JsonTrouble> findAroundJson(QByteArrayView bytes);

} // namespace Check
