import QtQuick
import Marovenda.Ui

Item {
    id: splash

    required property real logoOpacity
    required property real logoScale
    property bool spinning: true
    property bool textShown: true

    Artwork {
        objectName: "background"
        anchors.fill: parent
        cropped: true
        name: "background"
    }
    // Centred, or above the credit in a low window.
    Column {
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.min(Math.round((parent.height - height) / 2), credit.y - height)
        spacing: 20
        Artwork {
            objectName: "logo"
            width: height
            height: Math.max(0, Math.min(160, credit.y - parent.spacing - spinnerPlace.height))
            name: "marovenda_logo"
            scale: splash.logoScale
            opacity: splash.logoOpacity
            Behavior on scale { LogoAnimation {} }
            Behavior on opacity { LogoAnimation {} }
        }
        Item {
            id: spinnerPlace
            anchors.horizontalCenter: parent.horizontalCenter
            width: spinner.width
            height: 16 + spinner.height
            Spinner {
                id: spinner
                objectName: "spinner"
                y: 16
                running: splash.spinning
            }
        }
    }
    Loader {
        id: credit
        anchors.bottom: parent.bottom
        width: parent.width
        height: Math.max(implicitHeight, Theme.caption.line + 32)
        active: splash.textShown
        sourceComponent: AppText {
            objectName: "credit"
            bottomPadding: 32
            text: "Desarrollado por Corvandel"
            textStyle: Theme.caption
            bold: true
            horizontalAlignment: Text.AlignHCenter
        }
    }

    component LogoAnimation: NumberAnimation {
        duration: 1000
        easing.type: Easing.BezierSpline
        easing.bezierCurve: Theme.easeOut
    }
}
