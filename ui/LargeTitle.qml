import QtQuick
import Marovenda.Ui

// The title that a screen starts with; it scrolls away with the content.
Item {
    property alias text: label.text

    implicitHeight: Math.max(52, label.implicitHeight + 11)

    AppText {
        id: label
        anchors.verticalCenter: parent.verticalCenter
        x: Theme.padding
        width: parent.width - 2 * Theme.padding
        textStyle: Theme.largeTitle
        bold: true
        Accessible.role: Accessible.Heading
    }
}
