"""What the app takes of the machine: no time while nothing moves, little memory for long lists. The build that customers
get: the sanitizers of the other one take memory of their own."""

import contextlib
import os
import pathlib
import sqlite3
import subprocess
import time

from customer import NAME, REGISTER
from scripted import ScriptedServer, reply
from service import demo_port
from stage import ANA, BRUNO, story

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
        # Qt's compiler for JavaScript, which crashes now and then, is off.
        assert "JITCode" not in pathlib.Path(f"/proc/{phone.app.pid}/maps").read_text()


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


@story
def slow_disk(stage):
    """Whatever the app stores, its main thread waits for no disk. Every synchronisation takes as long as on a phone."""
    log = stage.folder / "synchronisations"

    def prepare(phone):
        os.environ.update(LD_PRELOAD=str(pathlib.Path(stage.app).parent / "tests" / "slow-disk.so"),
                          MAROVENDA_DISK_DELAY="50", MAROVENDA_DISK_LOG=str(log))

    def waited():
        return log.read_text().split() if log.exists() else []

    def type_and_wait(phone, text):
        before = len(waited())
        phone.write(text)
        # The log that a large photo filled is synchronised too, maybe before the letters have come.
        phone.wait_for(lambda: phone.find(NAME).text().endswith(text), f"«{text}»")
        phone.wait_for(lambda: len(waited()) > before, "the synchronisation of what was typed")

    with stage.customer(stage.release_app, prepare=prepare) as phone:
        photo = phone.home / "Pictures" / "grande.png"
        photo.parent.mkdir()
        # Long enough for the store's log to be shortened.
        subprocess.run(["convert", "-size", "1300x1300", "xc:red", "+noise", "Random", "-depth", "8", str(photo)], check=True)
        assert photo.stat().st_size > 4_500_000
        phone.sign_in(ANA, "230 Paquetes")
        phone.enter("Perfil")
        phone.focus(NAME)
        # Typing, a pause, and typing again.
        type_and_wait(phone, "abcdefghijklmnopqrst")
        type_and_wait(phone, "u")
        phone.pick_photo("grande")
        phone.send({}, "Guardar Cambios", "Perfil actualizado con éxito", "alert")
        store = phone.home / "data" / "marovenda" / "session.sqlite"
        phone.wait_for(lambda: store.stat().st_size > 4_500_000, "the photo in the store's file")
        phone.focus(NAME)
        # The store may be locked, since its log is being shortened.
        type_and_wait(phone, "v")
        phone.kill()
        # Another program has moved the log into the file and deleted it.
        with contextlib.closing(sqlite3.connect(store)) as database:
            database.execute("SELECT value FROM session").fetchall()
        assert not store.with_name("session.sqlite-wal").exists()
        phone.open(stage.release_app)
        phone.find("230 Paquetes")
        phone.enter("Perfil")
        phone.focus(NAME)
        assert phone.find(NAME).text().endswith("tuv"), phone.find(NAME).text()
        type_and_wait(phone, "w")
        assert "main" not in waited(), waited()
