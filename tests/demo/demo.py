"""The demo service as a program, and one request to it."""

import contextlib
import json
import os
import pathlib
import re
import select
import signal
import socket
import sqlite3
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["MAROVENDA_DEMO_SERVICE"]
PATIENCE, PAUSE = 60, 0.1


def head(method, path, host="127.0.0.1"):
    return f"{method} /{path} HTTP/1.1\r\nHost: {host}\r\n".encode()


def post(path, body):
    """The bytes of a POST; a body that is not bytes is sent as JSON."""
    content = body if isinstance(body, bytes) else json.dumps(body, ensure_ascii=False).encode()
    return head("POST", path) + b"Content-Type: application/json\r\nContent-Length: %d\r\n\r\n" % len(content) + content


def get(path):
    return head("GET", path) + b"\r\n"


class Reply:
    """What the service sends until it closes the connection; a status of 0 where that is nothing."""

    def __init__(self, data):
        self.data = data
        self.head, _, self.body = data.partition(b"\r\n\r\n")
        self.status = int(self.head[9:12] or 0)

    def json(self):
        assert b"Content-Type: application/json" in self.head, self.head
        return json.loads(self.body)

    def sound(self):
        """One whole reply with a record in it, as to everything that the service answers at all."""
        length = re.search(rb"(?i)\r\ncontent-length: (\d+)", self.head)
        return length and int(length[1]) == len(self.body) and isinstance(self.json(), dict)


class DemoTest(unittest.TestCase):
    """Each test has a folder of its own, and in it the service's database."""

    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="marovenda-demo-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.database = self.folder / "demo.sqlite"
        self.process = None
        self.addCleanup(self.stop)

    def start(self, *arguments):
        command = [PROGRAM, "--port", "0", "--database", str(self.database), *arguments]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.assertRegex(line, r"^Listening on http://127\.0\.0\.1:[0-9]+/\n$")
        self.port = int(re.search(r":(\d+)/", line)[1])

    def stop(self, by=signal.SIGTERM):
        """Ends the service, which says nothing more."""
        if self.process:
            process, self.process = self.process, None
            process.send_signal(by)
            told = process.communicate(timeout=PATIENCE)
            self.assertEqual((process.returncode, told), (0, ("", "")))

    def exchange(self, request, whole=True):
        """What may not be a whole request is followed by the word that there is no more, though not at once: the service does
        not answer who seems to have gone."""
        with socket.create_connection(("127.0.0.1", self.port), PATIENCE) as connection:
            data = b""
            with contextlib.suppress(ConnectionError):  # refused before all of it was read
                connection.sendall(request)
                if not whole and not select.select([connection], [], [], PAUSE)[0]:
                    connection.shutdown(socket.SHUT_WR)
                while more := connection.recv(65536):
                    data += more
        return Reply(data)

    def ask(self, path, body=None):
        """What the service answers to a POST of `body`, or to a GET."""
        return self.exchange(get(path) if body is None else post(path, body)).json()

    def listing(self, customer):
        return self.ask(f"api_paquetes.php?user_id={customer}")

    def rows(self, query):
        """What the database holds."""
        with contextlib.closing(sqlite3.connect(f"file:{self.database}?mode=ro", uri=True, timeout=PATIENCE)) as database:
            return database.execute(query).fetchall()

    def count(self, table):
        return self.rows(f"SELECT count(*) FROM {table}")[0][0]
