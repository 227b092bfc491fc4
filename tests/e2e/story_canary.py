"""Passwords that are like no other text, and a search for them wherever the release could have left one.

An e-mail address of the same kind is searched for too, where it has to be found: so the search is known to see.
"""

import base64
import contextlib
import functools
import json
import os
import pathlib
import subprocess
import urllib.parse
import urllib.request

from customer import EMAIL as EMAIL_FIELD
from customer import NAME, PASSWORD, REGISTER, Customer
from phone import text_of
from stage import story

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


class WatchedCustomer(Customer):
    """All that it and the app write is below `home`; the records of the buses are not."""

    def __init__(self, records, **options):
        super().__init__(**options)
        self.records = records
        self.found = set()

    def _start_buses(self):
        super()._start_buses()
        from gi.repository import Gio
        session = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        reply = Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
            "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, Gio.DBusCallFlags.NONE, -1)
        for name, address in (("session-bus", session), ("accessibility-bus", reply.unpack()[0])):
            record = self.records / name
            with open(record, "ab") as file:
                size = file.tell()
                self._spawn("dbus-monitor", "--address", address, "--binary", stdout=file, stderr=subprocess.DEVNULL)
            self.wait_for(lambda: record.stat().st_size > size, f"the record of the {name}")

    def interrogate(self):
        """Asks everything of every element, also of what is not showing; the answers are in the record of the bus."""
        def ask(accessible):
            accessible.clear_cache()
            questions = [accessible.get_name, accessible.get_description, accessible.get_attributes]
            if text := accessible.get_text_iface():
                count = text.get_character_count()
                questions += [lambda: text_of(text, 0, count), lambda: text_of(text, 0, -1),
                              lambda: text.get_string_at_offset(0, self.atspi.TextGranularity.PARAGRAPH)]
            if value := accessible.get_value_iface():
                questions.append(value.get_current_value)
            for question in questions:
                with contextlib.suppress(self.glib.Error):  # not every element has an answer
                    question()
            for i in range(accessible.get_child_count()):
                if child := accessible.get_child_at_index(i):
                    ask(child)
        ask(self._application())

    def look(self, kind, where, data):
        """Looks through the bytes of a place, and notes a kind of place where the address is."""
        for password in PASSWORDS:
            hits = sorted(trace for trace in traces(password) if trace in data)
            assert not hits, f"{password} in {where} ({kind}): {hits[:3]}"
        if EMAIL.encode() in data:
            self.found.add(kind)

    def look_at_processes(self, *roots):
        self.interrogate()
        for process in {p for root in roots for p in process_tree(root)}:
            for what in ("cmdline", "environ"):
                self.look(what, f"process {process}", pathlib.Path(f"/proc/{process}/{what}").read_bytes())

    def look_at_files(self, kind, files):
        for file in filter(pathlib.Path.is_file, files):
            self.look(kind, file.name, file.read_bytes())


def register(base):
    """The customer of this story, whom the service knows already."""
    record = {"nombre": "Canario", "email": EMAIL, "password": RIGHT, "direccion": "d", "ciudad": "c"}
    request = urllib.request.Request(f"{base}api_registro.php", json.dumps(record).encode(),
                                     {"Content-Type": "application/json"})
    with urllib.request.urlopen(request) as reply:
        assert json.load(reply)["status"] == "success"


@story
def passwords_leave_no_trace(stage):
    app, records = stage.release_app, stage.folder / "records"
    records.mkdir()
    with stage.service() as service:
        register(service.base)
        os.environ["MAROVENDA_SEARCHED"] = EMAIL
        with stage.alone(app, kind=functools.partial(WatchedCustomer, records)) as phone:
            def look():
                phone.look_at_processes(phone.app.pid, service.process.pid)

            phone.sign_in((EMAIL, WRONG), "Correo o contraseña incorrectos", "alert")
            look()
            phone.press(REGISTER)
            phone.send({NAME: "Eva", EMAIL_FIELD: NEW_EMAIL, "Dirección de Domicilio": "Calle", "Ciudad": "Colon",
                        PASSWORD: NEW}, "Registrarme", "Hola, Eva", look=look)
            look()
            phone.press("Cerrar sesión")
            phone.sign_in((EMAIL, RIGHT), "Hola, Canario")
            look()
            # What a process that is ended at once leaves behind.
            phone.kill()
            phone.look_at_files("files", phone.home.rglob("*"))
            phone.open(app)
            phone.find("Hola, Canario")
            phone.send({}, "Cerrar sesión", "Iniciar Sesión")
            phone.type(PASSWORD, UNSENT)
            look()
            phone.close()
            phone.look_at_files("files", phone.home.rglob("*"))
            assert (phone.home / "stdout").read_text() == ""
            for name in ("session-bus", "accessibility-bus"):
                phone.look(name, "its record", (records / name).read_bytes())
            for event in phone.events:
                phone.look("accessibility events", event, "".join(map(str, event)).encode())
    phone.look_at_files("the service's files", stage.folder.glob("demo.sqlite*"))
    assert phone.found >= {"environ", "files", "accessibility-bus", "the service's files"}, phone.found
