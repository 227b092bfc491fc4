import QtQuick
import Marovenda.Ui

// A form field for a password.
FormField {
    echoMode: TextInput.Password
    passwordCharacter: "\u2022"
    // qmllint disable
    inputMethodHints: Qt.ImhHiddenText | Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
    // qmllint enable
}
