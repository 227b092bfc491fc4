import QtQuick
import Marovenda.Ui

// The bar at the top of a screen. It has a back button, shows the title once the large title has scrolled away, and draws
// a hairline above scrolled content.
Item {
    id: bar

    property string title
    property bool titleShown
    property bool backShown
    property bool hairlineShown

    signal back()

    implicitHeight: Math.max(Theme.barHeight, Theme.headline.line + 2 * Theme.spacing)

    Pressable {
        id: backButton
        objectName: "back"
        visible: bar.backShown
        x: 8
        height: bar.height
        text: "Atrás"
        rightPadding: Theme.spacing
        // A ring outside the button would be cut off at the window's edge.
        focusMargin: -2
        Accessible.name: "Atrás"
        onClicked: bar.back()

        contentItem: Row {
            spacing: 2
            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                width: 24 * Theme.textScale
                height: width
                name: "chevron.left"
                color: Theme.blue
            }
            AppText {
                anchors.verticalCenter: parent.verticalCenter
                text: backButton.text
                color: Theme.blue
                wrapMode: Text.NoWrap
                partOfControl: true
            }
        }
    }
    BarTitle {
        leftItemEnd: bar.backShown ? backButton.x + backButton.width + Theme.spacing : Theme.padding
        text: bar.title
        // While the large title shows, screen readers must not find this one.
        visible: opacity > 0
        opacity: bar.titleShown ? 1 : 0
        Behavior on opacity {
            enabled: !Theme.reducedMotion
            NumberAnimation { duration: 150 }
        }
    }
    Hairline {
        anchors.bottom: parent.bottom
        width: parent.width
        visible: bar.hairlineShown
    }
}
