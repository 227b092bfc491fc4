import QtQml
import QtQuick

// One of the product's text styles, in points at the customer's text size.
QtObject {
    required property real size
    required property real line
    property int weight: Font.Normal
}
