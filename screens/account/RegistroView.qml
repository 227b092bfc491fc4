import QtQuick
import Marovenda.Account
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property RegistroViewModel viewModel: RegistroViewModel {}

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
                content: screen.viewModel.nom
                isDecimal: false
                onEdited: shown => screen.viewModel.nom = shown
            }
            CustomTextField {
                objectName: "email"
                width: column.inner
                hint: "Correo Electrónico"
                content: screen.viewModel.email
                isDecimal: false
                onEdited: shown => screen.viewModel.email = shown
            }
            CustomTextField {
                objectName: "direccion"
                width: column.inner
                hint: "Dirección de Domicilio"
                content: screen.viewModel.direccion
                isDecimal: false
                onEdited: shown => screen.viewModel.direccion = shown
            }
            CustomTextField {
                objectName: "ciudad"
                width: column.inner
                hint: "Ciudad"
                content: screen.viewModel.ciudad
                isDecimal: false
                onEdited: shown => screen.viewModel.ciudad = shown
            }
            Item {
                width: column.inner
                height: pass.height + 8
                CustomSecureField {
                    id: pass
                    objectName: "pass"
                    width: parent.width
                    hint: "Contraseña"
                    content: screen.viewModel.pass
                    onEdited: shown => screen.viewModel.pass = shown
                }
            }
            PrimaryButton {
                objectName: "registrar"
                width: column.inner
                text: "Registrarme"
                onClicked: screen.viewModel.registrar()
            }
            MessageLine {
                id: outcome
                objectName: "msg"
                width: column.inner
                text: screen.viewModel.msg
                textStyle: Theme.caption
                color: Theme.red
            }
        }
    }
}
