import QtQuick
import Marovenda.Ui

// A label and its link, side by side if they fit, otherwise one below the other. A tap anywhere on the row opens the
// link.
Pressable {
    id: link

    required property string emoji
    required property string label
    required property string target
    required property real availableRowWidth
    property TextStyle targetStyle: Theme.body

    text: link.emoji + " " + link.label + " " + link.target

    Copyable {
        button: link
        text: link.copyText
    }

    // The implicit width of wrapped text depends on its width, so binding the width to it would be a loop.
    TextMetrics {
        id: measure
        readonly property real wide: Math.ceil(advanceWidth) + 1
        font: targetText.font
        text: link.target
    }

    contentItem: Grid {
        columns: name.width + spacing + measure.wide <= link.availableRowWidth ? 2 : 1
        spacing: Theme.spacing
        verticalItemAlignment: Grid.AlignVCenter
        horizontalItemAlignment: Grid.AlignHCenter

        Row {
            id: name
            spacing: 4
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: link.emoji
                // Text fonts have some of the emoji in black and white.
                font.family: "Noto Color Emoji"
                font.pixelSize: Theme.body.size
                textFormat: Text.PlainText
            }
            AppText {
                text: link.label
                bold: true
                wrapMode: Text.NoWrap
                partOfControl: true
            }
        }
        AppText {
            id: targetText
            width: Math.min(measure.wide, link.availableRowWidth)
            text: link.target
            textStyle: link.targetStyle
            bold: true
            color: Theme.blue
            wrapMode: Text.WrapAnywhere
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 13
            height: contentHeight
            partOfControl: true
        }
    }
}
