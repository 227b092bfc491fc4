"""Stories of packages, quotations and the other services."""

from customer import DASHBOARD, NUMBER, QUOTATION, REGISTER, VEHICLE
from stage import BRUNO, story


@story
def tracking_pages(stage):
    with stage.customer(height=1200) as phone:
        phone.sign_in(BRUNO, "2 Paquetes")
        row = phone.wait_for(lambda: next((e for e in phone.elements() if e.name.startswith("Tracking: MRV-")), None),
                             "a package row")
        number = row.name.split(",")[0].removeprefix("Tracking: ")
        assert phone.one_more(phone.opened, row.press) == "https://www.aftership.com/track/" + number, phone.opened()
        for ignored in ("", "   ", "N/A"):
            phone.send({NUMBER: ignored}, "Buscar", DASHBOARD)
        phone.type(NUMBER, " MRV 1 ")
        page = phone.one_more(phone.opened, phone.press, "Buscar")
        assert page == "https://www.aftership.com/track/MRV%201" and len(phone.opened()) == 2, phone.opened()


@story
def every_entrance(stage):
    with stage.customer(height=1200) as phone:
        phone.send({}, REGISTER, "Crear Cuenta")
        assert not phone.shows("Iniciar Sesión"), "the sign-in is heard under the registration"
        phone.send({}, "Atrás", "Iniciar Sesión")
        phone.sign_in(BRUNO, "2 Paquetes")
        for entrance in ("Casillero", "Autos", "Perfil", "Dev", "2 Paquetes", "1 Cotizaciones", "Ver todas"):
            phone.enter(entrance)
            phone.leave()
        for entrance in ("Cotizar", "Ver todos"):
            phone.enter(entrance)
            phone.leave("Escape")


@story
def quotation_by_sea(stage):
    with stage.customer(height=1200) as phone:
        phone.sign_in(BRUNO, "1 Cotizaciones")
        phone.enter("Cotizar")
        phone.press("Marítimo")
        assert all(e.name for e in phone.elements()), f"something has no name: {phone.elements()}"
        phone.send(QUOTATION, "Enviar Cotización", "Enviado con éxito", "alert")
        phone.wait_heard("Enviado con éxito")
        assert phone.find("Peso (Lbs)").text() == "", "the form was not emptied"
        phone.leave()
        phone.find("Origen: Miami, USA, Silla de playa, PENDIENTE")
        phone.enter("2 Cotizaciones", "Silla de playa, PENDIENTE, Origen: Miami, USA")


@story
def mailbox_and_vehicle(stage):
    with stage.customer() as phone:
        phone.sign_in(BRUNO, "2 Paquetes")
        phone.enter("Casillero")
        phone.wait_for(lambda: any(e.name.startswith("Bruno Díaz") for e in phone.elements()), "the mailbox's name")
        assert any("Estado: Florida" in e.name for e in phone.elements())
        phone.leave()
        phone.enter("Autos")
        phone.send(VEHICLE, "Solicitar Importación", "Solicitud enviada", "alert")
        assert phone.find("Año").text() == "2019", "the form was emptied"


@story
def credits_links(stage):
    with stage.customer() as phone:
        phone.sign_in(BRUNO, "2 Paquetes")
        phone.enter("Dev")
        for link, address in (("🌐 Sitio Web: corvandel.example", "https://corvandel.example/"),
                              ("✉️ Correo: hola@corvandel.example", "mailto:hola@corvandel.example")):
            assert phone.one_more(phone.opened, phone.press, link) == address, phone.opened()
