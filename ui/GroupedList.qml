import QtQuick
import Marovenda.Ui

// A list whose rows form one white group, below a large title that scrolls with them. Only the visible rows exist as
// items. The delegate must be a GroupedRow.
ListView {
    id: list

    property string title
    // Shown below the title, by the screen, while the list has no rows.
    property Item placeholder
    readonly property real columnWidth: Math.min(width, Theme.columnWidth)
    readonly property real side: (width - columnWidth) / 2 + 16

    boundsBehavior: contentHeight > height ? Flickable.DragAndOvershootBounds : Flickable.StopAtBounds
    interactive: contentHeight > height
    reuseItems: true
    focus: true
    activeFocusOnTab: true
    keyNavigationEnabled: true
    // With a current row, the view would scroll to it, past the title, whenever the model changes.
    currentIndex: -1

    Keys.onPressed: event => {
        const page = Math.max(1, Math.floor(height / 80))
        const steps = { [Qt.Key_Home]: -count, [Qt.Key_End]: count, [Qt.Key_PageUp]: -page, [Qt.Key_PageDown]: page }
        if (count > 0 && event.key in steps) {
            event.accepted = true
            currentIndex = Math.max(0, Math.min(count - 1, currentIndex + steps[event.key]))
        }
        if (event.matches(StandardKey.Copy) && !event.isAutoRepeat)
            Copying.copy((currentItem as GroupedRow)?.copyText ?? "")
    }

    Accessible.role: Accessible.List
    Accessible.name: list.title
    Accessible.ignored: !list.enabled

    // qmllint disable unqualified
    header: Item {
        width: list.width
        implicitHeight: heading.implicitHeight + Theme.spacing
        LargeTitle {
            id: heading
            x: (list.width - list.columnWidth) / 2
            width: list.columnWidth
            text: list.title
        }
    }
    footer: Item {
        width: list.width
        height: 24 + (list.placeholder?.visible ? list.placeholder.height : 0)
    }
    // qmllint enable unqualified

    ScrollIndicator { area: list }
    // Around the whole list while no row is current.
    FocusRing {
        parent: list
        margin: -2
        shown: Keyboard.navigating && list.activeFocus && list.currentIndex < 0
        radius: 10
    }
}
