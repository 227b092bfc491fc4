import QtCore
import QtQuick
import QtQuick.Dialogs
import Marovenda.Ui

// The platform's file picker, limited to images. It opens when it is created, and PhotoPicker loads it only where the
// platform has one.
Item {
    id: picker

    signal picked(file: url)

    FileDialog {
        id: dialog
        title: "Elegir foto"
        fileMode: FileDialog.OpenFile
        nameFilters: ["Imágenes (" + PhotoFormats.patterns + ")"]
        currentFolder: StandardPaths.writableLocation(StandardPaths.PicturesLocation)
        Component.onCompleted: open()
        onAccepted: picker.picked(dialog.selectedFile)
    }
}
