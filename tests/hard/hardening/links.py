"""Whatever stands for a tracking number, only https addresses of the tracking site reach the system."""

import contextlib
import json
import string
import urllib.parse

from scripted import ScriptedServer, reply
from service import demo_port
from watched import WatchedPhone, open_at_login, sign_in

SITE, PATH = "www.aftership.com", "/track/"
# What an address may consist of (RFC 3986); nothing else can mean anything to a shell, a browser or a log.
ALLOWED = set(string.ascii_letters + string.digits + "-._~:/?#[]@!$&'()*+,;=%")
NUMBERS = [
    "javascript:alert(1)", "file:///etc/passwd", "http://evil.example/", "//evil.example/", "\\\\evil.example\\a",
    "@evil.example/", ":pass@evil.example/", "mailto:a@evil.example", "data:text/html,<b>", "../../",
    "../../../../etc/passwd", "..\\..\\", "%2e%2e%2f", "/..//..//evil.example", "?a=b&c=d#e", "#", "?", "%", "%00",
    "%0d%0aHost:%20evil.example", "%zz", "[::1]", "]:80/", "a b", "ñandú/😀", "$(touch hit)", "`touch hit`",
    "; touch hit", "| touch hit", "&& touch hit", "' touch hit '", '" touch hit "', '"" --help', "--help", "-n", "*",
    "~", "\\", "\\n", "<img src=x>", "{0}", "%1", "%s%n", "\u202egpj.exe", "\u2066a\u2069", "a\u200bb",
    "\uff0e\uff0e/", "\u2024\u2024/", "a\u0301", "a" * 90,
]
# A row of the service may hold what no key types.
ONLY_SERVED = [
    "\ufeffa", "a\nb", "a\r\nHost: evil.example", "a\tb", "\u2028a\u2029b", "a\x00b", "\x1b]0;a\x07", "\x7f", "\x85x",
    "\uffff",
]
IGNORED = ["", "   ", "N/A", " N/A ", "\u00a0"]
SHOWN = 3
FIELD = "Número de tracking..."


def is_tracking_address(call):
    if len(call) != 1 or not set(call[0]) <= ALLOWED:
        return False
    parts = urllib.parse.urlsplit(call[0])
    return parts.scheme == "https" and parts.netloc == SITE and parts.path.startswith(PATH)


def rows(phone):
    return [e for e in phone.elements() if e.name.startswith("Tracking: ")]


def note_new(tally, fault, phone, before, wanted, what):
    """Waits for the opener's calls and looks at each."""
    phone.wait_for(lambda: len(phone.calls()) >= before + wanted, f"what {what!r} opens")
    for call in phone.calls()[before:]:
        tally.note(fault, is_tracking_address(call), f"{what!r} opened {call}")
    return len(phone.calls())


def check_served(tally, phone, script):
    """Rows of the service, pressed one after the other."""
    texts = NUMBERS + ONLY_SERVED + IGNORED
    before = len(phone.calls())
    for start in range(0, len(texts), SHOWN):
        shown = texts[start:start + SHOWN]
        script.packages = [{"tracking": text, "descripcion": f"turn {start}"} for text in shown]
        # The dashboard asks anew whenever it comes on screen.
        phone.press("Dev")
        phone.press("Volver al Panel")

        def came():
            found = rows(phone)
            return len(found) == len(shown) and f"turn {start}" in found[0].name
        phone.wait_for(came, f"the rows of {shown}")
        for text, row in zip(shown, rows(phone)):
            row.press()
            before = note_new(tally, "tracking number of the service", phone, before, text not in IGNORED, text)


def search_for(phone, text):
    """Types a number and looks it up once all of it has arrived."""
    phone.type(FIELD, text)
    phone.wait_for(lambda: phone.find(FIELD).text() == text, f"{text!r} in its field")
    phone.press("Buscar")


def check_typed(tally, phone, numbers):
    """Returns how many pages were asked for."""
    before = start = len(phone.calls())
    phone.scroll_to("Buscar")
    # No key of this keyboard types anything else.
    for text in (text for text in numbers + IGNORED if text.isascii() and len(text) < 50):
        search_for(phone, " " + text)  # the blank is dropped; without it the typing tool takes "-n" for its own
        before = note_new(tally, "tracking number of the customer", phone, before, text not in IGNORED, text)
    return before - start


class Script:
    def __init__(self):
        self.packages = []

    def __call__(self, request):
        if request.line.startswith("POST /api_login.php"):
            return reply('{"status":"success","id":"42","nombre":"Ana"}')
        return reply(json.dumps({"paquetes": self.packages}))


def check(tally, folder, app, long):
    script = Script()
    server = ScriptedServer(demo_port(), script)
    with contextlib.closing(server), WatchedPhone(folder / "records", height=1200) as phone:
        open_at_login(phone, app)
        sign_in(phone, "a@x", "b")
        phone.find("Hola, Ana")
        check_served(tally, phone, script)
        typed = check_typed(tally, phone, NUMBERS if long else NUMBERS[::3])
        # A last one, known to open: by now whatever the ignored ones had opened is there too.
        before = len(phone.calls())
        search_for(phone, "MRV-1")
        phone.wait_for(lambda: len(phone.calls()) > before, "the last page")
        wanted = len(NUMBERS) + len(ONLY_SERVED) + typed + 1
        calls = phone.calls()
        tally.note("nothing else opened", len(calls) == wanted and calls[-1] == [f"https://{SITE}{PATH}MRV-1"],
                   f"{len(calls)} instead of {wanted}: {calls[-3:]}")
        tally.note("nothing run", not list(phone.home.rglob("hit")), str(list(phone.home.rglob("hit"))))
        tally.note("nothing said", phone.standard_error() == "", phone.standard_error())
