import QtQuick
import Marovenda.Logistics
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property CotizarViewModel viewModel: CotizarViewModel {}

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
                    options: screen.viewModel.tipos
                    selection: screen.viewModel.tipo
                    onChosen: option => screen.viewModel.tipo = option
                }
            }
            CustomTextField {
                objectName: "peso"
                width: column.inner
                hint: "Peso (Lbs)"
                content: screen.viewModel.peso
                isDecimal: true
                onEdited: shown => screen.viewModel.peso = shown
            }
            CustomTextField {
                objectName: "valor"
                width: column.inner
                hint: "Valor Declarado (USD)"
                content: screen.viewModel.valor
                isDecimal: true
                onEdited: shown => screen.viewModel.valor = shown
            }
            Item {
                width: column.inner
                height: descripcion.height + 12
                CustomTextField {
                    id: descripcion
                    objectName: "descripcion"
                    width: parent.width
                    hint: "Descripción del contenido"
                    content: screen.viewModel.descripcion
                    isDecimal: false
                    onEdited: shown => screen.viewModel.descripcion = shown
                }
            }
            PrimaryButton {
                objectName: "enviar"
                width: column.inner
                text: "Enviar Cotización"
                onClicked: screen.viewModel.enviarCotizacion()
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
