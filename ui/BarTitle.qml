import QtQuick
import Marovenda.Ui

// The title in the middle of a bar; beside what stands at the bar's left where the middle is too narrow for it.
AppText {
    id: title

    // Where what stands at the left ends.
    required property real beginning
    readonly property bool centred: implicitWidth <= parent.width - 2 * beginning
    readonly property real room: parent.width - beginning - Theme.padding

    anchors.verticalCenter: parent.verticalCenter
    x: centred ? (parent.width - width) / 2 : beginning
    width: centred ? implicitWidth : room
    textStyle: Theme.headline
    horizontalAlignment: Text.AlignHCenter
    lineHeightMode: Text.ProportionalHeight
    lineHeight: 1
    wrapMode: Text.NoWrap
    elide: Text.ElideRight
    fontSizeMode: Text.HorizontalFit
    minimumPixelSize: 17
}
