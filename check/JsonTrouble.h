#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace Check {

/// Where bytes stop being a document that the app's reader takes, and how to fix that.
struct JsonTrouble {
    /// In bytes from the start.
    qsizetype offset = 0;
    QString what;
    QString remedy;

    /// "line 1, byte 0": lines count from 1, bytes of a line from 0.
    QString place(QByteArrayView bytes) const;
};

/// The first trouble of a document. The verdict is the reader's (see Json.h), which does not say where; this finds
/// the place and a likely cause. Nothing when no trouble is found.
std::optional<JsonTrouble> findJsonTrouble(QByteArrayView bytes);

} // namespace Check
