"""Markup in what the server says is read out and painted letter by letter, wherever it is shown, and fetches nothing."""

import contextlib
import json
import subprocess

from scripted import ScriptedServer, reply
from service import demo_port
from watched import WatchedPhone, open_at_login, sign_in

# In a colour that the app has nowhere, wide enough to be seen should it ever be painted.
COLOUR = bytes((255, 0, 255))
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
        endpoint = request.line.split()[1].partition("?")[0]
        package = {"tracking": hostile("tracking"), "descripcion": hostile("paquete"), "estado": hostile("estado")}
        quotation = {"origen": hostile("origen"), "descripcion": hostile("cotizacion"), "estado": hostile("aprobada")}
        return reply(json.dumps({
            "/api_login.php": {"status": "error", "message": hostile("ingreso")} if self.refuse else
                              {"status": "success", "id": "42", "nombre": hostile("nombre")},
            "/api_registro.php": {"status": "error", "message": hostile("registro")},
            "/api_recuperar.php": {"status": "success", "message": hostile("recuperar")},
            "/api_casillero.php": {"status": "success", "nombreCompleto": hostile("casillero")},
            "/api_paquetes.php": {"paquetes": [package] * self.packages, "cotizaciones": [quotation]},
        }.get(endpoint, {})))


class Reader:
    def __init__(self, tally, phone):
        self.tally, self.phone = tally, phone

    def hears(self, *texts, role=None):
        """The texts are read as they are, in one element, and not painted; a click on it does nothing."""
        def heard():
            return next((e for e in self.phone.elements()
                         if all(text in e.name for text in texts) and role in (None, e.role)), None)
        try:
            element = self.phone.wait_for(heard, str(texts))
        except Exception as failure:
            self.tally.note("markup read out as it is", False, str(failure))
            return
        self.tally.note("markup read out as it is", True)
        self.sees_none(texts)
        if element.role in ("alert", "label", "list item"):
            box = element.box()
            subprocess.run(["xdotool", "mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2), "click", "1"],
                           check=True)

    def sees_none(self, where):
        self.phone.wait_still()
        pixels = subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"], check=True,
                                stdout=subprocess.PIPE).stdout
        painted = any(pixels[i:i + 3] == COLOUR for i in range(0, len(pixels), 3))
        self.tally.note("markup not painted", not painted, str(where))

    def opens(self, name):
        self.phone.scroll_to(name)
        self.phone.press(name)


def play(phone, reader, script):
    sign_in(phone, "a@x", "b")
    reader.hears(hostile("ingreso"), role="alert")
    reader.opens("¿Olvidaste tu contraseña?")
    phone.type("Ingresa tu correo registrado", "a@x")
    phone.press("Enviar")
    reader.hears(hostile("recuperar"), role="alert")
    reader.opens("¿No tienes cuenta? Regístrate aquí")
    for field in ("Nombre Completo", "Correo Electrónico", "Dirección de Domicilio", "Ciudad"):
        phone.type(field, "x")
    phone.type("Contraseña", "Clave.1")
    phone.press("Registrarme")
    reader.hears(hostile("registro"), role="alert")
    phone.press("Atrás")
    script.refuse = False
    reader.opens("Iniciar Sesión")
    reader.hears("Hola, " + hostile("nombre"))
    reader.opens("Casillero")
    reader.hears(hostile("casillero"))
    reader.opens("Volver al Panel")
    phone.find("Perfil")
    phone.press("Perfil")
    phone.wait_for(lambda: phone.find("Nombre Completo").text() == hostile("nombre"), "the name in the profile")
    reader.sees_none("the profile")
    phone.press("Atrás")
    package = hostile("tracking"), hostile("paquete"), hostile("estado").upper()
    reader.opens("1 Paquetes")
    reader.hears(*package)
    phone.press("Atrás")
    phone.wait_gone("Atrás")
    reader.hears(*package)
    script.packages = False  # they would push the quotations off the screen
    quotation = hostile("origen"), hostile("cotizacion"), hostile("aprobada").upper()
    phone.press("1 Cotizaciones")
    reader.hears(*quotation)
    phone.press("Atrás")
    reader.hears(*quotation)


def check(tally, folder, app):
    script = Script()
    server = ScriptedServer(demo_port(), script)
    with contextlib.closing(server), WatchedPhone(folder / "records") as phone:
        open_at_login(phone, app)
        play(phone, Reader(tally, phone), script)
        fetched = [r.line for r in server.requests if "/api_" not in r.line]
        tally.note("nothing fetched", not fetched, str(fetched), tries=len(server.requests))
        tally.note("nothing opened", not phone.calls(), str(phone.calls()))
        tally.note("nothing said", phone.standard_error() == "", phone.standard_error())
