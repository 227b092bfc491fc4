import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// The base of buttons, links and tappable rows. A press by finger, mouse, Space, Return or screen reader emits `clicked`.
// Text that an input method is composing is committed first, so that the action works with the text on screen.
T.AbstractButton {
    id: control

    property real pressedOpacity: Theme.pressedOpacity
    property real focusRadius: 10
    property color focusColor: Theme.blue
    property real focusMargin: 3
    // What Ctrl+C copies. Copyable adds the presses that copy.
    property string copyText

    // Runs before the users' own handlers.
    onClicked: UnfinishedText.commit()

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    containmentMask: TouchTarget { control: control }
    // A tap does not move the focus, so the on-screen keyboard stays open.
    focusPolicy: Qt.TabFocus
    opacity: down ? pressedOpacity : 1

    // A key that is held down is one press. AbstractButton handles Space itself, but it clicks again for each repeat, and
    // for a release whose press another item received.
    Keys.onPressed: event => {
        const isReturn = event.key === Qt.Key_Return || event.key === Qt.Key_Enter
        const copies = copyText !== "" && event.matches(StandardKey.Copy)
        event.accepted = isReturn || copies || (event.isAutoRepeat && event.key === Qt.Key_Space)
        if (copies && !event.isAutoRepeat)
            Copying.copy(copyText)
        if (isReturn && !event.isAutoRepeat)
            control.clicked()
    }
    Keys.onReleased: event => {
        event.accepted = event.key === Qt.Key_Space && (event.isAutoRepeat || !control.pressed)
    }

    Accessible.role: Accessible.Button
    Accessible.name: control.text
    Accessible.ignored: !control.enabled
    Accessible.onPressAction: control.clicked()

    FocusRing {
        shown: control.visualFocus
        radius: control.focusRadius + margin
        margin: control.focusMargin
        borderColor: control.focusColor
    }
}
