"""What every story is told with: the customers, the executables, a service, a network of its own."""

import contextlib
import fcntl
import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from customer import Customer
from namespaces import enter_own_network
from scripted import SCRIPTED_PORT, ScriptedServer, company
from service import Service, demo_port

ANA = ("ana@marovenda.example", "Casillero#1")
BRUNO = ("bruno@marovenda.example", "Casillero#2")
STORIES = {}


def story(function):
    STORIES[function.__name__] = function
    return function


class Stage:
    """What a story is played with. Each customer stands at the sign-in, and the app must have said nothing in the end."""

    def __init__(self, app, scripted_app, service, release_app):
        self.app, self.scripted_app, self.service_program, self.release_app = app, scripted_app, service, release_app
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="marovenda-story-"))

    def service(self):
        return Service(self.service_program, demo_port(), self.folder / "demo.sqlite")

    @contextlib.contextmanager
    def alone(self, app=None, kind=Customer, prepare=lambda phone: None, **size):
        """Without a service; `prepare` is called before the app is opened."""
        with kind(**size) as phone:
            prepare(phone)
            phone.open_at_login(app or self.app)
            yield phone
            assert phone.standard_error() == "", phone.standard_error()

    @contextlib.contextmanager
    def customer(self, *arguments, **options):
        """With the demo service."""
        with self.service(), self.alone(*arguments, **options) as phone:
            yield phone

    @contextlib.contextmanager
    def scripted(self, script=company, **options):
        """With a service that answers by a script; yields that too."""
        with ScriptedServer(SCRIPTED_PORT, script) as server, self.alone(self.scripted_app, **options) as phone:
            phone.activate()
            yield phone, server


def in_own_network():
    """Goes into a network of its own; returns where that is refused, once no other story runs."""
    if enter_own_network():
        return None
    lock = open(pathlib.Path(tempfile.gettempdir()) / "marovenda-stories.lock", "w")
    fcntl.flock(lock, fcntl.LOCK_EX)
    return lock
