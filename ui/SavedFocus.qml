import QtQml
import QtQuick
import QtQuick.Templates as T

// Saves the focus while a popup is open, and restores it when the popup closes.
QtObject {
    // If the focused item has been destroyed meanwhile, the popup's parent gets the focus.
    required property Item popup
    property Item item
    property int reason: Qt.OtherFocusReason

    function save() {
        item = popup.Window.activeFocusItem
        // The same reason makes the control show its focus ring again.
        reason = (item as T.Control)?.focusReason ?? (item as T.TextField)?.focusReason ?? Qt.OtherFocusReason
    }

    function restore() {
        const target = item ?? popup.parent
        popup.focus = false
        target?.forceActiveFocus(reason)
    }
}
