"""Markup in what the server says is read out and painted letter by letter, wherever it is shown, and fetches nothing."""

import contextlib
import json
import subprocess

from scripted import ScriptedServer, reply
from service import demo_port
from watched import WatchedPhone, open_at_login, sign_in

# In a colour that the app has nowhere, wide enough to be seen should it ever be painted.
COLOUR = (255, 0, 255)
BLOCK = "\u2588" * 4


def hostile(name):
    """Markup of each kind in one text, beginning with a tag, as guesses at a text's kind want it."""
    picture = f"http://127.0.0.1:{demo_port()}/{name}.png"
    return (f'<font color="#ff00ff"><b>{BLOCK}</b> <img src="{picture}" width="20" height="20"> '
            f'<a href="file:///{name}">{name}</a></font><style>a{{background:url({picture})}}</style><br>&lt;&amp; '
            f'![{name}]({picture}) [{name}](file:///{name})')


class Script:
    """A server that says nothing without markup."""

    def __init__(self):
        self.refuse = self.packages = True

    def __call__(self, request):
        path = request.line.split()[1]
        if "_login" in path and self.refuse:
            return reply(json.dumps({"status": "error", "message": hostile("ingreso")}))
        if "_login" in path:
            return reply(json.dumps({"status": "success", "id": "42", "nombre": hostile("nombre")}))
        if "_registro" in path:
            return reply(json.dumps({"status": "error", "message": hostile("registro")}))
        if "_recuperar" in path:
            return reply(json.dumps({"status": "success", "message": hostile("recuperar")}))
        if "_casillero" in path:
            return reply(json.dumps({"status": "success", "nombreCompleto": hostile("casillero")}))
        package = {"tracking": hostile("tracking"), "descripcion": hostile("paquete"), "estado": hostile("estado")}
        quotation = {"origen": hostile("origen"), "descripcion": hostile("cotizacion"), "estado": hostile("aprobada")}
        return reply(json.dumps({"paquetes": [package] * self.packages, "cotizaciones": [quotation]}))


class Reader:
    def __init__(self, tally, phone):
        self.tally, self.phone = tally, phone

    def hears(self, screen, *texts, role=None):
        """That the texts are read as they are, in one element; and what of them is painted."""
        def heard():
            return next((e for e in self.phone.elements()
                         if all(text in e.name for text in texts) and role in (None, e.role)), None)
        try:
            element = self.phone.wait_for(heard, f"{texts} on {screen}")
        except Exception as failure:
            self.tally.note("markup read out as it is", False, f"{screen}: {failure}")
            return
        self.tally.note("markup read out as it is", True)
        self.phone.wait_still()
        self.tally.note("markup not painted", not self.painted(), screen)
        box = element.box()
        x, y = box.x + box.width // 2, box.y + box.height // 2
        subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)
        if element.role in ("alert", "label", "list item"):
            subprocess.run(["xdotool", "click", "1"], check=True)

    def painted(self):
        """How much of the screen has the markup's own colour."""
        pixels = subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"], check=True,
                                stdout=subprocess.PIPE).stdout
        return sum(pixels[i:i + 3] == bytes(COLOUR) for i in range(0, len(pixels), 3))


def play(phone, reader, script):
    sign_in(phone, "a@x", "b")
    reader.hears("the sign-in", hostile("ingreso"), role="alert")
    phone.scroll_to("¿Olvidaste tu contraseña?")
    phone.press("¿Olvidaste tu contraseña?")
    phone.type("Ingresa tu correo registrado", "a@x")
    phone.press("Enviar")
    reader.hears("the recovery", hostile("recuperar"), role="alert")
    phone.scroll_to("¿No tienes cuenta? Regístrate aquí")
    phone.press("¿No tienes cuenta? Regístrate aquí")
    for field in ("Nombre Completo", "Correo Electrónico", "Dirección de Domicilio", "Ciudad"):
        phone.type(field, "x")
    phone.type("Contraseña", "Clave.1")
    phone.press("Registrarme")
    reader.hears("the registration", hostile("registro"), role="alert")
    phone.press("Atrás")
    script.refuse = False
    phone.scroll_to("Iniciar Sesión")
    phone.press("Iniciar Sesión")
    reader.hears("the greeting", "Hola, " + hostile("nombre"))
    phone.scroll_to("Casillero")
    phone.press("Casillero")
    reader.hears("the mailbox", hostile("casillero"))
    phone.scroll_to("Volver al Panel")
    phone.press("Volver al Panel")
    phone.find("Perfil")
    phone.press("Perfil")
    phone.wait_for(lambda: phone.find("Nombre Completo").text() == hostile("nombre"), "the name in the profile")
    phone.wait_still()
    reader.tally.note("markup not painted", not reader.painted(), "the profile")
    phone.press("Atrás")
    phone.scroll_to("1 Paquetes")
    phone.press("1 Paquetes")
    reader.hears("the packages", hostile("tracking"), hostile("paquete"), hostile("estado").upper())
    phone.press("Atrás")
    phone.wait_gone("Atrás")
    reader.hears("the dashboard's packages", hostile("tracking"), hostile("paquete"), hostile("estado").upper())
    script.packages = False  # they would push the quotations off the screen
    phone.press("1 Cotizaciones")
    reader.hears("the quotations", hostile("origen"), hostile("cotizacion"), hostile("aprobada").upper())
    phone.press("Atrás")
    reader.hears("the dashboard's quotations", hostile("origen"), hostile("cotizacion"), hostile("aprobada").upper())


def check(tally, folder, app):
    script = Script()
    server = ScriptedServer(demo_port(), script)
    with contextlib.closing(server), WatchedPhone(folder / "records") as phone:
        open_at_login(phone, app)
        reader = Reader(tally, phone)
        play(phone, reader, script)
        fetched = [r.line for r in server.requests if "/api_" not in r.line]
        tally.note("nothing fetched", not fetched, str(fetched), tries=len(server.requests))
        tally.note("nothing opened", not phone.calls(), str(phone.calls()))
        tally.note("nothing said", phone.standard_error() == "", phone.standard_error())
