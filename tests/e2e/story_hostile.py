"""The release against a hostile server: whatever stands for a tracking number, only https addresses of the tracking site reach
the system; and markup in what the server says is read out and painted letter by letter, wherever it is shown, and fetches
nothing."""

import json
import re
import subprocess

from customer import FORGOT, NAME, NUMBER, PASSWORD, RECOVERY_FIELD, REGISTER
from scripted import ScriptedServer, reply
from service import demo_port
from stage import story

# What an address may consist of (RFC 3986); nothing else can mean anything to a shell, a browser or a log.
ADDRESS = re.compile(r"https://www\.aftership\.com/track/[\w.~:/?#\[\]@!$&'()*+,;=%-]*", re.ASCII)
NUMBERS = [
    "javascript:alert(1)", "file:///etc/passwd", "//evil.example/", "\\\\evil.example\\a", "@evil.example/",
    ":pass@evil.example/", "../../../../etc/passwd", "..\\..\\", "%2e%2e%2f", "/..//..//evil.example", "?a=b&c=d#e", "%",
    "%00", "%0d%0aHost:%20evil.example", "[::1]", "a b", "ñandú/😀", "$(touch hit)", "`touch hit`", "; touch hit",
    "| touch hit", "&& touch hit", "' touch hit '", '" touch hit "', '"" --help', "--help", "*", "~", "\\n", "<img src=x>",
    "{0}", "%1", "%s%n", "\u202egpj.exe", "a\u200bb", "\uff0e\uff0e/", "a" * 90,
    # What no key types.
    "\ufeffa", "a\r\nHost: evil.example", "a\tb", "\u2028a\u2029b", "a\x00b", "\x1b]0;a\x07", "\x7f", "\uffff",
]
TYPED = ["javascript:alert(1)", "//evil.example/", "../../", "?a=b&c=d#e", "%0d%0aHost:%20evil.example", "$(touch hit)",
         "--help", "-n"]
IGNORED = ["", "   ", "N/A", " N/A ", "\u00a0"]
SHOWN = 3
# In a colour that the app has nowhere, wide enough to be seen should it ever be painted.
COLOUR = bytes((255, 0, 255))
BLOCK = "\u2588" * 4


def hostile(name):
    """Markup of each kind in one text, beginning with a tag, as guesses at a text's kind want it."""
    picture = f"http://127.0.0.1:{demo_port()}/{name}.png"
    return (f'<font color="#ff00ff"><b>{BLOCK}</b> <img src="{picture}" width="20" height="20"> '
            f'<a href="file:///{name}">{name}</a></font><style>a{{background:url({picture})}}</style><br>&lt;&amp; '
            f'![{name}]({picture}) [{name}](file:///{name})')


@story
def tracking_numbers_open_only_the_site(stage):
    packages = []

    def script(request):
        return reply(json.dumps({"status": "success", "id": "42", "nombre": "Ana", "paquetes": packages}))

    with ScriptedServer(demo_port(), script), stage.alone(stage.release_app, height=1200) as phone:
        expected = 0

        def opens(text, act, *arguments):
            """One address for a number, and nothing where there is none."""
            nonlocal expected
            act(*arguments)
            expected += text not in IGNORED
            phone.wait_for(lambda: len(phone.calls()) >= expected, f"what {text!r} opens")
            calls = phone.calls()
            assert len(calls) == expected, f"{text!r} opened {calls[expected - 1:]}"
            assert not calls or len(calls[-1]) == 1 and ADDRESS.fullmatch(calls[-1][0]), f"{text!r} opened {calls[-1]}"

        def rows(turn, count):
            found = [e for e in phone.elements() if e.name.startswith("Tracking: ")]
            return found if len(found) == count and turn in found[0].name else None

        phone.sign_in(("a@x", "b"), "Hola, Ana")
        texts = IGNORED + NUMBERS
        for start in range(0, len(texts), SHOWN):
            shown, turn = texts[start:start + SHOWN], f"turn {start}"
            packages[:] = [{"tracking": text, "descripcion": turn} for text in shown]
            # The dashboard asks anew whenever it comes on screen.
            phone.press("Dev")
            phone.press("Volver al Panel")
            for text, row in zip(shown, phone.wait_for(lambda: rows(turn, len(shown)), f"the rows of {shown}")):
                opens(text, row.press)
        phone.scroll_to("Buscar")
        # The blank is dropped; without it the typing tool takes "-n" for its own.
        for text in ["   ", "N/A", *TYPED]:
            opens(text, phone.send, {NUMBER: " " + text}, "Buscar", "Buscar")
        assert not list(phone.home.rglob("hit")), "something was run"


