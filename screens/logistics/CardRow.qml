import QtQuick
import Marovenda.Ui

// A row of the dashboard: a picture, two lines, and a badge at the right. It is heard as one element.
Pressable {
    id: row

    required property string emoji
    required property string headline
    required property string detail
    required property string badge
    required property color badgeColor
    property bool pressable: true

    padding: 12
    focusRadius: 16
    pressedOpacity: row.pressable ? Theme.pressedOpacity : 1
    focusPolicy: row.pressable ? Qt.StrongFocus : Qt.NoFocus
    Accessible.role: row.pressable ? Accessible.Button : Accessible.ListItem

    background: ContinuousRectangle {
        radius: 16
        color: Theme.white
        borderColor: Theme.outline
        borderWidth: 1
    }
    contentItem: Item {
        implicitHeight: Math.max(tile.height, lines.height, badgeText.height)

        ContinuousRectangle {
            id: tile
            anchors.verticalCenter: parent.verticalCenter
            width: 48
            height: 48
            radius: 12
            color: Theme.greyFill
            Text {
                anchors.centerIn: parent
                text: row.emoji
                font.pixelSize: Math.min(Theme.title.size, 40)
                textFormat: Text.PlainText
            }
        }
        Column {
            id: lines
            anchors.verticalCenter: parent.verticalCenter
            x: tile.width + 2 * Theme.spacing
            width: badgeText.x - x - Theme.spacing
            spacing: Theme.spacing
            AppText {
                width: parent.width
                text: row.headline
                bold: true
                wrapMode: Text.Wrap
                partOfControl: true
            }
            AppText {
                width: parent.width
                text: row.detail
                textStyle: Theme.caption
                color: Theme.grey
                partOfControl: true
            }
        }
        AppText {
            id: badgeText
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, parent.width * 0.36)
            text: row.badge
            textStyle: Theme.caption
            bold: true
            color: row.badgeColor
            horizontalAlignment: Text.AlignRight
            partOfControl: true
        }
    }
}
