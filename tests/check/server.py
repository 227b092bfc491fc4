"""A server on loopback that answers as a test tells it to, wrongly too."""

import gzip
import json
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))
from scripted import Held, ScriptedServer

LOGIN = {"status": "success", "message": "Bienvenida", "id": "42", "nombre": "Ana Ríos"}
PAQUETES = [
    {"tracking": f"MRV-{i}", "descripcion": f"Caja {i}", "estado": "recibido", "fecha_recibido": "ayer"}
    for i in range(20)
]
COTIZACIONES = [{"origen": "Miami, USA", "descripcion": f"Silla {i}", "estado": "enviada"} for i in range(4)]
LISTING = {"status": "success", "avatar": None, "paquetes": PAQUETES, "cotizaciones": COTIZACIONES}
CASILLERO = {"status": "success", "nombreCompleto": "Ana Ríos MRV-1042"}
DONE = {"status": "success", "message": "Recibido"}

REFUSED = {"status": "error", "message": "Correo o contraseña incorrectos"}

GOOD = {
    "api_login.php": LOGIN,
    "api_paquetes.php": LISTING,
    "api_casillero.php": CASILLERO,
    "api_cotizar.php": DONE,
    "api_auto.php": DONE,
    "api_perfil.php": DONE,
    "api_recuperar.php": DONE,
    "api_registro.php": {**LOGIN, "id": "43"},
}


def body(value):
    """A reply's body: bytes as they are, anything else as JSON."""
    return value if isinstance(value, bytes) else json.dumps(value, ensure_ascii=False).encode()


class Reply:
    """A reply with a status and headers of its own; `raw` replaces all of it."""

    def __init__(self, value=b"", status="200 OK", headers=(), length=None, type="application/json", raw=None):
        self.raw = raw
        if raw is None:
            content = body(value)
            lines = [f"HTTP/1.1 {status}", f"Content-Length: {len(content) if length is None else length}"]
            lines += [f"Content-Type: {type}"] if type else []
            lines += [*headers, "Connection: close", "", ""]
            self.raw = "\r\n".join(lines).encode() + content


def packed(value):
    return Reply(gzip.compress(body(value)), headers=["Content-Encoding: gzip"])


def silent():
    """Holds the connection open without an answer."""
    return Reply(raw=Held(b""))


class Server(ScriptedServer):
    """`replies` maps an endpoint to a value, a Reply, or a function of the request's body that returns one of them. `wrong`
    is the reply to a sign-in with a password that the program has made up."""

    def __init__(self, replies=None, tls=None, wrong=REFUSED):
        self.replies = {**GOOD, **(replies or {})}
        self.wrong = wrong
        super().__init__(0, self.look_up, tls)
        self.base = f"http{'s' if tls else ''}://{'localhost' if tls else '127.0.0.1'}:{self.port}/"

    def look_up(self, request):
        endpoint = request.path.removeprefix("/").partition("?")[0]
        made_up = endpoint == "api_login.php" and b'"password":"Aa_' in request.body
        reply = self.wrong if made_up else self.replies[endpoint]
        if callable(reply):
            reply = reply(request.body)
        return (reply if isinstance(reply, Reply) else Reply(reply)).raw

    def paths(self):
        return [request.path for request in self.requests]

    def sent(self):
        return [(request.method, request.path, request.body) for request in self.requests]
