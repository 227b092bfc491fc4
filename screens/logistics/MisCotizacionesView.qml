pragma ComponentBehavior: Bound
import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property MisCotizacionesViewModel viewModel: MisCotizacionesViewModel {}

    title: "Mis Cotizaciones"
    scrolled: rows.contentY - rows.originY
    onAppeared: viewModel.cargarCotizaciones()

    GroupedList {
        id: rows
        objectName: "rows"
        anchors.fill: parent
        title: screen.title
        model: screen.viewModel.cotizaciones
        placeholder: empty
        delegate: ListRow {
            required property var origen
            required property var descripcion
            required property var estado
            list: rows
            headline: descripcion ?? Absent.titulo
            badge: (estado ?? Absent.estadoCotizacion).toUpperCase()
            badgeColor: Theme.blue
            detail: "Origen: " + (origen ?? Absent.origen)
            spoken: headline + ", " + badge + ", " + detail
        }

        ContinuousRectangle {
            id: empty
            objectName: "empty"
            parent: rows.contentItem
            visible: rows.count === 0
            x: rows.side
            width: rows.columnWidth - 32
            height: none.height + 2 * Theme.padding
            radius: 10
            color: Theme.white
            AppText {
                id: none
                x: Theme.padding
                y: Theme.padding
                width: parent.width - 2 * Theme.padding
                text: "No tienes cotizaciones registradas."
                color: Theme.grey
            }
        }
    }
}
