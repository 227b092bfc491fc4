import QtQuick
import Marovenda.Ui

// A row of the dashboard, on its own card: an emoji, two lines of text, and a badge at the right.
Item {
    id: row

    required property string emoji
    required property string headline
    required property string detail
    required property string badge
    required property color badgeColor
    // The accessible name: screen readers read the row as one element.
    readonly property string spoken: headline + ", " + detail + ", " + badge
    property bool partOfControl
    readonly property real padding: 12

    implicitHeight: Math.max(tile.height, Math.max(lines.height, Theme.largeText ? 0 : badgeText.height))
        + (Theme.largeText ? Theme.spacing + badgeText.height : 0) + 2 * padding

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
        objectName: "tile"
        y: Theme.largeText ? row.padding : (row.height - height) / 2
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
        x: tile.x + tile.width + 2 * Theme.spacing
        y: Theme.largeText ? row.padding : (row.height - height) / 2
        width: (Theme.largeText ? row.width - row.padding : badgeText.x - Theme.spacing) - x
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
        x: row.width - row.padding - width
        y: Theme.largeText ? row.height - row.padding - height : (row.height - height) / 2
        width: Math.min(implicitWidth, Theme.largeText ? row.width - 2 * row.padding : row.width * 0.36)
        text: row.badge
        textStyle: Theme.caption
        bold: true
        color: row.badgeColor
        horizontalAlignment: Text.AlignRight
        partOfControl: true
    }
}
