import QtQuick
import Marovenda.Ui

// A tile that opens one of the services. A button has an `icon` of its own that cannot be replaced, so the tile is an item
// around one.
Item {
    id: tile

    required property string icon
    required property string text

    signal clicked()

    implicitWidth: 64
    implicitHeight: button.implicitHeight

    Pressable {
        id: button
        width: 64
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
                width: 64
                text: tile.text
                textStyle: Theme.caption
                bold: true
                horizontalAlignment: Text.AlignHCenter
                partOfControl: true
            }
        }
    }
}
