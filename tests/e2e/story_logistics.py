"""Stories of packages and quotations."""

from customer import NUMBER, QUOTATION
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


@story
def copied_number_is_pasted(stage):
    with stage.customer(height=1200) as phone:
        phone.sign_in(BRUNO, "2 Paquetes")
        row = phone.wait_for(lambda: next((e for e in phone.elements() if e.name.startswith("Tracking: MRV-")), None),
                             "a package row")
        row.press("Copiar")
        phone.wait_heard("Copiado")
        phone.focus(NUMBER)
        phone.keys("ctrl+v")
        phone.wait_text(NUMBER, row.name.split(",")[0].removeprefix("Tracking: "))
        assert not phone.opened(), phone.opened()
        phone.wait_gone("Copiado")
