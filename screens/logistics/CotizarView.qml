import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    scrolled: scroller.contentY

    CotizarViewModel { id: viewModel }

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
                text: "Cotizar Importación"
            }
            Item {
                width: column.inner
                height: tipo.height + 8
                SegmentedPicker {
                    id: tipo
                    objectName: "tipo"
                    width: parent.width
                    label: "Tipo"
                    options: viewModel.tipos
                    selection: viewModel.tipo
                    onChosen: option => viewModel.tipo = option
                }
            }
            CustomTextField {
                objectName: "peso"
                width: column.inner
                hint: "Peso (Lbs)"
                content: viewModel.peso
                isDecimal: true
                onEdited: shown => viewModel.peso = shown
            }
            CustomTextField {
                objectName: "valor"
                width: column.inner
                hint: "Valor Declarado (USD)"
                content: viewModel.valor
                isDecimal: true
                onEdited: shown => viewModel.valor = shown
            }
            Item {
                width: column.inner
                height: descripcion.height + 12
                CustomTextField {
                    id: descripcion
                    objectName: "descripcion"
                    width: parent.width
                    hint: "Descripción del contenido"
                    content: viewModel.descripcion
                    isDecimal: false
                    onEdited: shown => viewModel.descripcion = shown
                }
            }
            PrimaryButton {
                objectName: "enviar"
                width: column.inner
                text: "Enviar Cotización"
                onClicked: viewModel.enviarCotizacion()
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
