pragma ComponentBehavior: Bound
import QtQuick
import Marovenda.Ui

// Lets the customer pick a photo. It uses the platform's picker where there is one; otherwise it covers the screen with a
// grid of the photos in the pictures folder.
FocusScope {
    id: picker

    property bool shown
    // True until the grid has faded out; nothing below it takes input meanwhile.
    property bool covering

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
            focusBelow.save()
        // Covering the focused item would take the focus with another reason, so move the focus first.
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

    // Keys that the picker does not use must not reach the screen below.
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
    SavedFocus {
        id: focusBelow
        popup: picker
    }
    NumberAnimation {
        id: fade
        target: picker
        property: "opacity"
        to: 0
        duration: Theme.alertDuration
        onFinished: {
            picker.covering = false
            focusBelow.restore()
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
            leftItemEnd: cancel.x + cancel.width + Theme.spacing
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
        // Repeats are ignored, since the key that opened the picker may still be held down.
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
