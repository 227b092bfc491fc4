pragma ComponentBehavior: Bound
import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property MisPaquetesViewModel viewModel: MisPaquetesViewModel {}

    title: "Mis Paquetes"
    scrolled: rows.contentY - rows.originY
    onAppeared: viewModel.cargarPaquetes()

    GroupedList {
        id: rows
        objectName: "rows"
        anchors.fill: parent
        title: screen.title
        model: screen.viewModel.paquetes
        delegate: ListRow {
            required property var tracking
            required property var descripcion
            required property var estado
            list: rows
            headline: "Tracking: " + (tracking ?? Absent.tracking)
            badge: (estado ?? Absent.estadoPaquete).toUpperCase()
            badgeColor: Theme.green
            detail: descripcion ?? Absent.descripcion
            copyText: tracking ?? ""
            spoken: headline + ", " + detail + ", " + badge
        }
    }
}
