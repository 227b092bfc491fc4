import QtQuick
import Marovenda.Ui

// A text in one of the text styles. What it shows is plain text, whatever markup the service sends.
Text {
    id: label

    property TextStyle textStyle: Theme.body
    property bool bold: false
    // A text that belongs to a control is heard as that control's name, not once more by itself.
    property bool partOfControl: false

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
    // What is covered is disabled, and nothing covered may be heard.
    Accessible.ignored: label.partOfControl || !label.enabled || label.text === ""
}
