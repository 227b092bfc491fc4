import QtQuick
import Marovenda.App
import Marovenda.Ui

Window {
    id: window

    readonly property MarovendaAppViewModel viewModel: MarovendaAppViewModel {}

    property bool appeared
    // On a slow device the splash stays until the screens are loaded.
    readonly property bool splash: viewModel.showSplash || !screens.found

    width: 390
    height: 844
    visible: true
    flags: viewModel.windowFlags(Screen.width, Screen.height)
    title: "Marovenda"
    color: Theme.screenBackground

    // The splash's time starts when the splash is visible.
    onFrameSwapped: {
        if (appeared)
            return
        appeared = true
        viewModel.cargarFuentes()
        viewModel.iniciarSplash()
    }

    // Signing in or out creates a new screen with empty fields.
    Loader {
        id: first
        anchors.fill: parent
        active: !window.splash
        focus: true
        // Do not use the session during the splash: opening it may take longer than a frame.
        sourceComponent: {
            if (window.splash)
                return null
            return window.viewModel.someoneSignedIn ? screens.found.dashboard : screens.found.login
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
            logoOpacity: window.viewModel.logoOpacity
            logoScale: window.viewModel.logoScale
            // Finding the fonts takes longer than all the rest of the first frame.
            textShown: window.viewModel.fontsLoaded
            // qmllint enable unqualified
        }
    }

    // Loads the screens while the splash is shown.
    Loader {
        id: screens
        readonly property Component file: window.viewModel.fontsLoaded
            ? Qt.createComponent("FirstScreens.qml", Component.Asynchronous, window) : null
        readonly property bool failed: file !== null && file.status === Component.Error
        // `var`, since naming the type would load the screens too early.
        readonly property var found: item
        active: file !== null && file.status === Component.Ready
        asynchronous: true
        sourceComponent: file
        onFailedChanged: {
            window.viewModel.faltanPantallas(file.errorString())
            Qt.exit(1)
        }
    }

    component CrossFade: NumberAnimation {
        duration: 300
        easing.type: Easing.BezierSpline
        easing.bezierCurve: Theme.easeIn
    }
}
