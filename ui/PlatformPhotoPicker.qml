import QtCore
import QtQuick
import QtQuick.Dialogs
import Marovenda.Ui

// The platform's own picker, limited to images, open from the start. Loaded only where there is one.
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
