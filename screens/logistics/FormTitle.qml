import QtQuick
import Marovenda.Ui

// The title of a form.
AppText {
    textStyle: Theme.title2
    bold: true
    Accessible.role: Accessible.Heading
}
