import QtQuick
import Marovenda.Ui

// A form's input for plain text or, with `isDecimal`, for a number: that only chooses the on-screen keyboard. Whatever
// text arrives is kept.
FormField {
    id: field

    required property bool isDecimal

    // qmllint disable
    inputMethodHints: field.isDecimal ? Qt.ImhFormattedNumbersOnly : Qt.ImhNone
    // qmllint enable
}
