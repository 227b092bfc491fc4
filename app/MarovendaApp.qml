import QtQuick
import Marovenda.App
import Marovenda.Ui

Window {
    id: window

    property bool appeared: false

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
        active: !viewModel.showSplash
        focus: true
        // Nothing asks for the session before: to open it may take longer than a frame.
        sourceComponent: {
            if (viewModel.showSplash || !screens.found)
                return null
            return viewModel.someoneSignedIn ? screens.found.dashboard : screens.found.login
        }
        opacity: viewModel.showSplash ? 0 : 1
        Behavior on opacity { CrossFade {} }
    }
    Loader {
        active: viewModel.showSplash || opacity > 0
        anchors.fill: parent
        enabled: viewModel.showSplash
        opacity: viewModel.showSplash ? 1 : 0
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
        // Not by its type, which would have to be loaded first.
        readonly property var found: item
        active: window.appeared
        asynchronous: true
        source: "FirstScreens.qml"
    }

    component CrossFade: NumberAnimation {
        duration: 300
        easing.type: Easing.BezierSpline
        easing.bezierCurve: Theme.easeIn
    }
}
