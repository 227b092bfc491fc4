"""What every story is told with: the customers, the executables, a network of its own."""

import fcntl
import os
import pathlib
import subprocess
import sys
import tempfile

from service import Service, demo_port

ANA = ("ana@marovenda.example", "Casillero#1")
BRUNO = ("bruno@marovenda.example", "Casillero#2")
STORIES = {}


def story(function):
    STORIES[function.__name__] = function
    return function


class Stage:
    """What a story is played with."""

    def __init__(self, app, scripted_app, service, release_app):
        self.app, self.scripted_app, self.service_program, self.release_app = app, scripted_app, service, release_app
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="marovenda-story-"))

    def service(self):
        return Service(self.service_program, demo_port(), self.folder / "demo.sqlite")


def sign_in(phone, customer):
    phone.type("Correo Electrónico", customer[0])
    phone.type("Contraseña", customer[1])
    phone.press("Iniciar Sesión")


def open_at_login(phone, app):
    phone.open(app)
    phone.find("Iniciar Sesión")
    phone.wait_gone("Desarrollado por Corvandel")


def heard_alert(phone, text):
    """Whether a screen reader was told: the text is an alert's name, and the alert has begun to show."""
    named = any(e[0] == "object:property-change:accessible-name" and e[1] == "alert" and e[2] == text
                for e in phone.events)
    shown = any(e[0].startswith("object:state-changed:showing") and e[1] == "alert" and e[3] == 1 for e in phone.events)
    return named and shown


def in_own_network():
    """Starts this program again with a network of its own; returns where that is refused, once no other story runs."""
    if os.environ.get("MAROVENDA_OWN_NETWORK"):
        return None
    own = ["unshare", "--user", "--map-root-user", "--net"]
    if subprocess.run([*own, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
        os.environ["MAROVENDA_OWN_NETWORK"] = "1"
        os.execvp(own[0], [*own, "sh", "-c", 'ip link set lo up && exec "$@"', "sh", sys.executable, *sys.argv])
    lock = open(pathlib.Path(tempfile.gettempdir()) / "marovenda-stories.lock", "w")
    fcntl.flock(lock, fcntl.LOCK_EX)
    return lock
