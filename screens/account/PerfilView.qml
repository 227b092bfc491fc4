import QtQuick
import Marovenda.Account
import Marovenda.Ui

AppScreen {
    id: screen

    readonly property PerfilViewModel viewModel: PerfilViewModel {}

    title: "Mi Perfil"
    scrolled: scroller.contentY
    covered: picker.covering
    onAppeared: viewModel.mostrarFoto()

    Scroller {
        id: scroller
        anchors.fill: parent
        heading: screen.title
        centred: true
        message: outcome

        Column {
            id: column
            readonly property real inner: width - 2 * padding
            width: parent.width
            padding: 24
            spacing: 16

            Pressable {
                objectName: "cambiarFoto"
                anchors.horizontalCenter: parent.horizontalCenter
                text: "Cambiar foto"
                focusRadius: 50
                onClicked: picker.open()
                contentItem: Avatar {
                    objectName: "avatar"
                    implicitWidth: 100
                    implicitHeight: 100
                    photo: screen.viewModel.selectedImageData
                    placeholderColor: Theme.blue
                    ringWidth: 2
                }
            }
            AppText {
                width: column.inner
                bottomPadding: 16
                text: "Toca la imagen para cambiar foto"
                textStyle: Theme.caption
                color: Theme.grey
                horizontalAlignment: Text.AlignHCenter
            }
            CustomTextField {
                objectName: "nombre"
                width: column.inner
                hint: "Nombre Completo"
                content: screen.viewModel.userNombre
                isDecimal: false
                onEdited: shown => screen.viewModel.userNombre = shown
            }
            Item {
                width: column.inner
                height: email.height + 12
                CustomTextField {
                    id: email
                    objectName: "email"
                    width: parent.width
                    hint: "Correo"
                    content: screen.viewModel.email
                    isDecimal: false
                    onEdited: shown => screen.viewModel.email = shown
                }
            }
            PrimaryButton {
                objectName: "guardar"
                width: column.inner
                text: "Guardar Cambios"
                onClicked: screen.viewModel.guardarCambios()
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

    PhotoPicker {
        id: picker
        objectName: "picker"
        parent: screen
        onPicked: file => screen.viewModel.elegirFoto(file)
    }
}
