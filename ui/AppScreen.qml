import QtQuick
import Marovenda.Ui

// A screen of the app: its background, its bar, and its content below. The navigation container that shows it listens
// to `push` and `back` and tells it when it comes on screen.
FocusScope {
    id: screen

    default property alias content: area.data
    property string title: ""
    property bool barHidden: false
    // How far the content has scrolled under the bar.
    property real scrolled: 0
    // Something over the whole screen takes its place, for the finger and for assistive technology.
    property bool covered: false
    // Set by the navigation container.
    property bool canGoBack: false

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
    // Read and reached before the content, as it stands.
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
