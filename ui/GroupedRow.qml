import QtQuick
import Marovenda.Ui

// One row of a GroupedList: its content, the group's corners at the first and the last row, a separator between rows.
Item {
    id: row

    required property int index
    required property GroupedList list
    default property alias content: holder.data
    readonly property bool first: row.index === 0
    readonly property bool last: row.index === row.list.count - 1
    readonly property real cornerReach: 20

    width: row.list.width
    height: Math.max(44, holder.childrenRect.height + 2 * holder.y)
    // The corners of the whole group show only where it begins and ends.
    clip: true

    onIndexChanged: ReadingOrder.place(row)
    Component.onCompleted: ReadingOrder.place(row)
    // A row that waits to be used again is neither shown nor heard.
    ListView.onPooled: row.visible = false
    ListView.onReused: {
        row.visible = true
        ReadingOrder.place(row)
    }

    ContinuousRectangle {
        objectName: "card"
        x: row.list.side
        y: row.first ? 0 : -row.cornerReach
        width: row.list.columnWidth - 32
        height: row.height - y + (row.last ? 0 : row.cornerReach)
        radius: 10
        color: Theme.white
    }
    Item {
        id: holder
        x: row.list.side + 16
        y: 11
        width: row.list.columnWidth - 64
    }
    Hairline {
        objectName: "separator"
        x: row.list.side + 16
        y: row.height - height
        width: row.list.columnWidth - 48
        visible: !row.last
    }
    FocusRing {
        z: 1
        anchors.margins: 1
        shown: row.list.activeFocus && row.list.currentIndex === row.index && row.list.count > 0
        radius: 10
    }
}
