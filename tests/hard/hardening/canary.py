"""Passwords that are like no other text, and a search for them wherever the app could have left one.

An e-mail address of the same kind is searched for too, where it has to be found: so the search is known to see.
"""

import base64
import json
import pathlib
import urllib.parse
import urllib.request

from service import Service, demo_port
from watched import WatchedPhone, open_at_login, sign_in

# No two share six characters in a row, which is as little as the search takes for a trace.
WRONG, RIGHT, NEW, UNSENT = "Wq7.zorzalKX", "Rb4.tucanPMV", "Nd9.garzaJHT", "Ue5.colibriFY"
PASSWORDS = (WRONG, RIGHT, NEW, UNSENT)
EMAIL, NEW_EMAIL = "perezoso83@mangle.example", "ocelote61@mangle.example"
TRACE = 6


def forms(text):
    """How a text may stand among bytes."""
    plain = text.encode()
    yield from (text.encode(code) for code in ("utf-8", "utf-16-le", "utf-32-le"))
    yield from (plain.hex().encode(), plain[::-1], urllib.parse.quote(text, safe="").encode())
    for shift in range(3):
        # The letters at both ends depend on what stands beside the text.
        coded = base64.b64encode(b"\0" * shift + plain)
        yield coded[shift + 1:len(coded) // 4 * 4 - 4]


def traces(text):
    parts = [text[i:i + TRACE] for i in range(len(text) - TRACE + 1)]
    return {form for part in (text, *parts) for form in forms(part) if len(form) >= TRACE - 1}


def process_tree(root):
    """A process and all that it started."""
    found = [root]
    for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            parent = int(status.read_text().rsplit(")", 1)[1].split()[1])
        except OSError:
            continue
        if parent == root:
            found += process_tree(int(status.parent.name))
    return found


class Search:
    def __init__(self, tally):
        self.tally = tally
        self.found = {}

    def look(self, kind, where, data):
        """Looks through the bytes of a place; notes each kind of place once for each password."""
        for password in PASSWORDS:
            hits = sorted(trace for trace in traces(password) if trace in data)
            self.tally.note(f"password in {kind}", not hits, f"{password} in {where}: {hits[:3]}")
        self.found[kind] = self.found.get(kind, False) or EMAIL.encode() in data

    def processes(self, *roots):
        for process in {p for root in roots for p in process_tree(root)}:
            for what in ("cmdline", "environ"):
                self.look(what, f"process {process}", pathlib.Path(f"/proc/{process}/{what}").read_bytes())

    def files(self, kind, folder):
        for file in sorted(p for p in folder.rglob("*") if p.is_file()):
            self.look(kind, file.name, file.read_bytes())

    def buses(self, phone):
        for name in ("session-bus", "accessibility-bus"):
            self.look(name, "its record", (phone.records / name).read_bytes())
        for event in phone.events:
            self.look("accessibility events", event, "".join(map(str, event)).encode())


def play(tally, phone, search, service, app):
    def look():
        phone.interrogate()
        search.processes(phone.app.pid, service.process.pid)

    open_at_login(phone, app, MAROVENDA_SEARCHED=EMAIL)
    sign_in(phone, EMAIL, WRONG)
    phone.find("Correo o contraseña incorrectos", "alert")
    look()

    phone.press("¿No tienes cuenta? Regístrate aquí")
    for field, text in (("Nombre Completo", "Eva"), ("Correo Electrónico", NEW_EMAIL),
                        ("Dirección de Domicilio", "Calle"), ("Ciudad", "Colon"), ("Contraseña", NEW)):
        phone.type(field, text)
    look()
    phone.press("Registrarme")
    phone.find("Hola, Eva")
    look()
    phone.press("Cerrar sesión")
    sign_in(phone, EMAIL, RIGHT)
    phone.find("Hola, Canario")
    look()
    # What a process that is ended at once leaves behind.
    phone.kill()
    search.files("files", phone.home)
    phone.open(app, MAROVENDA_SEARCHED=EMAIL)
    phone.find("Hola, Canario")
    phone.press("Cerrar sesión")
    phone.find("Iniciar Sesión")
    phone.type("Contraseña", UNSENT)
    look()
    phone.close()
    search.files("files", phone.home)
    tally.note("nothing said", phone.standard_error() == "" and (phone.home / "stdout").read_text() == "",
               phone.standard_error())


def register(folder, executable):
    """The customer of this story, whom the service knows already."""
    with Service(executable, demo_port(), folder / "demo.sqlite"):
        record = {"nombre": "Canario", "email": EMAIL, "password": RIGHT, "direccion": "d", "ciudad": "c"}
        request = urllib.request.Request(f"http://127.0.0.1:{demo_port()}/api_registro.php",
                                         json.dumps(record).encode(), {"Content-Type": "application/json"})
        with urllib.request.urlopen(request) as reply:
            assert json.load(reply)["status"] == "success"


def check(tally, folder, app, service_program):
    data = folder / "service"
    data.mkdir()
    register(data, service_program)
    search = Search(tally)
    service = Service(service_program, demo_port(), data / "demo.sqlite")
    with service, WatchedPhone(folder / "records") as phone:
        play(tally, phone, search, service, app)
        search.buses(phone)
    search.files("the service's files", data)
    for kind in ("environ", "files", "accessibility-bus", "the service's files"):
        tally.note("the search finds what is there", search.found.get(kind), f"{EMAIL} not in {kind}")
