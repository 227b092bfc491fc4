"""Whatever stands for a tracking number, only https addresses of the tracking site reach the system."""

import contextlib
import json
import re

from scripted import ScriptedServer, reply
from service import demo_port
from watched import WatchedPhone, open_at_login, sign_in

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
FIELD = "Número de tracking..."


class Script:
    def __init__(self):
        self.packages = []

    def __call__(self, request):
        if request.line.startswith("POST /api_login.php"):
            return reply('{"status":"success","id":"42","nombre":"Ana"}')
        return reply(json.dumps({"paquetes": self.packages}))


class Opener:
    def __init__(self, tally, phone):
        self.tally, self.phone, self.count = tally, phone, 0

    def opens(self, text, act):
        """One address for a number, and nothing where there is none."""
        act()
        self.count += text not in IGNORED
        self.phone.wait_for(lambda: len(self.phone.calls()) >= self.count, f"what {text!r} opens")
        calls = self.phone.calls()
        held = len(calls) == self.count and (not calls or len(calls[-1]) == 1 and ADDRESS.fullmatch(calls[-1][0]))
        self.tally.note("tracking number", held, f"{text!r} opened {calls[self.count - 1:]}")


def show_rows(phone, script, texts, turn):
    script.packages = [{"tracking": text, "descripcion": f"turn {turn}"} for text in texts]
    # The dashboard asks anew whenever it comes on screen.
    phone.press("Dev")
    phone.press("Volver al Panel")

    def came():
        rows = [e for e in phone.elements() if e.name.startswith("Tracking: ")]
        return rows if len(rows) == len(texts) and f"turn {turn}" in rows[0].name else None
    return phone.wait_for(came, f"the rows of {texts}")


def search_for(phone, text):
    """Types a number and looks it up once all of it has arrived."""
    phone.type(FIELD, text)
    phone.wait_for(lambda: phone.find(FIELD).text() == text, f"{text!r} in its field")
    phone.press("Buscar")


def check(tally, folder, app):
    script = Script()
    server = ScriptedServer(demo_port(), script)
    with contextlib.closing(server), WatchedPhone(folder / "records", height=1200) as phone:
        open_at_login(phone, app)
        sign_in(phone, "a@x", "b")
        phone.find("Hola, Ana")
        opener = Opener(tally, phone)
        texts = IGNORED + NUMBERS
        for start in range(0, len(texts), SHOWN):
            shown = texts[start:start + SHOWN]
            for text, row in zip(shown, show_rows(phone, script, shown, start)):
                opener.opens(text, row.press)
        phone.scroll_to("Buscar")
        # The blank is dropped; without it the typing tool takes "-n" for its own.
        for text in ["   ", "N/A", *TYPED]:
            opener.opens(text, lambda text=text: search_for(phone, " " + text))
        tally.note("nothing run", not list(phone.home.rglob("hit")), str(list(phone.home.rglob("hit"))))
        tally.note("nothing said", phone.standard_error() == "", phone.standard_error())
