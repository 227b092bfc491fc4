import QtQuick
import Marovenda.Ui

// A ring around its parent that shows the keyboard focus.
ContinuousRectangle {
    objectName: "focusRing"

    property bool shown
    // The distance from the parent's edge to the ring; negative inside the parent.
    property real margin: 3

    anchors.fill: parent
    anchors.margins: -margin
    visible: shown
    color: "transparent"
    borderColor: Theme.blue
    borderWidth: 2
    z: 1
}
