import QtQml
import Marovenda.Account
import Marovenda.Logistics
import Marovenda.Ui

// Each push creates a new screen.
DashboardScreens {
    casillero: Component { CasilleroView {} }
    cotizar: Component { CotizarView {} }
    autos: Component { ImportarAutoView {} }
    perfil: Component { PerfilView {} }
    dev: Component { DeveloperView {} }
    paquetes: Component { MisPaquetesView {} }
    cotizaciones: Component { MisCotizacionesView {} }
}
