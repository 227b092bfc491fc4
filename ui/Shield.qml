import QtQuick

// Takes presses and turns of the wheel, so that nothing below can be reached.
MouseArea {
    hoverEnabled: true
    onWheel: wheel => wheel.accepted = true
}
