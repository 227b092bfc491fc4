import QtQuick
import Marovenda.Ui

// A vertical scroll area for a column of content. It does not scroll while the content fits. It keeps the focused field
// visible, also above the on-screen keyboard.
Flickable {
    id: scroller

    default property alias column: holder.data
    property bool indicatorShown: true
    // Centres content that is lower than the area, instead of aligning it to the top.
    property bool centred
    // The screen's large title; empty for none.
    property string heading
    readonly property real keyboardCover: {
        if (!InputMethod.visible || !InputMethod.keyboardRectangle.height)
            return 0
        const bottom = scroller.mapToItem(null, 0, scroller.height).y
        return Math.max(0, bottom - InputMethod.keyboardRectangle.y)
    }
    readonly property real viewHeight: height - keyboardCover
    // Scrolled into view whenever its text changes.
    property MessageLine message
    readonly property Item focused: Window.activeFocusItem
    // Scrolled into view by the next `arrange`, in addition to the focused field.
    property Item pendingItem

    function isInside(item: Item): bool {
        for (let each = item; each; each = each.parent) {
            if (each === holder)
                return true
        }
        return false
    }

    // Scrolls just far enough to make the item visible.
    function reveal(item: Item) {
        if (!item || !isInside(item) || moving)
            return
        const top = item.mapToItem(contentItem, 0, 0).y
        const bottom = top + item.height
        const margin = Theme.spacing
        const y = Math.min(Math.max(contentY, bottom + margin - viewHeight), top - margin)
        contentY = Math.max(0, Math.min(y, contentHeight + bottomMargin - height))
    }

    // Positioners place their items when they are polished, just before the next frame.
    function arrangeLater() {
        frame.target = Window.window
        Window.window?.update()
    }

    // Does not scroll to a focused button: the customer may be about to tap another one.
    function arrange() {
        frame.target = null
        if (!interactive)
            contentY = 0
        if (focused instanceof TextInput)
            reveal(focused)
        reveal(pendingItem)
        pendingItem = null
    }

    contentWidth: width
    contentHeight: Math.max(title.height + holder.childrenRect.height, 1)
    bottomMargin: keyboardCover
    interactive: contentHeight > viewHeight + 0.5
    boundsBehavior: interactive ? Flickable.DragAndOvershootBounds : Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    // Without a delay, buttons show a press at once.
    pressDelay: 0

    onFocusedChanged: reveal(focused)
    onHeightChanged: arrangeLater()
    onKeyboardCoverChanged: arrangeLater()
    onContentHeightChanged: arrangeLater()

    Connections {
        target: scroller.message
        function onTextChanged() {
            scroller.pendingItem = scroller.message.text !== "" ? scroller.message : null
            scroller.arrangeLater()
        }
    }
    // Scrolls back to the field when the customer goes on typing.
    Connections {
        target: scroller.focused as FormField
        function onEdited() {
            scroller.pendingItem = null
            scroller.arrangeLater()
        }
    }
    Connections {
        id: frame
        target: null
        function onAfterAnimating() { scroller.arrange() }
    }
    LargeTitle {
        id: title
        visible: scroller.heading !== ""
        height: visible ? implicitHeight : 0
        width: holder.width
        x: holder.x
        text: scroller.heading
    }
    Item {
        id: holder
        width: Math.min(scroller.width, Theme.columnWidth)
        x: (scroller.width - width) / 2
        y: title.height
            + (scroller.centred ? Math.max(0, (scroller.viewHeight - title.height - childrenRect.height) / 2) : 0)
        height: childrenRect.height
    }

    ScrollIndicator {
        area: scroller
        visible: scroller.indicatorShown && scroller.interactive && scroller.moving
    }
}
