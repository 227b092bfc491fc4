import QtQuick

// Takes all presses and wheel events, so that they do not reach the items below.
MouseArea {
    hoverEnabled: true
    onWheel: wheel => wheel.accepted = true
}
