import QtQuick
import Marovenda.Ui

// A vertical scroll area for one column of content. It is inert while the content fits, and it keeps the focused field
// in the visible part, above an on-screen keyboard too.
Flickable {
    id: scroller

    default property alias column: holder.data
    property bool indicatorShown: true
    // Content lower than the area is centred in it instead of starting at the top.
    property bool centred: false
    // The screen's large title, above the content; empty for none.
    property string heading: ""
    readonly property real keyboardCover: {
        if (!InputMethod.visible || InputMethod.keyboardRectangle.height <= 0)
            return 0
        const bottom = scroller.mapToItem(null, 0, scroller.height).y
        return Math.max(0, bottom - InputMethod.keyboardRectangle.y)
    }
    readonly property real viewHeight: height - keyboardCover
    // The line that is brought into view when it has something new to say.
    property MessageLine message: null
    readonly property Item focused: Window.activeFocusItem
    // What the next arranging brings into view besides the focused field.
    property Item wanted: null

    function isInside(item: Item): bool {
        for (let each = item; each; each = each.parent) {
            if (each === holder)
                return true
        }
        return false
    }

    // Scrolls just so far that an item is in the visible part.
    function reveal(item: Item) {
        if (!item || !isInside(item) || moving)
            return
        const top = item.mapToItem(contentItem, 0, 0).y
        const bottom = top + item.height
        const margin = Theme.spacing
        let wanted = contentY
        if (bottom + margin > wanted + viewHeight)
            wanted = bottom + margin - viewHeight
        if (top - margin < wanted)
            wanted = top - margin
        contentY = Math.max(0, Math.min(wanted, Math.max(0, contentHeight + bottomMargin - height)))
    }

    // Where things are is known once the positioners have been polished: that is before the next frame.
    function arrangeLater() {
        frame.target = Window.window
        Window.window?.update()
    }

    // A button stays where it is: the finger may be on its way to another.
    function arrange() {
        frame.target = null
        if (!interactive)
            contentY = 0
        if (focused instanceof TextInput)
            reveal(focused)
        reveal(wanted)
        wanted = null
    }

    contentWidth: width
    contentHeight: Math.max(title.height + holder.childrenRect.height, 1)
    bottomMargin: keyboardCover
    interactive: contentHeight > viewHeight + 0.5
    boundsBehavior: interactive ? Flickable.DragAndOvershootBounds : Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    clip: false
    // A tap on a button while the area might scroll is passed on at once.
    pressDelay: 0

    onFocusedChanged: reveal(focused)
    onHeightChanged: arrangeLater()
    onKeyboardCoverChanged: arrangeLater()
    onContentHeightChanged: arrangeLater()

    Connections {
        target: scroller.message
        function onTextChanged() {
            scroller.wanted = scroller.message.text !== "" ? scroller.message : null
            scroller.arrangeLater()
        }
    }
    // Typing goes on in a field that was scrolled away.
    Connections {
        target: scroller.focused as FormField
        function onEdited() {
            scroller.wanted = null
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
