import QtQuick
import Marovenda.Ui

// The bar above a screen: the way back, the title once the large one has scrolled away, a hairline over scrolled content.
Item {
    id: bar

    property string title: ""
    property bool titleShown: false
    property bool backShown: false
    property bool hairlineShown: false

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
        // The bar ends at the window's edge.
        focusAround: -2
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
        beginning: bar.backShown ? backButton.x + backButton.width + Theme.spacing : Theme.padding
        text: bar.title
        // The large title is heard while it shows.
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
