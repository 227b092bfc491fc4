import QtQml
import QtQuick

// A text style: size and line height in device-independent pixels, already scaled to the customer's text size.
QtObject {
    required property real size
    required property real line
    property int weight: Font.Normal
}
