"""Fingers reach every screen's last control, however low the window is."""

from customer import EMAIL, FORGOT, NAME, NUMBER, RECOVERY, RECOVERY_FIELD, REGISTER, SCREENS
from plasma import PlasmaCustomer
from stage import ANA, story

# What leads to each screen from the dashboard, and the last control there.
LAST = {"Casillero": "Volver al Panel", "Dev": "Volver al Panel", "Cotizar": "Enviar Cotización",
        "Autos": "Solicitar Importación", "Perfil": "Guardar Cambios"}
LAST_QUOTATION = "Cuna y cambiador de bebé, VENCIDA, Origen: Miami, USA"
FIRST_FIELDS = {"Cotizar": "Peso (Lbs)", "Autos": "Marca (Ej: Toyota)", "Perfil": NAME}


def check_screens(stage, width, height):
    with stage.customer(kind=PlasmaCustomer, width=width, height=height) as phone:
        phone.press(REGISTER)
        phone.find("Crear Cuenta")
        phone.reach("Registrarme")
        phone.swipe_back()
        phone.find(REGISTER)
        phone.press(FORGOT)
        phone.find(RECOVERY, "dialog")
        phone.reach("Enviar")
        phone.tap("Cancelar")
        phone.wait_gone(RECOVERY)
        phone.sign_in(ANA, "230 Paquetes")
        phone.reach("Buscar")
        for tile, last in LAST.items():
            phone.reach("Perfil")
            phone.reach(tile, "Perfil")
            phone.enter(tile, SCREENS[tile][0], way=phone.tap)
            phone.reach(last)
            phone.swipe_back()
            phone.wait_gone(last)
        phone.enter("12 Cotizaciones")
        phone.reach(LAST_QUOTATION)


@story
def last_controls_upright(stage):
    check_screens(stage, 360, 720)


@story
def last_controls_on_its_side(stage):
    check_screens(stage, 720, 360)


@story
def last_controls_above_the_keyboard(stage):
    with stage.customer(kind=PlasmaCustomer, width=720, height=360) as phone:
        def check(field, last):
            phone.open_keyboard(field)
            phone.reach(last)
            assert phone.keyboard_is_open(), f"swiping to «{last}» closes the keyboard"

        check(EMAIL, REGISTER)
        phone.press(REGISTER)
        phone.find("Crear Cuenta")
        check(NAME, "Registrarme")
        phone.swipe_back()
        phone.find(FORGOT)
        phone.press(FORGOT)
        phone.find(RECOVERY, "dialog")
        check(RECOVERY_FIELD, "Enviar")
        phone.tap("Cancelar")
        phone.wait_gone(RECOVERY)
        phone.sign_in(ANA, "230 Paquetes")
        check(NUMBER, "Buscar")
        for tile, field in FIRST_FIELDS.items():
            phone.enter(tile, )
            check(field, LAST[tile])
            phone.swipe_back()
            phone.wait_gone(LAST[tile])
