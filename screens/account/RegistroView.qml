import QtQuick
import Marovenda.Account
import Marovenda.Ui

AppScreen {
    id: screen

    RegistroViewModel { id: viewModel }

    Scroller {
        anchors.fill: parent

        Column {
            id: column
            readonly property real inner: width - 2 * padding
            width: parent.width
            padding: 24
            spacing: 16

            AppText {
                width: column.inner
                text: "Crear Cuenta"
                textStyle: Theme.largeTitle
                bold: true
                color: Theme.blue
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.Heading
            }
            CustomTextField {
                objectName: "nom"
                width: column.inner
                hint: "Nombre Completo"
                text: viewModel.nom
                isDecimal: false
                onTextEdited: viewModel.nom = text
            }
            CustomTextField {
                objectName: "email"
                width: column.inner
                hint: "Correo Electrónico"
                text: viewModel.email
                isDecimal: false
                onTextEdited: viewModel.email = text
            }
            CustomTextField {
                objectName: "direccion"
                width: column.inner
                hint: "Dirección de Domicilio"
                text: viewModel.direccion
                isDecimal: false
                onTextEdited: viewModel.direccion = text
            }
            CustomTextField {
                objectName: "ciudad"
                width: column.inner
                hint: "Ciudad"
                text: viewModel.ciudad
                isDecimal: false
                onTextEdited: viewModel.ciudad = text
            }
            Item {
                width: column.inner
                height: pass.height + 8
                CustomSecureField {
                    id: pass
                    objectName: "pass"
                    width: parent.width
                    hint: "Contraseña"
                    text: viewModel.pass
                    onTextEdited: viewModel.pass = text
                }
            }
            PrimaryButton {
                objectName: "registrar"
                width: column.inner
                text: "Registrarme"
                onClicked: viewModel.registrar()
            }
            MessageLine {
                objectName: "msg"
                width: column.inner
                text: viewModel.msg
                textStyle: Theme.caption
                color: Theme.red
            }
        }
    }
}
