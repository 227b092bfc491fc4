import QtQuick
import Marovenda.Ui

// A tile that opens one of the services. It contains a button instead of being one, because AbstractButton has a final
// property `icon`.
Item {
    id: tile

    required property string icon
    required property string text
    readonly property bool ringShown: button.visualFocus

    signal clicked()

    // At least 64, and wide enough for the longest word of the caption at large text sizes.
    implicitWidth: {
        const words = tile.text.split(" ").map(word => metrics.advanceWidth(word))
        return words.reduce((widest, each) => Math.max(widest, Math.ceil(each)), 64)
    }
    implicitHeight: button.implicitHeight

    FontMetrics {
        id: metrics
        font: caption.font
    }
    Pressable {
        id: button
        width: tile.width
        text: tile.text
        onClicked: tile.clicked()

        contentItem: Column {
            spacing: Theme.spacing
            ContinuousRectangle {
                objectName: tile.text + "Tile"
                anchors.horizontalCenter: parent.horizontalCenter
                width: 56
                height: 56
                radius: 18
                color: Theme.blueFill
                Symbol {
                    anchors.centerIn: parent
                    width: Math.min(28 * Theme.textScale, 44)
                    height: width
                    name: tile.icon
                    color: Theme.blue
                }
            }
            AppText {
                id: caption
                width: tile.width
                text: tile.text
                textStyle: Theme.caption
                bold: true
                horizontalAlignment: Text.AlignHCenter
                partOfControl: true
            }
        }
    }
}
