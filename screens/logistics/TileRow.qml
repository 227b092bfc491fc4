import QtQuick
import Marovenda.Logistics

// A row of tiles that scrolls sideways where it is wider than the screen. A tile that gets the focus is brought into view.
Item {
    id: tileRow

    default property alias tiles: row.data
    readonly property Item focused: Window.activeFocusItem
    // Room for a focus ring: above and below always, at the two ends as long as a tile has one, so that the first and the
    // last tile stand at the edges otherwise.
    readonly property real ringRoom: 5
    property real endRoom: 0

    implicitHeight: row.height

    onFocusedChanged: {
        let tile = focused
        while (tile && tile.parent !== row)
            tile = tile.parent
        endRoom = (tile as DashboardBtn)?.ringShown === true ? ringRoom : 0
        const most = Math.max(-endRoom, row.width + endRoom - width)
        if (tile)
            area.contentX = Math.max(tile.x + tile.width + endRoom - width, Math.min(area.contentX, tile.x - endRoom))
        area.contentX = Math.max(-endRoom, Math.min(most, area.contentX))
    }

    Flickable {
        id: area
        objectName: "tileScroll"
        y: -tileRow.ringRoom
        width: tileRow.width
        height: tileRow.height + 2 * tileRow.ringRoom
        contentWidth: row.width
        leftMargin: tileRow.endRoom
        rightMargin: tileRow.endRoom
        flickableDirection: Flickable.HorizontalFlick
        interactive: contentWidth > width
        clip: true

        Row {
            id: row
            y: tileRow.ringRoom
            spacing: 16
        }
    }
}
