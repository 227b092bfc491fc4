pragma ComponentBehavior: Bound
import QtQuick
import Marovenda.Ui

// Lets the customer pick a photo: with the platform's own picker where there is one, otherwise with a grid of the pictures
// folder over the whole screen.
FocusScope {
    id: picker

    property bool shown: false

    signal picked(file: url)

    function open() {
        if (PlatformSettings.photoPicker) {
            platform.active = false
            platform.active = true
            return
        }
        folder.refresh()
        shown = true
        grid.currentIndex = 0
        grid.byKeyboard = false
        grid.forceActiveFocus()
    }

    function choose(file: url) {
        shown = false
        picked(file)
    }

    anchors.fill: parent
    visible: shown
    enabled: shown
    z: 50

    Keys.onEscapePressed: picker.shown = false
    Keys.onBackPressed: picker.shown = false

    Accessible.role: Accessible.Dialog
    Accessible.name: "Elegir foto"
    Accessible.ignored: !picker.enabled

    Loader {
        id: platform
        active: false
        source: "PlatformPhotoPicker.qml"
        Connections {
            target: platform.item
            function onPicked(file: url) { picker.picked(file) }
        }
    }
    PictureFolder { id: folder }

    Rectangle {
        anchors.fill: parent
        color: Theme.screenBackground
        // Nothing below can be reached.
        MouseArea {
            anchors.fill: parent
            onWheel: wheel => wheel.accepted = true
        }
    }
    Item {
        id: bar
        width: parent.width
        height: Math.max(Theme.barHeight, cancel.implicitHeight)
        z: 1

        TextButton {
            id: cancel
            objectName: "cancelar"
            anchors.verticalCenter: parent.verticalCenter
            x: Theme.padding
            text: "Cancelar"
            onClicked: picker.shown = false
            KeyNavigation.tab: grid
            KeyNavigation.backtab: grid
        }
        BarTitle {
            beginning: cancel.x + cancel.width + Theme.spacing
            text: "Elegir foto"
            Accessible.role: Accessible.Heading
        }
        Hairline {
            anchors.bottom: parent.bottom
            width: parent.width
        }
    }
    GridView {
        id: grid
        objectName: "photos"
        readonly property real gap: 3
        // Where the keyboard is shows once it is used.
        property bool byKeyboard: false
        readonly property int columns: Math.max(3, Math.floor(width / 180))

        anchors.top: bar.bottom
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width
        clip: true
        cellWidth: Math.floor(width / columns)
        cellHeight: cellWidth
        model: folder.pictures
        activeFocusOnTab: true
        keyNavigationEnabled: true
        KeyNavigation.tab: cancel
        KeyNavigation.backtab: cancel
        Keys.onPressed: event => {
            byKeyboard = true
            event.accepted = false
        }
        Keys.onReturnPressed: if (currentItem) picker.choose((currentItem as PhotoCell).file)
        Keys.onEnterPressed: if (currentItem) picker.choose((currentItem as PhotoCell).file)
        Keys.onSpacePressed: if (currentItem) picker.choose((currentItem as PhotoCell).file)

        delegate: PhotoCell {
            width: grid.cellWidth
            height: grid.cellHeight
            gap: grid.gap
            current: GridView.isCurrentItem && grid.activeFocus
            marked: current && grid.byKeyboard
            onChosen: picker.choose(file)
        }
        ScrollIndicator { area: grid }
    }
    AppText {
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.padding
        visible: folder.ready && folder.count === 0
        text: "No hay fotos en la carpeta de imágenes."
        color: Theme.grey
        horizontalAlignment: Text.AlignHCenter
    }
}
