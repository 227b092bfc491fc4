import QtQuick
import Marovenda.Account
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property LoginViewModel viewModel: LoginViewModel {}

    Component {
        id: registro
        RegistroView {}
    }

    Scroller {
        anchors.fill: parent
        centred: true
        enabled: !dialog.covering
        message: outcome

        Column {
            id: column
            readonly property real inner: width - 2 * padding
            width: parent.width
            padding: 32
            spacing: 16

            Item {
                width: column.inner
                height: 160 + 8
                Artwork {
                    objectName: "logo"
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: 160
                    height: 160
                    name: "marovenda_logo"
                }
            }
            AppText {
                width: column.inner
                bottomPadding: 24
                text: "Ingresa a tu panel logístico"
                color: Theme.grey
                horizontalAlignment: Text.AlignHCenter
            }
            CustomTextField {
                objectName: "email"
                width: column.inner
                hint: "Correo Electrónico"
                content: screen.viewModel.email
                isDecimal: false
                onEdited: shown => screen.viewModel.email = shown
            }
            CustomSecureField {
                objectName: "pass"
                width: column.inner
                hint: "Contraseña"
                content: screen.viewModel.pass
                onEdited: shown => screen.viewModel.pass = shown
            }
            Item {
                width: column.inner
                height: recover.height + 16
                TextButton {
                    id: recover
                    objectName: "recuperar"
                    anchors.right: parent.right
                    width: Math.min(implicitWidth, parent.width)
                    text: "¿Olvidaste tu contraseña?"
                    textStyle: Theme.caption
                    bold: true
                    onClicked: screen.viewModel.abrirRecuperacion()
                }
            }
            PrimaryButton {
                objectName: "iniciarSesion"
                width: column.inner
                text: "Iniciar Sesión"
                onClicked: screen.viewModel.iniciarSesion()
            }
            MessageLine {
                id: outcome
                objectName: "msg"
                width: column.inner
                text: screen.viewModel.msg
                textStyle: Theme.caption
                color: Theme.red
            }
            Item {
                width: column.inner
                height: register.height + 16
                TextButton {
                    id: register
                    objectName: "registro"
                    y: 16
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: Math.min(implicitWidth, parent.width)
                    text: "¿No tienes cuenta? Regístrate aquí"
                    bold: true
                    onClicked: screen.push(registro)
                }
            }
        }
    }

    Alert {
        id: dialog
        objectName: "recuperarDialog"
        parent: screen
        shown: screen.viewModel.showRecuperarDialog
        title: "Recuperar Contraseña"
        message: "Se enviará una solicitud con el enlace de cambio a " + screen.viewModel.supportEmail + "."
        placeholder: "Ingresa tu correo registrado"
        acceptText: "Enviar"
        content: screen.viewModel.recuperarEmail
        onEdited: shown => screen.viewModel.recuperarEmail = shown
        onAccepted: {
            screen.viewModel.showRecuperarDialog = false
            screen.viewModel.enviarRecuperacion()
        }
        onCancelled: screen.viewModel.showRecuperarDialog = false
    }
}
