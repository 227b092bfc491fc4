"""A story of quotations."""

from customer import QUOTATION
from stage import BRUNO, story


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
