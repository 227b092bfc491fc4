import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    ImportarAutoViewModel { id: viewModel }

    Scroller {
        anchors.fill: parent

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
                text: viewModel.marca
                isDecimal: false
                onTextEdited: viewModel.marca = text
            }
            CustomTextField {
                objectName: "modelo"
                width: column.inner
                hint: "Modelo (Ej: Corolla)"
                text: viewModel.modelo
                isDecimal: false
                onTextEdited: viewModel.modelo = text
            }
            CustomTextField {
                objectName: "anio"
                width: column.inner
                hint: "Año"
                text: viewModel.anio
                isDecimal: true
                onTextEdited: viewModel.anio = text
            }
            Item {
                width: column.inner
                height: ubicacion.height + 12
                CustomTextField {
                    id: ubicacion
                    objectName: "ubicacion"
                    width: parent.width
                    hint: "Ubicación o Subasta"
                    text: viewModel.ubicacion
                    isDecimal: false
                    onTextEdited: viewModel.ubicacion = text
                }
            }
            PrimaryButton {
                objectName: "enviar"
                width: column.inner
                text: "Solicitar Importación"
                onClicked: viewModel.enviarSolicitud()
            }
            MessageLine {
                objectName: "msg"
                width: column.inner
                text: viewModel.msg
                color: Theme.blue
                keepsPlace: true
            }
        }
    }
}
