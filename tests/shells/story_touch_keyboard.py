"""The on-screen keyboard: when it opens, what it leaves in view, and what closes it."""

from customer import EMAIL, FORGOT, NAME, NUMBER, PASSWORD, QUOTATION, RECOVERY, RECOVERY_FIELD, REGISTER, VEHICLE
from plasma import PlasmaCustomer
from stage import BRUNO, story

# Their keyboard has another gesture for hiding it, if any.
NUMBERS = ("Peso (Lbs)", "Valor Declarado (USD)", "Año")


@story
def keyboard_leaves_the_field_in_view(stage):
    with stage.customer(kind=PlasmaCustomer) as phone:
        def check(*fields, last):
            for field in fields:
                phone.open_keyboard(field)
                # The window ends where the keyboard begins.
                assert phone.is_in_view(field), f"«{field}» at {phone.find(field).box()} in {phone.window()}"
                if field not in NUMBERS and field != fields[-1]:
                    phone.hide_keyboard()
                    phone.wait_focus(field)
            phone.reach(last)
            assert phone.keyboard_is_open(), f"swiping to «{last}» closes the keyboard"

        check(EMAIL, PASSWORD, last=REGISTER)
        phone.press(FORGOT)
        phone.find(RECOVERY, "dialog")
        check(RECOVERY_FIELD, last="Enviar")
        phone.tap("Cancelar")
        phone.wait_gone(RECOVERY)
        phone.press(REGISTER)
        phone.find("Crear Cuenta")
        check(NAME, EMAIL, "Dirección de Domicilio", "Ciudad", PASSWORD, last="Registrarme")
        phone.swipe_back()
        phone.sign_in(BRUNO, "2 Paquetes")
        check(NUMBER, last="Buscar")
        for tile, fields, last in (("Cotizar", QUOTATION, "Enviar Cotización"), ("Autos", VEHICLE, "Solicitar Importación"),
                                   ("Perfil", (NAME, "Correo"), "Guardar Cambios")):
            phone.press(tile)
            check(*fields, last=last)
            phone.swipe_back()
            phone.find(NUMBER)


@story
def keyboard_stays_and_goes(stage):
    with stage.customer(kind=PlasmaCustomer) as phone:
        phone.sign_in(BRUNO, "2 Paquetes")
        phone.reach("Buscar")
        phone.open_keyboard(NUMBER)
        phone.tap_letters("mrv")
        # The letters are unfinished until the tap.
        phone.tap("Buscar")
        phone.wait_for(phone.opened, "the tracking page")
        assert phone.opened() == ["https://www.aftership.com/track/Mrv"], phone.opened()
        phone.wait_still()
        assert phone.keyboard_is_open(), "«Buscar» closes the keyboard"
        phone.wait_focus(NUMBER)

        phone.press("Cotizar")
        phone.find("Cotizar Importación")
        phone.wait_keyboard_gone()
        phone.open_keyboard("Peso (Lbs)")
        phone.swipe_back()
        phone.wait_gone("Cotizar Importación")
        phone.find("Buscar")
