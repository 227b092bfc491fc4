import QtQuick
import Marovenda.Ui

// The outcome of a form's action; announced when it changes, gone while it is empty.
AppText {
    visible: text !== ""
    horizontalAlignment: Text.AlignHCenter
    Accessible.role: Accessible.AlertMessage
}
