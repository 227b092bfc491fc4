pragma ComponentBehavior: Bound
import QtQuick

// A list that shows as much text as the app's own, in plain rows.
Window {
    id: window

    property real rowHeight
    property int rowCount

    width: 390
    height: 844
    visible: true

    ListView {
        objectName: "rows"
        anchors.fill: parent
        model: window.rowCount
        delegate: Text {
            required property int index
            height: window.rowHeight
            text: "Tracking: MRV-" + index + "  RECIBIDO\nRepuestos electrónicos y cámara, caja número " + index
            font.pixelSize: 16
        }
    }
}
