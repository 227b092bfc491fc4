import QtQuick
import Marovenda.Ui

// A photo in the picker's grid.
Item {
    id: cell

    required property url file
    required property string name
    required property real gap
    property bool current
    property bool marked

    signal chosen()

    Accessible.role: Accessible.Button
    Accessible.name: cell.name
    Accessible.focusable: true
    Accessible.focused: cell.current
    Accessible.ignored: !cell.enabled
    Accessible.onPressAction: cell.chosen()

    Rectangle {
        anchors.fill: parent
        anchors.margins: cell.gap / 2
        color: Theme.greyFill
    }
    PhotoView {
        id: view
        objectName: "view"
        anchors.fill: parent
        anchors.margins: cell.gap / 2
        square: true
        file: cell.file
        // Leaves a gap between the photo and the ring, since the photo may be as blue as the ring.
        scale: cell.marked ? (width - 10) / width : 1
    }
    Rectangle {
        objectName: "focusRing"
        anchors.fill: parent
        anchors.margins: cell.gap / 2
        visible: cell.marked
        color: "transparent"
        border.color: Theme.blue
        border.width: 3
    }
    TapHandler { onTapped: cell.chosen() }
}
