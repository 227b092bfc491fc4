"""What every story is told with: the customers, the executables, a network of its own."""

import fcntl
import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from namespaces import enter_own_network
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
    """Goes into a network of its own; returns where that is refused, once no other story runs."""
    if enter_own_network():
        return None
    lock = open(pathlib.Path(tempfile.gettempdir()) / "marovenda-stories.lock", "w")
    fcntl.flock(lock, fcntl.LOCK_EX)
    return lock
