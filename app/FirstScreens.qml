import QtQuick
import Marovenda.Account
import Marovenda.App
import Marovenda.Logistics
import Marovenda.Ui

// The screens that follow the splash. They have their own file, so that the splash shows before all screens are loaded.
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
