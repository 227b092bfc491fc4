import QtQuick
import Marovenda.Ui

// The main action of a form: white text on blue.
Pressable {
    id: button

    property bool bold: true
    property TextStyle textStyle: Theme.body
    property real radius: Theme.buttonRadius

    padding: Theme.padding
    pressedOpacity: Theme.pressedFillOpacity
    focusRadius: button.radius

    background: ContinuousRectangle {
        radius: button.radius
        color: Theme.blue
    }
    contentItem: AppText {
        text: button.text
        textStyle: button.textStyle
        bold: button.bold
        color: Theme.white
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        partOfControl: true
    }
}
