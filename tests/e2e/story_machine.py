"""What the app takes of the machine: no time while nothing moves, little memory for long lists. The build that customers
get: the sanitizers of the other one take memory of their own."""

import pathlib
import time

from customer import REGISTER
from scripted import ScriptedServer, reply
from service import demo_port
from stage import BRUNO, story

# Long enough for a caret that blinks and a spinner that turns.
IDLE = 3


def spent(phone):
    """The time that all threads of the app have had on a processor so far, in milliseconds."""
    threads = pathlib.Path(f"/proc/{phone.app.pid}/task").glob("*/schedstat")
    return sum(int(thread.read_text().split()[0]) for thread in threads) / 1e6


def check_idle(phone, screen):
    phone.wait_still(still=1, limit=10)
    before = spent(phone)
    time.sleep(IDLE)
    took = spent(phone) - before
    print(f"{screen}: {took:.2f} ms in {IDLE} s")
    # Timers of the platform's libraries wake up now and then; a single frame drawn would take more than this.
    assert took < 5, f"{screen} took {took:.1f} ms of processor time in {IDLE} s"


@story
def idle_forms(stage):
    with stage.customer(stage.release_app) as phone:
        check_idle(phone, "sign-in")
        phone.send({}, REGISTER, "Crear Cuenta")
        check_idle(phone, "registration")
        phone.send({}, "Atrás", "Iniciar Sesión")
        phone.sign_in(BRUNO, "2 Paquetes")
        for tile in ("Cotizar", "Autos", "Perfil"):
            phone.enter(tile)
            check_idle(phone, tile)
            phone.leave()


@story
def idle_lists(stage):
    with stage.customer(stage.release_app) as phone:
        phone.sign_in(BRUNO, "2 Paquetes")
        check_idle(phone, "dashboard")
        for entrance in ("2 Paquetes", "1 Cotizaciones", "Casillero", "Dev"):
            phone.enter(entrance)
            check_idle(phone, entrance)
            phone.leave("Escape")


def peak_memory(phone):
    """The most that the app has held, in MB."""
    status = pathlib.Path(f"/proc/{phone.app.pid}/status").read_text()
    return int(next(line.split()[1] for line in status.splitlines() if line.startswith("VmHWM"))) // 1024


@story
def hundred_thousand_packages(stage):
    rows = ",".join(f'{{"tracking":"MRV-{i}","descripcion":"Repuestos electrónicos, caja {i}","estado":"en tránsito",'
                    f'"fecha_recibido":"2026-10-01"}}' for i in range(1, 100_001))
    replies = {"POST": reply('{"status":"success","id":"42"}'), "GET": reply(f'{{"paquetes":[{rows}]}}')}
    with ScriptedServer(demo_port(), lambda request: replies[request.method]), stage.alone(stage.release_app) as phone:
        before = peak_memory(phone)
        phone.sign_in(("a@x", "b"), "100000 Paquetes")
        phone.enter("100000 Paquetes", "Tracking: MRV-1, Repuestos electrónicos, caja 1, EN TRÁNSITO")
        phone.keys("Tab", "Tab", "End")
        phone.find("Tracking: MRV-100000, Repuestos electrónicos, caja 100000, EN TRÁNSITO")
        more = peak_memory(phone) - before
        print(f"{more} MB more at its peak than at the sign-in")
        assert more < 100, f"{more} MB"
