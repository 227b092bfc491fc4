import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property CasilleroViewModel viewModel: CasilleroViewModel {}

    barHidden: true
    onAppeared: viewModel.cargarCasillero()

    Scroller {
        anchors.fill: parent
        centred: true

        Column {
            id: column
            readonly property real inner: width - 2 * padding
            width: parent.width
            padding: 24
            spacing: Theme.spacing

            AppText {
                width: column.inner
                bottomPadding: 24
                text: "Mi Casillero"
                textStyle: Theme.title
                bold: true
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.Heading
            }
            Item {
                width: column.inner
                height: card.height + 32
                Card {
                    id: card
                    objectName: "card"
                    width: parent.width
                    radius: 24
                    padding: 24
                    readonly property string copyText: screen.viewModel.info + "\n" + screen.viewModel.direccion

                    Copyable {
                        parent: card
                        text: card.copyText
                    }
                    FocusRing {
                        parent: card
                        shown: Keyboard.navigating && address.activeFocus
                        radius: card.radius + margin
                    }
                    contentItem: Column {
                        spacing: 16
                        AppText {
                            objectName: "info"
                            readonly property string copyText: card.copyText
                            width: parent.width
                            text: screen.viewModel.info
                            textStyle: Theme.headline
                            color: Theme.blue
                            horizontalAlignment: Text.AlignHCenter
                        }
                        AppText {
                            id: address
                            objectName: "direccion"
                            readonly property string copyText: card.copyText
                            activeFocusOnTab: true
                            Keys.onPressed: event => {
                                event.accepted = event.matches(StandardKey.Copy)
                                if (event.accepted && !event.isAutoRepeat)
                                    Copying.copy(copyText)
                            }
                            width: parent.width
                            text: screen.viewModel.direccion
                            color: Theme.grey
                            lineHeight: textStyle.line + lineSpacing
                            readonly property real lineSpacing: 8
                            // Without the spacing below the last line.
                            height: implicitHeight - lineSpacing
                            horizontalAlignment: Text.AlignHCenter
                        }
                    }
                }
            }
            PrimaryButton {
                objectName: "volver"
                width: column.inner
                text: "Volver al Panel"
                bold: false
                onClicked: screen.back()
            }
        }
    }
}
