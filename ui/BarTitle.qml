import QtQuick
import Marovenda.Ui

// The title of a bar: centred if it fits there, otherwise beside the item at the left.
AppText {
    id: title

    required property real leftItemEnd
    readonly property bool centred: implicitWidth <= parent.width - 2 * leftItemEnd
    readonly property real availableWidth: parent.width - leftItemEnd - Theme.padding

    anchors.verticalCenter: parent.verticalCenter
    x: centred ? (parent.width - width) / 2 : leftItemEnd
    width: centred ? implicitWidth : availableWidth
    textStyle: Theme.headline
    horizontalAlignment: Text.AlignHCenter
    lineHeightMode: Text.ProportionalHeight
    lineHeight: 1
    wrapMode: Text.NoWrap
    elide: Text.ElideRight
    fontSizeMode: Text.HorizontalFit
    minimumPixelSize: 17
}
