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
    // How far the card continues above the row, and below it.
    readonly property real above: row.first || !row.last ? 0 : 20
    readonly property real below: row.last || !row.first ? 0 : 20

    width: row.list.width
    height: Math.max(44, holder.childrenRect.height + 2 * holder.y)
    // Cuts off the card's other corners.
    clip: row.above + row.below > 0

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
        y: -row.above
        width: row.list.columnWidth - 32
        height: row.height + row.above + row.below
        radius: row.first || row.last ? 10 : 0
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
