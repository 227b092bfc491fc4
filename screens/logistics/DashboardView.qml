pragma ComponentBehavior: Bound
import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property DashboardViewModel viewModel: DashboardViewModel {}

    required property DashboardScreens screens

    barHidden: true
    onAppeared: viewModel.cargarDatos()

    Scroller {
        anchors.fill: parent

        Column {
            id: column
            readonly property real inner: width - 2 * padding
            width: parent.width
            padding: 24
            spacing: 24

            Item {
                objectName: "header"
                width: column.inner
                height: Math.max(50, greeting.height)

                Avatar {
                    id: photo
                    objectName: "photo"
                    anchors.verticalCenter: parent.verticalCenter
                    width: 50
                    height: 50
                    photo: screen.viewModel.userAvatarData
                    Accessible.role: Accessible.Graphic
                    Accessible.name: "Foto de perfil"
                    Accessible.ignored: !enabled
                }
                Column {
                    id: greeting
                    anchors.verticalCenter: parent.verticalCenter
                    x: photo.width + 2 * Theme.spacing
                    width: signOut.x - x - Theme.spacing
                    spacing: Theme.spacing
                    AppText {
                        objectName: "greeting"
                        width: parent.width
                        textStyle: Theme.headline
                        // Below the profile, which changes the name with each letter, it is not laid out.
                        Binding on text {
                            when: screen.visible
                            value: "Hola, " + screen.viewModel.userNombre
                            restoreMode: Binding.RestoreNone
                        }
                    }
                    AppText {
                        width: parent.width
                        text: "Bienvenido"
                        textStyle: Theme.subheadline
                        color: Theme.grey
                    }
                }
                Pressable {
                    id: signOut
                    objectName: "cerrarSesion"
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    text: "Cerrar sesión"
                    onClicked: screen.viewModel.cerrarSesion()
                    contentItem: Symbol {
                        implicitWidth: 24 * Theme.textScale
                        implicitHeight: implicitWidth
                        name: "rectangle.portrait.and.arrow.right"
                        color: Theme.primaryText
                    }
                }
            }

            Item {
                objectName: "summary"
                width: column.inner
                height: summary.height

                ContinuousRectangle {
                    anchors.fill: parent
                    radius: 24
                    color: Theme.blue
                }
                Column {
                    id: summary
                    width: parent.width
                    padding: Theme.padding
                    spacing: Theme.spacing
                    AppText {
                        width: parent.width - 2 * Theme.padding
                        text: "Mi Resumen"
                        textStyle: Theme.title2
                        bold: true
                        color: Theme.white
                        Accessible.role: Accessible.Heading
                    }
                    Item {
                        width: parent.width - 2 * Theme.padding
                        // Whether the blocks do not fit side by side.
                        readonly property bool stacked: paquetes.width + Theme.spacing + cotizaciones.width > width
                        height: 8 + (stacked ? cotizaciones.y + cotizaciones.height - 8
                                             : Math.max(paquetes.height, cotizaciones.height))
                        CountBlock {
                            id: paquetes
                            objectName: "paqueteCount"
                            y: 8
                            count: screen.viewModel.paqueteCount
                            caption: "Paquetes"
                            onClicked: screen.push(screen.screens.paquetes)
                        }
                        CountBlock {
                            id: cotizaciones
                            objectName: "cotizacionCount"
                            y: parent.stacked ? paquetes.y + paquetes.height + Theme.spacing : 8
                            x: parent.stacked ? 0 : parent.width - width
                            count: screen.viewModel.cotizacionCount
                            caption: "Cotizaciones"
                            onClicked: screen.push(screen.screens.cotizaciones)
                        }
                    }
                }
            }

            TileRow {
                objectName: "tiles"
                width: column.inner
                DashboardBtn { icon: "shippingbox"; text: "Casillero"; onClicked: screen.push(screen.screens.casillero) }
                DashboardBtn { icon: "doc.text"; text: "Cotizar"; onClicked: screen.push(screen.screens.cotizar) }
                DashboardBtn { icon: "car"; text: "Autos"; onClicked: screen.push(screen.screens.autos) }
                DashboardBtn { icon: "person"; text: "Perfil"; onClicked: screen.push(screen.screens.perfil) }
                DashboardBtn { icon: "info.circle"; text: "Dev"; onClicked: screen.push(screen.screens.dev) }
            }

            Column {
                objectName: "recentPackages"
                width: column.inner
                spacing: 12
                SectionTitle {
                    width: parent.width
                    title: "Envíos Recientes"
                    link: "Ver todos"
                    onClicked: screen.push(screen.screens.paquetes)
                }
                Repeater {
                    model: screen.viewModel.paquetesRecientes
                    Pressable {
                        id: row
                        required property var tracking
                        required property var descripcion
                        required property var estado
                        width: column.inner
                        focusRadius: 16
                        text: card.spoken
                        copyText: tracking ?? ""
                        onClicked: screen.viewModel.abrirTracking(tracking)
                        contentItem: CardRow {
                            id: card
                            partOfControl: true
                            emoji: "📦"
                            headline: "Tracking: " + (row.tracking ?? Absent.tracking)
                            detail: row.descripcion ?? Absent.descripcion
                            badge: (row.estado ?? Absent.estadoPaquete).toUpperCase()
                            badgeColor: Theme.green
                        }
                        Copyable {
                            button: row
                            text: row.copyText
                        }
                    }
                }
            }

            Column {
                objectName: "recentQuotes"
                width: column.inner
                spacing: 12
                SectionTitle {
                    width: parent.width
                    title: "Mis Cotizaciones"
                    link: "Ver todas"
                    onClicked: screen.push(screen.screens.cotizaciones)
                }
                Repeater {
                    model: screen.viewModel.cotizacionesRecientes
                    CardRow {
                        required property var origen
                        required property var descripcion
                        required property var estado
                        width: column.inner
                        emoji: "📄"
                        headline: "Origen: " + (origen ?? Absent.origen)
                        detail: descripcion ?? Absent.descripcion
                        badge: (estado ?? Absent.estadoCotizacion).toUpperCase()
                        badgeColor: Theme.blue
                    }
                }
            }

            Card {
                objectName: "tracking"
                width: column.inner
                radius: 16
                padding: 16

                contentItem: Column {
                    spacing: 12
                    AppText {
                        width: parent.width
                        text: "Rastreo de Paquetes"
                        textStyle: Theme.headline
                        Accessible.role: Accessible.Heading
                    }
                    Item {
                        width: parent.width
                        height: Math.max(number.height, search.height)
                        FormField {
                            id: number
                            objectName: "trackingText"
                            anchors.verticalCenter: parent.verticalCenter
                            width: search.x - Theme.spacing
                            padding: 12
                            radius: 10
                            fill: Theme.greyFill
                            outline: "transparent"
                            hint: "Número de tracking..."
                            content: screen.viewModel.trackingText
                            onEdited: shown => screen.viewModel.trackingText = shown
                        }
                        PrimaryButton {
                            id: search
                            objectName: "buscar"
                            anchors.right: parent.right
                            anchors.verticalCenter: parent.verticalCenter
                            verticalPadding: 12
                            radius: 10
                            text: "Buscar"
                            onClicked: screen.viewModel.abrirTracking(screen.viewModel.trackingText)
                        }
                    }
                }
            }
        }
    }
}
