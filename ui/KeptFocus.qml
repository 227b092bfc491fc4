import QtQml
import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// Where the focus was when something opened over a screen, to be given back when that has closed.
QtObject {
    id: kept

    // What opens and closes. Its parent gets the focus where the item that had it has gone.
    required property Item cover
    property Item item: null
    property int reason: Qt.OtherFocusReason

    function keep() {
        item = cover.Window.activeFocusItem
        // Of a control; with the reason its focus ring comes back.
        reason = (item as T.Control)?.focusReason ?? (item as T.TextField)?.focusReason ?? Qt.OtherFocusReason
    }

    function giveBack() {
        const target = item ?? cover.parent
        item = null
        cover.focus = false
        target.forceActiveFocus(reason)
    }
}
