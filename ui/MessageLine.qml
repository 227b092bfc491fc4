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
    // Something covers the line; it is announced when that has gone.
    property bool untold: false

    // A screen reader is told of an alert that begins to show; a new text is a new alert. What is ignored when it begins to
    // show is not told.
    function announce() {
        if (!untold || !enabled)
            return
        untold = false
        renewing = true
        heard = text !== ""
        renewing = false
    }

    visible: (line.keepsPlace || line.text !== "") && !line.renewing
    horizontalAlignment: Text.AlignHCenter
    onTextChanged: {
        untold = true
        announce()
    }
    onEnabledChanged: announce()

    Accessible.role: Accessible.AlertMessage
    Accessible.ignored: !line.enabled || !line.heard
}
