import QtQuick
import Marovenda.Account
import Marovenda.App
import Marovenda.Logistics
import Marovenda.Ui

// What the window shows after the splash. A file of its own, so that the splash need not wait for all screens to load.
QtObject {
    readonly property Component login: Component {
        NavigationContainer {
            root: Component { LoginView {} }
        }
    }
    readonly property Component dashboard: Component {
        NavigationContainer {
            root: Component { DashboardView { screens: ServiceScreens {} } }
        }
    }
}
