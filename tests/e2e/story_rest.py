"""A phone in a pocket: while nothing moves, the app takes no time."""

import pathlib
import time

from phone import Phone
from stage import BRUNO, open_at_login, sign_in, story

REST = 10


def spent(phone):
    """The time that all threads of the app have had on a processor so far, in milliseconds."""
    threads = pathlib.Path(f"/proc/{phone.app.pid}/task").glob("*/schedstat")
    return sum(int(thread.read_text().split()[0]) for thread in threads) / 1e6


def check_rest(phone, screen):
    phone.wait_still(still=1, limit=10)
    before = spent(phone)
    time.sleep(REST)
    took = spent(phone) - before
    print(f"{screen}: {took:.2f} ms in {REST} s")
    # Timers of the platform's libraries wake up now and then; a single frame drawn would take more than this.
    assert took < 5, f"{screen} took {took:.1f} ms of processor time in {REST} s"


@story
def rest_of_forms(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.release_app)
        check_rest(phone, "sign-in")
        phone.press("¿No tienes cuenta? Regístrate aquí")
        phone.find("Crear Cuenta")
        check_rest(phone, "registration")
        phone.press("Atrás")
        phone.find("Iniciar Sesión")
        sign_in(phone, BRUNO)
        phone.find("2 Paquetes")
        for tile, inside in (("Cotizar", "Cotizar Importación"), ("Autos", "Importar Vehículo"), ("Perfil", "Mi Perfil")):
            phone.press(tile)
            phone.find(inside)
            check_rest(phone, tile)
            phone.press("Atrás")
            phone.find("Bienvenido")


@story
def rest_of_lists(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.release_app)
        sign_in(phone, BRUNO)
        phone.find("2 Paquetes")
        check_rest(phone, "dashboard")
        for entrance, inside in (("2 Paquetes", "Mis Paquetes"), ("1 Cotizaciones", "Mis Cotizaciones"),
                                 ("Casillero", "Mi Casillero"), ("Dev", "Desarrollo de Software & IT Solutions")):
            phone.press(entrance)
            phone.wait_gone("Bienvenido")
            phone.find(inside)
            check_rest(phone, inside)
            phone.keys("Escape")
            phone.find("Bienvenido")
