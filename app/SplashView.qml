import QtQuick
import Marovenda.Ui

Item {
    id: splash

    required property real logoOpacity
    required property real logoScale
    property bool spinning: true

    Artwork {
        objectName: "background"
        anchors.fill: parent
        cropped: true
        name: "background"
    }
    Column {
        anchors.centerIn: parent
        spacing: 20
        Artwork {
            objectName: "logo"
            width: 160
            height: 160
            name: "marovenda_logo"
            scale: splash.logoScale
            opacity: splash.logoOpacity
            Behavior on scale { LogoAnimation {} }
            Behavior on opacity { LogoAnimation {} }
        }
        Item {
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
    AppText {
        objectName: "credit"
        anchors.bottom: parent.bottom
        width: parent.width
        bottomPadding: 32
        text: "Desarrollado por Corvandel"
        textStyle: Theme.caption
        bold: true
        horizontalAlignment: Text.AlignHCenter
    }

    component LogoAnimation: NumberAnimation {
        duration: 1000
        easing.type: Easing.BezierSpline
        easing.bezierCurve: Theme.easeOut
    }
}
