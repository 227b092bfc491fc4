"""Turning the phone keeps what was typed, where the focus is, and where one was."""

from customer import EMAIL, FORGOT, NAME, NUMBER, PASSWORD, QUOTATION, RECOVERY, RECOVERY_FIELD, REGISTER, VEHICLE
from stage import ANA, story
from sway import SwayCustomer

UPRIGHT, SIDE, LOW = (360, 720), (720, 360), (720, 180)


def check_form(phone, fields):
    """What is typed stays while the phone is turned, and so does the focus in the last field, which stays in view."""
    for field, text in fields.items():
        phone.type(field, text)
    shown = {field: phone.find(field).text() for field in fields}
    for size in (SIDE, LOW, UPRIGHT):
        phone.turn(*size)
        phone.wait_for(lambda: phone.is_in_view(field), f"«{field}» in view")
        phone.wait_focus(field)
        # Typing goes on where it was.
        phone.write("7")
        phone.wait_for(lambda: len(phone.find(field).text()) == len(shown[field]) + 1, "one more letter")
        phone.keys("BackSpace")
        phone.wait_text(field, shown[field])
    assert {field: phone.find(field).text() for field in fields} == shown


@story
def turned_forms(stage):
    with stage.customer(kind=SwayCustomer) as phone:
        phone.activate()
        check_form(phone, {EMAIL: "ana", PASSWORD: "Clave#1"})
        phone.press(FORGOT)
        phone.find(RECOVERY, "dialog")
        check_form(phone, {RECOVERY_FIELD: "ana@x"})
        phone.keys("Escape")
        phone.wait_gone(RECOVERY)
        phone.press(REGISTER)
        phone.find("Crear Cuenta")
        check_form(phone, {NAME: "Ana", EMAIL: "ana@x", "Dirección de Domicilio": "Calle 50", "Ciudad": "Colon",
                           PASSWORD: "Clave.1"})
        phone.keys("Escape")
        phone.find(REGISTER)
        phone.sign_in(ANA, "230 Paquetes")
        for tile, fields in (("Cotizar", QUOTATION), ("Autos", VEHICLE), ("Perfil", {NAME: "Ana L", "Correo": "a@x"})):
            phone.enter(tile)
            check_form(phone, fields)
            phone.leave("Escape")
        # All of the dashboard is in view there.
        phone.turn(360, 1600)
        check_form(phone, {NUMBER: "T2"})


@story
def turned_list(stage):
    with stage.customer(kind=SwayCustomer) as phone:
        phone.activate()
        phone.sign_in(ANA, "230 Paquetes")
        phone.enter("230 Paquetes")
        phone.keys("Tab", "Tab", "Next", "Next", "Next")
        phone.wait_still(limit=10)
        rows = [e.name for e in phone.elements() if e.role == "list item" and phone.is_in_view(e.name)]
        assert not any("MRV-100230" in row for row in rows), rows
        for size in (SIDE, LOW, UPRIGHT):
            phone.turn(*size)
            phone.wait_still()
            assert any(e.name in rows for e in phone.elements()), f"after {rows} comes {phone.describe()}"
        for screen in ("Casillero", "Dev"):
            phone.leave("Escape")
            phone.enter(screen)
            for size in (SIDE, UPRIGHT):
                phone.turn(*size)
                phone.wait_still()
                phone.find("Volver al Panel" if size == UPRIGHT else
                           {"Casillero": "Mi Casillero", "Dev": "Corvandel"}[screen])
