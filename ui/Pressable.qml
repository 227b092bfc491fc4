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
    // A touch target may be larger than what is drawn.
    property real minimumTarget: Theme.touchTarget

    // Before any handler of a user of this component, since those connect later.
    onClicked: UnfinishedText.commit()

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    containmentMask: QtObject {
        function contains(point: point): bool {
            const dx = Math.max(0, (control.minimumTarget - control.width) / 2)
            const dy = Math.max(0, (control.minimumTarget - control.height) / 2)
            return point.x >= -dx && point.x <= control.width + dx && point.y >= -dy && point.y <= control.height + dy
        }
    }
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
