"""The demo service under test: the real program on a free port with a database of its own, and bytes sent to it."""

import json
import re
import resource
import select
import socket
import sqlite3
import subprocess

PATIENCE = 60
PAUSE = 0.1


class Reply:
    """What came until the service closed the connection."""

    def __init__(self, received, failure=None):
        """With a failure when nobody took the connection or nothing came for long."""
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
    """Use as a context; what it said on stderr is kept in `errors` when it ends."""

    def __init__(self, executable, folder):
        self.executable, self.folder = executable, folder
        folder.mkdir()
        self.database = self.folder / "demo.sqlite"
        self.complaints = self.folder / "stderr"
        self.process = None
        self.port = 0

    def launch(self):
        """Starts without waiting for its line."""
        with open(self.complaints, "ab") as errors:
            self.process = subprocess.Popen([self.executable, "--port", "0", "--database", str(self.database)],
                                            stdout=subprocess.PIPE, stderr=errors, text=True, cwd=self.folder)

    def start(self):
        self.launch()
        line = self.process.stdout.readline()
        if not line.startswith("Listening"):
            raise RuntimeError(f"the service did not start: {line!r} {self.errors()!r}")
        self.port = int(line.rstrip("/\n").rsplit(":", 1)[1])

    def end(self, kill=False):
        """Returns the exit status; negative for a signal."""
        if self.process.poll() is None:
            self.process.kill() if kill else self.process.terminate()
        self.process.stdout.close()
        return self.process.wait(PATIENCE)

    def alive(self):
        return self.process.poll() is None

    def errors(self):
        return self.complaints.read_text(errors="replace")

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.end(kill=True)

    def exchange(self, data, whole=True):
        """Sends the bytes and takes what comes until the service closes. What may not be a whole request is followed by
        the word that there is no more, though not at once: the service does not answer who seems to have gone."""
        received = b""
        try:
            connection = socket.create_connection(("127.0.0.1", self.port), PATIENCE)
        except OSError as failure:
            return Reply(received, str(failure))
        with connection:
            try:
                connection.sendall(data)
                if not whole and not select.select([connection], [], [], PAUSE)[0]:
                    connection.shutdown(socket.SHUT_WR)
                while more := connection.recv(65536):
                    received += more
            except TimeoutError as failure:
                return Reply(received, str(failure))
            except ConnectionError:
                pass  # it had said all that it wanted, and reads no more
            return Reply(received)

    def post(self, path, record):
        return self.exchange(post_bytes(path, json.dumps(record).encode()))

    def get(self, path):
        return self.exchange(head("GET", path) + b"\r\n")

    def rows(self, query, *values):
        """What the database holds, read by another process's means."""
        database = sqlite3.connect(f"file:{self.database}?mode=ro", uri=True, timeout=PATIENCE)
        try:
            return database.execute(query, values).fetchall()
        finally:
            database.close()

    def count(self, table):
        return self.rows(f"SELECT count(*) FROM {table}")[0][0]


def head(verb, path):
    return f"{verb} /{path} HTTP/1.1\r\nHost: 127.0.0.1\r\n".encode()


def post_bytes(path, body):
    headers = f"Content-Type: application/json\r\nContent-Length: {len(body)}\r\n\r\n"
    return head("POST", path) + headers.encode() + body


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


def allow_many_files():
    """So that no try fails for want of a descriptor of ours."""
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, max(soft, 4096)), hard))
