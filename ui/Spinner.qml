pragma ComponentBehavior: Bound
import QtQuick
import Marovenda.Ui

// Eight spokes that light up in turn, one round a second. The timer stops while the spinner is hidden or not running.
Item {
    id: spinner

    property bool running: true
    property int head

    implicitWidth: 20
    implicitHeight: 20

    Accessible.role: Accessible.Indicator
    Accessible.name: "Cargando"
    Accessible.ignored: !enabled

    Timer {
        objectName: "tick"
        interval: 125
        repeat: true
        running: spinner.running && spinner.visible
        onTriggered: spinner.head = (spinner.head + 1) % 8
    }
    Repeater {
        model: 8
        Rectangle {
            id: spoke
            required property int index

            x: spinner.width / 2 - width / 2
            y: 0.5
            width: 2.4
            height: spinner.height * 0.29
            radius: width / 2
            color: Theme.grey
            antialiasing: true
            opacity: 1 - 0.11 * ((spinner.head - spoke.index + 8) % 8)
            transformOrigin: Item.Center
            transform: Rotation {
                origin.x: 1.2
                origin.y: spinner.height / 2 - 0.5
                angle: spoke.index * 45
            }
        }
    }
}
