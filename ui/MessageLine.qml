import QtQuick
import Marovenda.Ui

// The result of a form's action, which screen readers announce whenever it changes. An empty message takes no space,
// unless `keepsPlace` is set.
AppText {
    id: line

    property bool keepsPlace
    property bool rehidden
    property bool exposed
    // Stays true while something covers the line.
    property bool announcementPending

    // Screen readers announce an alert when it becomes visible, so hide the line and show it again. They miss an item
    // that is ignored at that moment, so update `exposed` in between.
    function announce() {
        if (!announcementPending || !enabled)
            return
        announcementPending = false
        rehidden = true
        exposed = text !== ""
        rehidden = false
    }

    visible: (line.keepsPlace || line.text !== "") && !line.rehidden
    horizontalAlignment: Text.AlignHCenter
    onTextChanged: {
        announcementPending = true
        announce()
    }
    onEnabledChanged: announce()

    Accessible.role: Accessible.AlertMessage
    Accessible.ignored: !line.enabled || !line.exposed
}
