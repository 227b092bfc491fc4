import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property ImportarAutoViewModel viewModel: ImportarAutoViewModel {}

    scrolled: scroller.contentY

    Scroller {
        id: scroller
        anchors.fill: parent
        message: outcome

        Column {
            id: column
            readonly property real inner: width - 2 * padding
            width: parent.width
            padding: 24
            spacing: 12

            FormTitle {
                width: column.inner
                text: "Importar Vehículo"
            }
            CustomTextField {
                objectName: "marca"
                width: column.inner
                hint: "Marca (Ej: Toyota)"
                content: screen.viewModel.marca
                isDecimal: false
                onEdited: shown => screen.viewModel.marca = shown
            }
            CustomTextField {
                objectName: "modelo"
                width: column.inner
                hint: "Modelo (Ej: Corolla)"
                content: screen.viewModel.modelo
                isDecimal: false
                onEdited: shown => screen.viewModel.modelo = shown
            }
            CustomTextField {
                objectName: "anio"
                width: column.inner
                hint: "Año"
                content: screen.viewModel.anio
                isDecimal: true
                onEdited: shown => screen.viewModel.anio = shown
            }
            Item {
                width: column.inner
                height: ubicacion.height + 12
                CustomTextField {
                    id: ubicacion
                    objectName: "ubicacion"
                    width: parent.width
                    hint: "Ubicación o Subasta"
                    content: screen.viewModel.ubicacion
                    isDecimal: false
                    onEdited: shown => screen.viewModel.ubicacion = shown
                }
            }
            PrimaryButton {
                objectName: "enviar"
                width: column.inner
                text: "Solicitar Importación"
                onClicked: screen.viewModel.enviarSolicitud()
            }
            MessageLine {
                id: outcome
                objectName: "msg"
                width: column.inner
                text: screen.viewModel.msg
                color: Theme.blue
                keepsPlace: true
            }
        }
    }
}
