import QtQuick
import Marovenda.Logistics

// A row of tiles that scrolls horizontally if it is wider than the screen. It scrolls to the tile that gets the focus.
Item {
    id: tileRow

    default property alias tiles: row.data
    readonly property Item focused: Window.activeFocusItem
    // Space for the focus ring. Above and below the tiles it is permanent; at the ends it exists only while a tile shows
    // its ring, so that otherwise the first and the last tile are at the edges.
    readonly property real ringMargin: 5
    property real endMargin

    implicitHeight: row.height

    onFocusedChanged: {
        let tile = focused
        while (tile && tile.parent !== row)
            tile = tile.parent
        endMargin = (tile as DashboardBtn)?.ringShown === true ? ringMargin : 0
        const maximumX = Math.max(-endMargin, row.width + endMargin - width)
        if (tile)
            area.contentX = Math.max(tile.x + tile.width + endMargin - width, Math.min(area.contentX, tile.x - endMargin))
        area.contentX = Math.max(-endMargin, Math.min(maximumX, area.contentX))
    }

    Flickable {
        id: area
        objectName: "tileScroll"
        y: -tileRow.ringMargin
        width: tileRow.width
        height: tileRow.height + 2 * tileRow.ringMargin
        contentWidth: row.width
        leftMargin: tileRow.endMargin
        rightMargin: tileRow.endMargin
        flickableDirection: Flickable.HorizontalFlick
        interactive: contentWidth > width
        clip: true

        Row {
            id: row
            y: tileRow.ringMargin
            spacing: 16
        }
    }
}
