import QtQuick
import Marovenda.Ui

// A row of a GroupedList. The first and the last row draw the group's rounded corners, the others a separator below them.
Item {
    id: row

    required property int index
    required property GroupedList list
    default property alias content: holder.data
    // What can be copied from the row; empty for nothing.
    property string copyText
    readonly property bool first: row.index === 0
    readonly property bool last: row.index === row.list.count - 1
    readonly property real cornerReach: 20

    width: row.list.width
    height: Math.max(44, holder.childrenRect.height + 2 * holder.y)
    // Cuts off the corners of the card, except at the first and the last row.
    clip: true

    Component.onCompleted: ReadingOrder.place(row)
    // Screen readers must not find a row in the reuse pool.
    ListView.onPooled: row.visible = false
    ListView.onReused: {
        row.visible = true
        ReadingOrder.place(row)
    }

    Copyable {
        parent: row
        text: row.copyText
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
        anchors.margins: 1
        shown: row.list.activeFocus && row.list.currentIndex === row.index && row.list.count > 0
        radius: 10
    }
}
