pragma ComponentBehavior: Bound
import QtQuick
import Marovenda.Ui

// Lets the customer pick a photo: with the platform's own picker where there is one, otherwise with a grid of the pictures
// folder over the whole screen.
FocusScope {
    id: picker

    property bool shown: false
    // From the opening until it has faded: nothing below can be used.
    property bool covering: false

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
        if (!covering)
            focusBelow.keep()
        // Before what is below loses the focus for being covered, which would have another reason.
        grid.forceActiveFocus(Qt.PopupFocusReason)
        covering = true
        fade.stop()
        opacity = 1
    }

    function close() {
        shown = false
        fade.restart()
    }

    function choose(file: url) {
        close()
        picked(file)
    }

    anchors.fill: parent
    visible: covering
    z: 50

    // Whatever the picker does not use goes no further.
    Keys.onPressed: event => {
        event.accepted = true
        const closes = event.key === Qt.Key_Escape || event.key === Qt.Key_Back
        if (closes && picker.shown && !event.isAutoRepeat)
            picker.close()
    }

    Accessible.role: Accessible.Dialog
    Accessible.name: "Elegir foto"
    Accessible.ignored: !picker.enabled || !picker.shown

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
    KeptFocus {
        id: focusBelow
        cover: picker
    }
    NumberAnimation {
        id: fade
        target: picker
        property: "opacity"
        to: 0
        duration: Theme.alertDuration
        onFinished: {
            picker.covering = false
            focusBelow.giveBack()
        }
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.screenBackground
        Shield { anchors.fill: parent }
    }
    Item {
        id: bar
        width: parent.width
        height: Math.max(Theme.barHeight, cancel.implicitHeight + 2 * Theme.spacing)
        enabled: picker.shown
        z: 1

        TextButton {
            id: cancel
            objectName: "cancelar"
            anchors.verticalCenter: parent.verticalCenter
            x: Theme.padding
            text: "Cancelar"
            onClicked: picker.close()
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
        readonly property int columns: Math.max(3, Math.floor(width / 180))

        anchors.top: bar.bottom
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width
        clip: true
        enabled: picker.shown
        cellWidth: Math.floor(width / columns)
        cellHeight: cellWidth
        model: folder.pictures
        activeFocusOnTab: true
        keyNavigationEnabled: true
        KeyNavigation.tab: cancel
        KeyNavigation.backtab: cancel
        // The key that opened the picker may still be held down.
        Keys.onPressed: event => {
            event.accepted = [Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key)
            if (event.accepted && !event.isAutoRepeat && currentItem)
                picker.choose((currentItem as PhotoCell).file)
        }

        delegate: PhotoCell {
            width: grid.cellWidth
            height: grid.cellHeight
            gap: grid.gap
            current: GridView.isCurrentItem && grid.activeFocus
            marked: Keyboard.navigating && current
            onChosen: picker.choose(file)
        }
        ScrollIndicator { area: grid }
    }
    AppText {
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.padding
        enabled: picker.shown
        visible: folder.ready && folder.count === 0
        text: "No hay fotos en la carpeta de imágenes."
        color: Theme.grey
        horizontalAlignment: Text.AlignHCenter
    }
}
