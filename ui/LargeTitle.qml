import QtQuick
import Marovenda.Ui

// The title that a screen starts with; it scrolls away with the content.
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
        // At a large text size the words stay whole as long as they fit at the standard one.
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 34
        Accessible.role: Accessible.Heading
    }
}
