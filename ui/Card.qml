import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// A white card with a thin outline around its content.
T.Pane {
    id: card

    property real radius: 16

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    focusPolicy: Qt.NoFocus

    background: ContinuousRectangle {
        radius: card.radius
        color: Theme.white
        borderColor: Theme.outline
        borderWidth: 1
    }
    Accessible.ignored: true
}
