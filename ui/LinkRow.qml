import QtQuick
import Marovenda.Ui

// A label and what it links to; a tap anywhere on it follows the link.
Pressable {
    id: link

    required property string label
    required property string target
    property TextStyle targetStyle: Theme.body

    text: link.label + " " + link.target

    contentItem: Flow {
        spacing: Theme.spacing
        AppText {
            text: link.label
            bold: true
            wrapMode: Text.NoWrap
            partOfControl: true
        }
        AppText {
            width: Math.min(implicitWidth, link.width)
            height: Math.max(implicitHeight, Theme.body.line)
            text: link.target
            textStyle: link.targetStyle
            bold: true
            color: Theme.blue
            wrapMode: Text.WrapAnywhere
            verticalAlignment: Text.AlignVCenter
            partOfControl: true
        }
    }
}
