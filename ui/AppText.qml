import QtQuick
import Marovenda.Ui

// A label in one of the text styles. The text is always plain: markup from the service is not interpreted.
Text {
    id: label

    property TextStyle textStyle: Theme.body
    property bool bold
    // The control's accessible name already contains this text, so screen readers skip the label.
    property bool partOfControl

    color: Theme.primaryText
    font.family: Theme.face
    font.pixelSize: label.textStyle.size
    font.weight: label.bold ? Font.Bold : label.textStyle.weight
    lineHeightMode: Text.FixedHeight
    lineHeight: label.textStyle.line
    textFormat: Text.PlainText
    wrapMode: Text.Wrap

    Accessible.role: Accessible.StaticText
    Accessible.name: label.text
    // Screens that something covers are disabled, and screen readers must not find their labels.
    Accessible.ignored: label.partOfControl || !label.enabled || label.text === ""
}
