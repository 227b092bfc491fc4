"""A server on loopback that answers as a test tells it to, wrongly too."""

import gzip
import json
import socket
import threading

LOGIN = {"status": "success", "message": "Bienvenida", "id": "42", "nombre": "Ana Ríos"}
PAQUETES = [
    {"tracking": f"MRV-{i}", "descripcion": f"Caja {i}", "estado": "recibido", "fecha_recibido": "ayer"}
    for i in range(20)
]
COTIZACIONES = [{"origen": "Miami, USA", "descripcion": f"Silla {i}", "estado": "enviada"} for i in range(4)]
LISTING = {"status": "success", "avatar": None, "paquetes": PAQUETES, "cotizaciones": COTIZACIONES}
CASILLERO = {"status": "success", "nombreCompleto": "Ana Ríos MRV-1042"}
DONE = {"status": "success", "message": "Recibido"}

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
    """A reply with a status and headers of its own; `raw` replaces all of it, `end` says how the connection ends."""

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


class Server:
    """Serves until it is left. `replies` maps an endpoint to a value, a Reply, or a function of the request's body
    that returns one of them; None holds the connection open without an answer."""

    def __init__(self, replies=None, tls=None):
        self.replies = {**GOOD, **(replies or {})}
        self.requests = []
        self.tls = tls
        self.held = []
        self.socket = socket.create_server(("127.0.0.1", 0))
        self.port = self.socket.getsockname()[1]
        self.base = f"http{'s' if tls else ''}://{'localhost' if tls else '127.0.0.1'}:{self.port}/"
        self.thread = threading.Thread(target=self.serve, daemon=True)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        if self.socket.fileno() >= 0:
            self.socket.shutdown(socket.SHUT_RDWR)
        self.thread.join()
        self.socket.close()
        for each in self.held:
            each.close()

    def end(self):
        """Listens no longer; to be called by a reply."""
        self.socket.close()

    def serve(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return
            try:
                if self.tls:
                    connection = self.tls.wrap_socket(connection, server_side=True)
                self.answer(connection)
            except OSError:
                connection.close()

    def answer(self, connection):
        method, path, content = self.read(connection)
        endpoint = path.removeprefix("/").partition("?")[0]
        self.requests.append((method, path, content))
        reply = self.replies[endpoint]
        if callable(reply):
            reply = reply(content)
        if reply is None:
            self.held.append(connection)
            return
        connection.sendall((reply if isinstance(reply, Reply) else Reply(reply)).raw)
        connection.close()

    @staticmethod
    def read(connection):
        data = b""
        while b"\r\n\r\n" not in data:
            more = connection.recv(65536)
            if not more:
                raise ConnectionError
            data += more
        head, _, content = data.partition(b"\r\n\r\n")
        lines = head.decode().split("\r\n")
        headers = {name.lower(): value.strip() for name, _, value in (line.partition(":") for line in lines[1:])}
        while len(content) < int(headers.get("content-length", 0)):
            content += connection.recv(65536)
        method, path, _ = lines[0].split(" ")
        return method, path, content