def malicious(request, refuse, packages):
    """A server that says nothing without markup."""
    package = {"tracking": hostile("tracking"), "descripcion": hostile("paquete"), "estado": hostile("estado")}
    quotation = {"origen": hostile("origen"), "descripcion": hostile("cotizacion"), "estado": hostile("aprobada")}
    return reply(json.dumps({
        "/api_login.php": {"status": "error", "message": hostile("ingreso")} if refuse else
                          {"status": "success", "id": "42", "nombre": hostile("nombre")},
        "/api_registro.php": {"status": "error", "message": hostile("registro")},
        "/api_recuperar.php": {"status": "success", "message": hostile("recuperar")},
        "/api_casillero.php": {"status": "success", "nombreCompleto": hostile("casillero")},
        "/api_paquetes.php": {"paquetes": [package] * packages, "cotizaciones": [quotation]},
    }.get(request.path.partition("?")[0], {})))


@story
def markup_is_plain_text(stage):
    refuse = packages = True
    with ScriptedServer(demo_port(), lambda request: malicious(request, refuse, packages)) as server, \
            stage.alone(stage.release_app) as phone:
        def hears(*texts, role=None):
            """The texts are read as they are, in one element, and not painted; a click on it does nothing."""
            element = phone.wait_for(lambda: next((e for e in phone.elements() if role in (None, e.role)
                                                   and all(text in e.name for text in texts)), None), str(texts))
            sees_none(texts)
            if element.role in ("alert", "label", "list item"):
                phone.click(element.name)

        def sees_none(where):
            phone.wait_still()
            pixels = subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"], check=True,
                                    stdout=subprocess.PIPE).stdout
            assert not any(pixels[i:i + 3] == COLOUR for i in range(0, len(pixels), 3)), f"{where} is painted"

        def opens(name):
            phone.scroll_to(name)
            phone.press(name)

        phone.sign_in(("a@x", "b"), hostile("ingreso"))
        hears(hostile("ingreso"), role="alert")
        opens(FORGOT)
        phone.type(RECOVERY_FIELD, "a@x")
        phone.press("Enviar")
        hears(hostile("recuperar"), role="alert")
        opens(REGISTER)
        for field in (NAME, "Correo Electrónico", "Dirección de Domicilio", "Ciudad"):
            phone.type(field, "x")
        phone.type(PASSWORD, "Clave.1")
        phone.press("Registrarme")
        hears(hostile("registro"), role="alert")
        phone.press("Atrás")
        refuse = False
        opens("Iniciar Sesión")
        hears("Hola, " + hostile("nombre"))
        opens("Casillero")
        hears(hostile("casillero"))
        opens("Volver al Panel")
        phone.find("Perfil")
        phone.press("Perfil")
        phone.wait_for(lambda: phone.find(NAME).text() == hostile("nombre"), "the name in the profile")
        sees_none("the profile")
        phone.press("Atrás")
        package = hostile("tracking"), hostile("paquete"), hostile("estado").upper()
        opens("1 Paquetes")
        hears(*package)
        phone.press("Atrás")
        phone.wait_gone("Atrás")
        hears(*package)
        packages = False  # they would push the quotations off the screen
        quotation = hostile("origen"), hostile("cotizacion"), hostile("aprobada").upper()
        phone.press("1 Cotizaciones")
        hears(*quotation)
        phone.press("Atrás")
        hears(*quotation)
        fetched = [request.line for request in server.requests if "/api_" not in request.line]
        assert not fetched and not phone.calls(), (fetched, phone.calls())
