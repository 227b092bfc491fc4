import QtQuick
import Marovenda.Ui

// A modal dialog with a text input and two buttons. The input has the focus at first; the focus cannot leave the dialog.
FocusScope {
    id: alert

    property bool shown
    property string title
    property string message
    property string placeholder
    property alias content: input.content
    property string acceptText
    property string cancelText: "Cancelar"
    // True until the alert has faded out; nothing below it takes input meanwhile.
    property bool covering

    signal edited(shown: string)
    signal accepted()
    signal cancelled()

    // Ignores the repeats of the Return key, which may have opened the alert and still be held down.
    function send(event: KeyEvent) {
        if (event.isAutoRepeat)
            return
        UnfinishedText.commit()
        accepted()
    }

    anchors.fill: parent
    visible: covering
    z: 100

    onShownChanged: {
        if (shown) {
            if (!covering)
                focusBelow.save()
            // Covering the focused item would take the focus with another reason, so move the focus first.
            input.forceActiveFocus(Qt.PopupFocusReason)
            covering = true
            opacity = 0
            box.scale = 1.1
        }
        fadeTo.to = shown ? 1 : 0
        fade.restart()
    }

    // Keys that the alert does not use must not reach the screen below.
    Keys.onPressed: event => {
        event.accepted = true
        const closes = event.key === Qt.Key_Escape || event.key === Qt.Key_Back
        if (closes && alert.shown && !event.isAutoRepeat)
            alert.cancelled()
    }

    SavedFocus {
        id: focusBelow
        popup: alert
    }
    ParallelAnimation {
        id: fade
        onFinished: {
            if (alert.shown)
                return
            alert.covering = false
            focusBelow.restore()
        }
        NumberAnimation {
            id: fadeTo
            target: alert
            property: "opacity"
            duration: Theme.alertDuration
        }
        NumberAnimation {
            target: box
            property: "scale"
            to: 1
            duration: Theme.alertDuration
            easing.type: Easing.BezierSpline
            easing.bezierCurve: Theme.easeOut
        }
    }

    Rectangle {
        objectName: "scrim"
        anchors.fill: parent
        color: Qt.alpha("black", 0.2)
        Shield { anchors.fill: parent }
    }

    FocusScope {
        id: box
        objectName: "alertBox"
        focus: true
        enabled: alert.shown
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.max(8, (parent.height - keyboard - height) / 2)
        width: Math.min(270 * Math.max(1, Math.min(Theme.textScale, 1.3)), parent.width - 32)
        height: content.height
        readonly property real radius: 14
        readonly property real keyboard: InputMethod.visible ? InputMethod.keyboardRectangle.height : 0

        Accessible.role: Accessible.Dialog
        Accessible.name: alert.title
        Accessible.ignored: !box.enabled

        ContinuousRectangle {
            objectName: "shape"
            anchors.fill: parent
            radius: box.radius
            color: Qt.alpha("white", 0.95)
        }
        Column {
            id: content
            width: parent.width

            // Low windows leave room for the input and the buttons; the texts scroll.
            Scroller {
                width: parent.width
                height: Math.min(texts.height, alert.height - box.keyboard - 16 - buttons.height)
                clip: interactive

                Column {
                    id: texts
                    width: parent.width
                    topPadding: 19
                    bottomPadding: 16
                    leftPadding: 16
                    rightPadding: 16
                    spacing: 2
                    readonly property real inner: width - 32

                    AppText {
                        width: texts.inner
                        text: alert.title
                        textStyle: Theme.headline
                        horizontalAlignment: Text.AlignHCenter
                        partOfControl: true
                    }
                    AppText {
                        objectName: "message"
                        width: texts.inner
                        text: alert.message
                        textStyle: Theme.footnote
                        horizontalAlignment: Text.AlignHCenter
                    }
                    Item { width: 1; height: 12 }
                    FormField {
                        id: input
                        objectName: "alertInput"
                        focus: true
                        width: texts.inner
                        padding: 6
                        radius: 7
                        hint: alert.placeholder
                        outline: Theme.separator
                        outlineWidth: 1 / Screen.devicePixelRatio
                        onEdited: shown => alert.edited(shown)
                        Keys.onReturnPressed: event => alert.send(event)
                        Keys.onEnterPressed: event => alert.send(event)
                        KeyNavigation.tab: cancelButton
                        KeyNavigation.backtab: acceptButton
                    }
                }
            }
            Hairline { width: parent.width }
            Item {
                id: buttons
                width: parent.width
                height: Math.max(Theme.touchTarget, acceptButton.implicitHeight)

                TextButton {
                    id: cancelButton
                    objectName: "cancelar"
                    width: parent.width / 2
                    height: parent.height
                    text: alert.cancelText
                    bold: true
                    focusRadius: box.radius
                    focusMargin: -3
                    onClicked: alert.cancelled()
                    KeyNavigation.tab: acceptButton
                    KeyNavigation.backtab: input
                }
                Rectangle {
                    objectName: "split"
                    x: parent.width / 2
                    width: 1 / Screen.devicePixelRatio
                    height: parent.height
                    color: Theme.separator
                }
                TextButton {
                    id: acceptButton
                    objectName: "aceptar"
                    x: parent.width / 2
                    width: parent.width / 2
                    height: parent.height
                    text: alert.acceptText
                    focusRadius: box.radius
                    focusMargin: -3
                    onClicked: alert.accepted()
                    KeyNavigation.tab: input
                    KeyNavigation.backtab: cancelButton
                }
            }
        }
    }
}
