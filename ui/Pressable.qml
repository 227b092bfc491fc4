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

    // Before any handler of a user of this component, since those connect later.
    onClicked: UnfinishedText.commit()

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    containmentMask: TouchTarget { control: control }
    focusPolicy: Qt.StrongFocus
    opacity: down ? pressedOpacity : 1

    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    Accessible.role: Accessible.Button
    Accessible.name: control.text
    Accessible.ignored: !control.enabled
    Accessible.onPressAction: control.clicked()

    FocusRing {
        shown: control.visualFocus
        radius: control.focusRadius + around
    }
}
