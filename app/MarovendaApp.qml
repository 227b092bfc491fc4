import QtQuick
import Marovenda.App
import Marovenda.Ui

Window {
    id: window

    property bool appeared: false
    // However slow the device is, the splash is not followed by nothing.
    readonly property bool splash: viewModel.showSplash || !screens.found

    width: 390
    height: 844
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    title: "Marovenda"
    color: Theme.screenBackground

    // The splash's time runs from the moment it can be seen.
    onFrameSwapped: {
        if (appeared)
            return
        appeared = true
        viewModel.iniciarSplash()
    }

    MarovendaAppViewModel { id: viewModel }

    // A new screen, with empty fields, at each switch between nobody and somebody.
    Loader {
        id: first
        anchors.fill: parent
        active: !window.splash
        focus: true
        // Nothing asks for the session before: to open it may take longer than a frame.
        sourceComponent: {
            if (window.splash)
                return null
            return viewModel.someoneSignedIn ? screens.found.dashboard : screens.found.login
        }
        opacity: window.splash ? 0 : 1
        Behavior on opacity { CrossFade {} }
    }
    Loader {
        active: window.splash || opacity > 0
        anchors.fill: parent
        enabled: window.splash
        opacity: window.splash ? 1 : 0
        Behavior on opacity { CrossFade {} }
        sourceComponent: SplashView {
            // qmllint disable unqualified
            logoOpacity: viewModel.logoOpacity
            logoScale: viewModel.logoScale
            // qmllint enable unqualified
        }
    }

    // Loaded while the splash is on show.
    Loader {
        id: screens
        readonly property Component file: window.appeared
            ? Qt.createComponent("FirstScreens.qml", Component.Asynchronous, window) : null
        readonly property bool failed: file !== null && file.status === Component.Error
        // Not by its type, which would have to be loaded first.
        readonly property var found: item
        active: file !== null && file.status === Component.Ready
        asynchronous: true
        sourceComponent: file
        onFailedChanged: {
            viewModel.faltanPantallas(file.errorString())
            Qt.exit(1)
        }
    }

    component CrossFade: NumberAnimation {
        duration: 300
        easing.type: Easing.BezierSpline
        easing.bezierCurve: Theme.easeIn
    }
}
