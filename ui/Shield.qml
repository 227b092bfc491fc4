import QtQuick

// Takes every press, click and turn of the wheel, so that nothing below can be reached.
MouseArea {
    hoverEnabled: true
    // Without a handler the second of two quick clicks would go on to what is below.
    onDoubleClicked: mouse => mouse.accepted = true
    onWheel: wheel => wheel.accepted = true
}
