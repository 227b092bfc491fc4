import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// What every button, link and tappable row is built on: pressing by finger, mouse, Space, Return and a screen reader
// all end in `clicked`. The input method's unfinished text is committed first, so that what is on screen is what the
// action works with.
T.AbstractButton {
    id: control

    // The look while a finger is down; a filled button stays more opaque than a text.
    property real pressedOpacity: Theme.pressedOpacity
    property real focusRadius: 10
    property color focusColor: Theme.blue
    // How far outside of the control the focus ring runs.
    property real focusAround: 3

    // Before any handler of a user of this component, since those connect later.
    onClicked: UnfinishedText.commit()

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    containmentMask: TouchTarget { control: control }
    // A tap leaves the focus, and with it the on-screen keyboard, where it is.
    focusPolicy: Qt.TabFocus
    opacity: down ? pressedOpacity : 1

    // A key held down is one press. The template presses on Space by itself, but takes repeated keys for new ones, and a
    // release whose press went elsewhere for a press.
    Keys.onPressed: event => {
        const isReturn = event.key === Qt.Key_Return || event.key === Qt.Key_Enter
        event.accepted = isReturn || (event.isAutoRepeat && event.key === Qt.Key_Space)
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
        radius: control.focusRadius + around
        around: control.focusAround
        borderColor: control.focusColor
    }
}
