import QtQuick
import Marovenda.Ui

// The large title at the top of a screen; it scrolls with the content.
Item {
    property alias text: label.text

    implicitHeight: Math.max(52, label.contentHeight + 11)

    AppText {
        id: label
        y: (parent.height - contentHeight) / 2
        height: contentHeight
        x: Theme.padding
        width: parent.width - 2 * Theme.padding
        textStyle: Theme.largeTitle
        bold: true
        // Shrinks before it breaks words, at large text sizes and in narrow windows.
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 24
        Accessible.role: Accessible.Heading
    }
}
