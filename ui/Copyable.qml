import QtQuick
import Marovenda.Ui

// Lets a long press and a right click on its parent copy a text. A button as the parent does not count a long press as a
// click then.
Item {
    id: copyable

    // Nothing is copied while it is empty.
    required property string text
    // The parent, if it is a button.
    property Pressable button

    anchors.fill: parent

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: Copying.copy(copyable.text)
    }
    TapHandler {
        enabled: !copyable.button
        onLongPressed: Copying.copy(copyable.text)
    }
    Connections {
        target: copyable.button
        enabled: copyable.text !== ""
        function onPressAndHold() { Copying.copy(copyable.text) }
    }
}
