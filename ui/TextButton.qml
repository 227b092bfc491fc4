import QtQuick
import Marovenda.Ui

// A button or link without a background.
Pressable {
    id: button

    property TextStyle textStyle: Theme.body
    property bool bold
    property color color: Theme.blue

    contentItem: AppText {
        text: button.text
        textStyle: button.textStyle
        bold: button.bold
        color: button.color
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        partOfControl: true
    }
}
