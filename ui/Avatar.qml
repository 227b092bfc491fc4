import QtQuick
import Marovenda.Ui

// The customer's photo in a circle, or a placeholder when there is no photo.
Item {
    id: avatar

    property alias photo: view.photo
    readonly property alias decoded: view.decoded
    property color placeholderColor: Theme.grey
    property real ringWidth

    implicitWidth: 50
    implicitHeight: 50

    PhotoView {
        id: view
        anchors.fill: parent
    }
    Symbol {
        anchors.fill: parent
        visible: !view.decoded
        name: "person.circle.fill"
        color: avatar.placeholderColor
    }
    Rectangle {
        objectName: "ring"
        anchors.fill: parent
        anchors.margins: -avatar.ringWidth / 2
        visible: view.decoded && avatar.ringWidth > 0
        radius: width / 2
        color: "transparent"
        border.width: avatar.ringWidth
        border.color: Theme.blue
    }
}
