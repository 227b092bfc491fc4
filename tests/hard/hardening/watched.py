"""What the app is watched with: a device whose buses are recorded and whose opener notes every argument."""

import contextlib
import os
import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "e2e"))
from phone import Phone, text_of

OPENER = '#!/bin/sh\nprintf "%s\\0" "$#" "$@" >>"{file}"\n'


class WatchedPhone(Phone):
    """All that it and the app write is below `home`; the records of the buses are not."""

    def __init__(self, records, **options):
        super().__init__(**options)
        self.records = records
        records.mkdir(exist_ok=True)

    def _start_display(self):
        super()._start_display()
        temporary = self.home / "tmp"
        temporary.mkdir()
        os.environ.update(HOME=str(self.home), TMPDIR=str(temporary))
        (self.home / "bin" / "xdg-open").write_text(OPENER.format(file=self.home / "opened"))

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

    def open(self, executable, **environment):
        """As the customer's desktop would, with both outputs kept."""
        self.errors = self.home / "stderr"
        with open(self.errors, "a") as errors, open(self.home / "stdout", "a") as output:
            self.app = subprocess.Popen([executable], env={**os.environ, **environment}, stdout=output, stderr=errors)
        self.wait_for(self._application, "the app")

    def calls(self):
        """The arguments of each call of the opener."""
        file = self.home / "opened"
        fields = file.read_bytes().decode(errors="surrogateescape").split("\0")[:-1] if file.exists() else []
        calls = []
        while fields:
            count = int(fields[0])
            calls.append(fields[1:1 + count])
            fields = fields[1 + count:]
        return calls

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


def open_at_login(phone, app, **environment):
    phone.open(app, **environment)
    phone.find("Iniciar Sesión")
    phone.wait_gone("Desarrollado por Corvandel")


def sign_in(phone, email, password):
    phone.type("Correo Electrónico", email)
    phone.type("Contraseña", password)
    phone.press("Iniciar Sesión")
