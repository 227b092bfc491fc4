import QtQuick
import Marovenda.Ui

// Says for two seconds, above the lower edge, that something has been copied.
Item {
    id: notice

    readonly property real keyboard: InputMethod.visible ? InputMethod.keyboardRectangle.height : 0

    anchors.horizontalCenter: parent.horizontalCenter
    y: parent.height - keyboard - 24 - height
    width: line.implicitWidth + 2 * Theme.padding
    height: line.implicitHeight + 2 * Theme.spacing
    visible: line.text !== ""

    ContinuousRectangle {
        anchors.fill: parent
        radius: height / 2
        color: Qt.alpha("black", 0.8)
    }
    Connections {
        target: Copying
        function onCopied() {
            // Announced anew each time.
            line.text = ""
            line.text = "Copiado"
            hiding.restart()
        }
    }
    Timer {
        id: hiding
        interval: 2000
        onTriggered: line.text = ""
    }
    MessageLine {
        id: line
        objectName: "copied"
        anchors.centerIn: parent
        textStyle: Theme.subheadline
        color: Theme.white
        wrapMode: Text.NoWrap
    }
}
