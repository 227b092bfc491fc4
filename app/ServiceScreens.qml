import QtQml
import Marovenda.Account
import Marovenda.Logistics
import Marovenda.Ui

// The screens that the dashboard opens, each made anew when it is pushed.
QtObject {
    readonly property Component casillero: Component { CasilleroView {} }
    readonly property Component cotizar: Component { CotizarView {} }
    readonly property Component autos: Component { ImportarAutoView {} }
    readonly property Component perfil: Component { PerfilView {} }
    readonly property Component dev: Component { DeveloperView {} }
    readonly property Component paquetes: Component { MisPaquetesView {} }
    readonly property Component cotizaciones: Component { MisCotizacionesView {} }
}
