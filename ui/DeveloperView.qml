import QtQuick
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property DeveloperViewModel viewModel: DeveloperViewModel {}

    barHidden: true

    Scroller {
        id: scroller
        anchors.fill: parent

        Item {
            id: page
            readonly property real inner: width - 48
            width: parent.width
            implicitHeight: 24 + middle.height + 24 + volver.height + 24 + 2 * 24
            height: Math.max(scroller.height, implicitHeight)

            Column {
                id: middle
                width: page.inner
                x: 24
                // Centred in the space above the button.
                y: Math.round((volver.y - height) / 2)
                spacing: 24

                Artwork {
                    objectName: "logo"
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: 140
                    height: 140
                    name: "corvandel"
                }
                Column {
                    width: parent.width
                    spacing: 6
                    AppText {
                        width: parent.width
                        text: "Corvandel"
                        textStyle: Theme.title
                        bold: true
                        horizontalAlignment: Text.AlignHCenter
                        Accessible.role: Accessible.Heading
                    }
                    AppText {
                        width: parent.width
                        text: "Desarrollo de Software & IT Solutions"
                        textStyle: Theme.subheadline
                        color: Theme.grey
                        horizontalAlignment: Text.AlignHCenter
                    }
                }
                Card {
                    objectName: "card"
                    width: parent.width
                    radius: 20
                    padding: 20

                    contentItem: Column {
                        id: links
                        readonly property real availableRowWidth: page.inner - 40
                        spacing: 16
                        LinkRow {
                            objectName: "sitio"
                            anchors.horizontalCenter: parent.horizontalCenter
                            visible: screen.viewModel.haySitio
                            availableRowWidth: links.availableRowWidth
                            emoji: "🌐"
                            label: "Sitio Web:"
                            target: screen.viewModel.sitioTexto
                            copyText: screen.viewModel.sitio
                            onClicked: screen.viewModel.abrir(screen.viewModel.sitio)
                        }
                        Hairline {
                            objectName: "divider"
                            width: links.width
                        }
                        LinkRow {
                            objectName: "correo"
                            anchors.horizontalCenter: parent.horizontalCenter
                            visible: screen.viewModel.hayCorreo
                            availableRowWidth: links.availableRowWidth
                            emoji: "✉️"
                            label: "Correo:"
                            target: screen.viewModel.correoTexto
                            copyText: target
                            targetStyle: Theme.footnote
                            onClicked: screen.viewModel.abrir(screen.viewModel.correo)
                        }
                    }
                }
            }
            PrimaryButton {
                id: volver
                objectName: "volver"
                x: 24
                y: page.height - 24 - height
                width: page.inner
                text: "Volver al Panel"
                textStyle: Theme.headline
                onClicked: screen.back()
            }
        }
    }
}
