import QtQuick
import Marovenda.Ui

// A form field for text or, with `isDecimal`, for a number. `isDecimal` only chooses the on-screen keyboard; the field
// accepts any text.
FormField {
    id: field

    required property bool isDecimal

    // qmllint disable
    inputMethodHints: field.isDecimal ? Qt.ImhFormattedNumbersOnly : Qt.ImhNone
    // qmllint enable
}
