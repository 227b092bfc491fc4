import QtQuick
import Marovenda.Ui

// A separator one physical pixel high.
Rectangle {
    implicitHeight: 1 / Screen.devicePixelRatio
    height: implicitHeight
    color: Theme.separator
}
