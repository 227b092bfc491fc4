import Marovenda.Ui

CustomTextField {
    hint: "Nombre Completo"
    isDecimal: false
}
