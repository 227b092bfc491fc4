"""Stories of packages and quotations."""

from customer import DASHBOARD, NUMBER, QUOTATION
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
