import QtQuick
import Marovenda.Ui

// Shows where the keyboard's focus is, around its parent.
ContinuousRectangle {
    objectName: "focusRing"

    property bool shown: false
    property real around: 3

    anchors.fill: parent
    anchors.margins: -around
    visible: shown
    color: "transparent"
    borderColor: Theme.blue
    borderWidth: 2
    z: 1
}
