import QtQml

// The screens that the dashboard opens. The app provides them, since it knows all screens.
QtObject {
    required property Component casillero
    required property Component cotizar
    required property Component autos
    required property Component perfil
    required property Component dev
    required property Component paquetes
    required property Component cotizaciones
}
