import QtQuick
import Marovenda.Ui

// The outcome of a form's action, announced whenever it changes. While it is empty it is gone, or with `keepsPlace` leaves
// an empty line.
AppText {
    id: line

    property bool keepsPlace: false
    property bool renewing: false
    // An empty line is nothing to a screen reader.
    property bool heard: false

    visible: (line.keepsPlace || line.text !== "") && !line.renewing
    horizontalAlignment: Text.AlignHCenter
    // A screen reader is told of an alert that begins to show; a new text is a new alert.
    onTextChanged: {
        renewing = true
        heard = text !== ""
        renewing = false
    }

    Accessible.role: Accessible.AlertMessage
    // What is ignored when it begins to show is not told.
    Accessible.ignored: !line.enabled || !line.heard
}
