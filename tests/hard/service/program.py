"""The demo service under test: the real program on a free port with a database of its own, and bytes sent to it."""

import contextlib
import json
import pathlib
import re
import select
import socket
import sqlite3
import subprocess

PATIENCE = 60
PAUSE = 0.1
# A good record for each endpoint that takes one.
RECORDS = {
    "api_login.php": {"email": "ana@marovenda.example", "password": "Casillero#1"},
    "api_recuperar.php": {"email": "ana@marovenda.example"},
    "api_registro.php": {"nombre": "Eva", "email": "eva@x.example", "password": "E", "direccion": "d", "ciudad": "c"},
    "api_perfil.php": {"user_id": 2, "nombre": "Bruno", "email": "", "password": "", "avatar_base64": "AAEC"},
    "api_casillero.php": {"user_id": "2"},
    "api_cotizar.php": {"user_id": 2, "tipo": "aereo", "origen": "Miami", "destino": "Panamá", "peso": 2.5,
                        "valor": 40, "descripcion": "Silla"},
    "api_auto.php": {"user_id": 2, "marca": "Toyota", "modelo": "Corolla", "anio": "2019", "ubicacion": "Miami"},
}


def head(verb, path):
    return f"{verb} /{path} HTTP/1.1\r\nHost: 127.0.0.1\r\n".encode()


def post_bytes(path, body):
    return head("POST", path) + f"Content-Type: application/json\r\nContent-Length: {len(body)}\r\n\r\n".encode() + body


class Reply:
    """What came until the service closed the connection; with a failure when nothing came for long."""

    def __init__(self, received, failure=None):
        self.received, self.failure = received, failure
        self.head, _, self.body = received.partition(b"\r\n\r\n")
        match = re.match(rb"HTTP/1\.1 (\d{3}) ", self.head)
        self.status = int(match.group(1)) if match else 0

    def __repr__(self):
        return repr(self.failure or self.received[:300])

    def closed(self):
        """Whether the connection was closed without a word."""
        return not self.received and not self.failure

    def json(self):
        """The record in the body, or nothing where the body is none."""
        try:
            record = json.loads(self.body)
        except ValueError:
            return None
        return record if isinstance(record, dict) else None

    def sound(self):
        """One whole reply with a record in it, as to everything that the service answers at all."""
        length = re.search(rb"\r\ncontent-length: (\d+)(\r\n|$)", self.head.lower())
        return (not self.failure and length is not None and int(length.group(1)) == len(self.body)
                and b"\r\ncontent-type: application/json" in self.head.lower() and self.json() is not None)

    def good(self):
        return self.status == 200 and (self.json() or {}).get("status") == "success"


class Program:
    """Use as a context."""

    def __init__(self, executable, folder):
        self.executable, self.folder = executable, folder
        self.database = self.folder / "demo.sqlite"

    def __enter__(self):
        with open(self.folder / "stderr", "ab") as errors:
            self.process = subprocess.Popen([self.executable, "--port", "0", "--database", str(self.database)],
                                            stdout=subprocess.PIPE, stderr=errors, text=True, cwd=self.folder)
        line = self.process.stdout.readline()
        if not line.startswith("Listening"):
            raise RuntimeError(f"the service did not start: {line!r} {self.errors()!r}")
        self.port = int(line.rstrip("/\n").rsplit(":", 1)[1])
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.stdout.close()
        self.process.wait(PATIENCE)

    def errors(self):
        return (self.folder / "stderr").read_text(errors="replace")

    def listening_places(self):
        """The addresses at which somebody listens on its port, in hexadecimal, as the kernel tells them."""
        return [words[1].split(":")[0] for table in ("tcp", "tcp6")
                for words in map(str.split, pathlib.Path(f"/proc/net/{table}").read_text().splitlines()[1:])
                if words[3] == "0A" and words[1].endswith(f":{self.port:04X}")]

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), PATIENCE)

    def exchange(self, data, whole=True):
        """Sends the bytes and takes what comes until the service closes. What may not be a whole request is followed by
        the word that there is no more, though not at once: the service does not answer who seems to have gone."""
        received = b""
        try:
            with self.connect() as connection:
                connection.sendall(data)
                if not whole and not select.select([connection], [], [], PAUSE)[0]:
                    connection.shutdown(socket.SHUT_WR)
                while more := connection.recv(65536):
                    received += more
        except TimeoutError as failure:
            return Reply(received, str(failure))
        except ConnectionError:
            pass  # it had said all that it wanted, and reads no more, or has gone
        return Reply(received)

    def post(self, path, record):
        return self.exchange(post_bytes(path, json.dumps(record).encode()))

    def get(self, path):
        return self.exchange(head("GET", path) + b"\r\n")

    def rows(self, query):
        """What the database holds, read by another process's means."""
        with contextlib.closing(sqlite3.connect(f"file:{self.database}?mode=ro", uri=True, timeout=PATIENCE)) as database:
            return database.execute(query).fetchall()

    def count(self, table):
        return self.rows(f"SELECT count(*) FROM {table}")[0][0]
