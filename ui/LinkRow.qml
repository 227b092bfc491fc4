import QtQuick
import Marovenda.Ui

// A label and what it links to, below each other where they do not fit side by side; a tap anywhere follows the link.
Pressable {
    id: link

    required property string emoji
    required property string label
    required property string target
    // The width that is there for it.
    required property real most
    property TextStyle targetStyle: Theme.body

    text: link.emoji + " " + link.label + " " + link.target

    // A wrapped text changes its implicit width with its width; what its width follows is measured apart.
    TextMetrics {
        id: measure
        readonly property real wide: Math.ceil(advanceWidth) + 1
        font: targetText.font
        text: link.target
    }

    contentItem: Grid {
        columns: name.width + spacing + measure.wide <= link.most ? 2 : 1
        spacing: Theme.spacing
        verticalItemAlignment: Grid.AlignVCenter
        horizontalItemAlignment: Grid.AlignHCenter

        Row {
            id: name
            spacing: 4
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: link.emoji
                // The text faces have some of these in black and white.
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
            width: Math.min(measure.wide, link.most)
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
