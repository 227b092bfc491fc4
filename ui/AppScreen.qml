import QtQuick
import Marovenda.Ui

// A screen of the app: its background, its bar, and the content below the bar. NavigationContainer handles `push` and
// `back`, and emits `appeared` when the screen comes into view.
FocusScope {
    id: screen

    default property alias content: area.data
    property string title
    property bool barHidden
    // How far the content has scrolled under the bar.
    property real scrolled
    // True while something covers the screen: it takes no input and is hidden from assistive technology.
    property bool covered
    // Set by NavigationContainer.
    property bool canGoBack

    signal appeared()
    signal push(component: Component)
    signal back()

    Accessible.role: Accessible.Pane
    Accessible.name: screen.title
    Accessible.ignored: true

    Rectangle {
        anchors.fill: parent
        color: Theme.screenBackground
    }
    // Declared before the content: screen readers and the Tab key follow the order of declaration.
    NavigationBar {
        id: bar
        visible: !screen.barHidden
        enabled: !screen.covered
        width: parent.width
        title: screen.title
        titleShown: screen.scrolled > 44
        backShown: screen.canGoBack
        hairlineShown: screen.scrolled > 0.5
        onBack: screen.back()
        z: 1
    }
    Item {
        id: area
        anchors.fill: parent
        anchors.topMargin: screen.barHidden ? 0 : bar.height
        clip: !screen.barHidden
        enabled: !screen.covered
    }
}
