import QtQuick
import Marovenda.Ui

// A row of the dashboard on a card of its own: a picture, two lines, and a badge at the right.
Item {
    id: row

    required property string emoji
    required property string headline
    required property string detail
    required property string badge
    required property color badgeColor
    // The row is heard as one element.
    readonly property string spoken: headline + ", " + detail + ", " + badge
    property bool partOfControl: false
    readonly property real padding: 12

    implicitHeight: Math.max(tile.height, lines.height, badgeText.height) + 2 * padding

    Accessible.role: Accessible.ListItem
    Accessible.name: row.spoken
    Accessible.ignored: row.partOfControl || !row.enabled

    ContinuousRectangle {
        objectName: "card"
        anchors.fill: parent
        radius: 16
        color: Theme.white
        borderColor: Theme.outline
        borderWidth: 1
    }
    ContinuousRectangle {
        id: tile
        anchors.verticalCenter: parent.verticalCenter
        x: row.padding
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
        x: tile.x + tile.width + 2 * Theme.spacing
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
        anchors.rightMargin: row.padding
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
