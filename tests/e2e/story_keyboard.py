"""The whole app with the keyboard alone."""

from customer import EMAIL, FORGOT, NAME, NUMBER, PASSWORD, QUOTATION, RECOVERY, REGISTER, VEHICLE, KeyboardCustomer
from stage import BRUNO, story


@story
def keyboard_in_order(stage):
    with stage.customer(kind=KeyboardCustomer, height=1300) as phone:
        phone.check_order(EMAIL)
        phone.send({}, REGISTER, "Crear Cuenta")
        phone.wait_gone(REGISTER)
        phone.check_order("Atrás")
        phone.keys("alt+Left")
        phone.find("Iniciar Sesión")
        phone.sign_in(BRUNO, "2 Paquetes")
        phone.check_order("Cerrar sesión")
        for tile in ("Cotizar", "Autos", "Perfil"):
            phone.enter(tile)
            phone.check_order("Atrás")
            phone.leave("Escape")


@story
def keyboard_alone(stage):
    with stage.customer(kind=KeyboardCustomer) as phone:
        phone.press(FORGOT, key="space")
        phone.find(RECOVERY)
        phone.keys("Escape")
        phone.wait_gone(RECOVERY)

        phone.press(REGISTER)
        phone.find("Crear Cuenta")
        phone.send({NAME: "Eva Moreno", EMAIL: "eva@marovenda.example", "Dirección de Domicilio": "Calle 50",
                    "Ciudad": "Colon", PASSWORD: "Clave.1"}, "Registrarme", "Hola, Eva Moreno")
        phone.press("Cerrar sesión", key="space")
        phone.find("Iniciar Sesión")
        phone.sign_in(BRUNO, "2 Paquetes")

        phone.enter("Cotizar")
        phone.walk_to("Aéreo")
        phone.keys("Right")
        phone.wait_for(lambda: "checked" in phone.find("Marítimo").states, "the choice")
        phone.send(QUOTATION, "Enviar Cotización", "Enviado con éxito")
        phone.leave("alt+Left")
        phone.find("2 Cotizaciones")

        phone.enter("Autos")
        phone.send(VEHICLE, "Solicitar Importación", "Solicitud enviada")
        phone.leave("Escape")

        phone.enter("Perfil")
        phone.press("Cambiar foto")
        phone.find("Elegir foto", "dialog")
        phone.keys("Escape")
        phone.wait_gone("Elegir foto")
        phone.send({NAME: "Bruno D"}, "Guardar Cambios", "Perfil actualizado con éxito")
        phone.leave()
        phone.find("Hola, Bruno D")

        for entrance, title in (("2 Paquetes", "Mis Paquetes"), ("Ver todas", "Mis Cotizaciones")):
            phone.enter(entrance)
            phone.walk_to(title)
            phone.keys("Down")
            phone.wait_for(lambda: any(e.role == "list item" for e in phone.elements()), "rows")
            phone.leave("Escape")

        phone.enter("Casillero", "Bruno D MRV-1002")
        phone.leave()
        phone.enter("Dev")
        phone.press("🌐 Sitio Web: corvandel.example")
        phone.wait_for(phone.opened, "the web site")
        phone.leave()
        phone.type(NUMBER, " MRV 1 ")
        phone.press("Buscar")
        phone.wait_for(lambda: len(phone.opened()) == 2, "the tracking page")
        assert phone.opened()[1] == "https://www.aftership.com/track/MRV%201", phone.opened()
        phone.press("Cerrar sesión")
        phone.find("Iniciar Sesión")
