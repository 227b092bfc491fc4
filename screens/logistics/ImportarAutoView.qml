import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    scrolled: scroller.contentY

    ImportarAutoViewModel { id: viewModel }

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
                content: viewModel.marca
                isDecimal: false
                onEdited: shown => viewModel.marca = shown
            }
            CustomTextField {
                objectName: "modelo"
                width: column.inner
                hint: "Modelo (Ej: Corolla)"
                content: viewModel.modelo
                isDecimal: false
                onEdited: shown => viewModel.modelo = shown
            }
            CustomTextField {
                objectName: "anio"
                width: column.inner
                hint: "Año"
                content: viewModel.anio
                isDecimal: true
                onEdited: shown => viewModel.anio = shown
            }
            Item {
                width: column.inner
                height: ubicacion.height + 12
                CustomTextField {
                    id: ubicacion
                    objectName: "ubicacion"
                    width: parent.width
                    hint: "Ubicación o Subasta"
                    content: viewModel.ubicacion
                    isDecimal: false
                    onEdited: shown => viewModel.ubicacion = shown
                }
            }
            PrimaryButton {
                objectName: "enviar"
                width: column.inner
                text: "Solicitar Importación"
                onClicked: viewModel.enviarSolicitud()
            }
            MessageLine {
                id: outcome
                objectName: "msg"
                width: column.inner
                text: viewModel.msg
                color: Theme.blue
                keepsPlace: true
            }
        }
    }
}
