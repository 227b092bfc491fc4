"""The product's client, a process of its own, and the server that it talks to; a call put through a fault, among others that
have to succeed."""

import collections
import json
import os
import subprocess
import threading

from faults import ABSENT, EITHER, RECORD, whole
from server import Server
from tally import memory

# How much memory an exchange may take, in MiB: with what else the client needs that is less than 200.
MOST_MEMORY = 150
# The limit that customers get, and how much later is not much later on a machine that has other things to do, in ms.
SILENCE, LATE = 60_000, 3000

Reply = collections.namedtuple("Reply", "body took queued")


class Call:
    """One of the calls of the client, with what a good reply holds."""

    def __init__(self, endpoint, reply):
        self.endpoint, self.reply = endpoint, reply
        self.path = "/" + endpoint
        self.is_post = endpoint != "api_paquetes.php"
        self.line = "POST " + self.path if self.is_post else f"GET {self.path}?user_id=7"

    def bytes(self, text):
        return json.dumps(self.reply(text), separators=(",", ":")).encode()


def signed_in(text):
    return {"status": "success", "message": text, "id": "7", "nombre": "Ana"}


def standard(text):
    return {"status": "success", "message": text}


# Those with a body, then the one without.
CALLS = [
    Call("api_login.php", signed_in),
    Call("api_recuperar.php", standard),
    Call("api_registro.php", signed_in),
    Call("api_perfil.php", standard),
    Call("api_casillero.php", lambda text: {"status": "success", "nombreCompleto": "Ana", "message": text}),
    Call("api_cotizar.php", standard),
    Call("api_auto.php", standard),
    Call("api_paquetes.php", lambda text: {
        "status": "success", "avatar": text,
        "paquetes": [{"tracking": "1Z 1", "descripcion": "Zapatos", "estado": "En Miami"}],
        "cotizaciones": [{"origen": "Miami", "descripcion": "Libros", "estado": "Pendiente"}]}),
]


class Delivery:
    """What came of one call: its completions."""

    def __init__(self):
        self.replies = []

    def json(self):
        body = self.replies[0].body if self.replies else None
        return json.loads(body) if body is not None else None

    def wrong(self):
        if len(self.replies) != 1:
            return f"completed {len(self.replies)} times"
        return None if self.replies[0].queued else "completed inside the call or on another thread"


class Bench:
    """Use as a context."""

    def __init__(self, program, scheme="http", *options):
        self.changed = threading.Condition()
        self.server = Server(self.changed)
        self.base = f"{scheme}://{'localhost' if scheme == 'https' else '127.0.0.1'}:{self.server.port}/"
        # Freed blocks that the sanitizer keeps would count as memory of the client.
        sanitizer = {"ASAN_OPTIONS": "quarantine_size_mb=1:allocator_release_to_os_interval_ms=0"}
        self.client = subprocess.Popen([program, self.base, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       env={**os.environ, **sanitizer})
        self.deliveries = []
        self.ended = False
        threading.Thread(target=self._listen, daemon=True).start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.forget()
        self.client.stdin.close()
        if self.client.wait() != 0:
            raise RuntimeError(f"the client ended with {self.client.returncode}")

    def _listen(self):
        for line in self.client.stdout:
            told = json.loads(line)
            with self.changed:
                self.deliveries[told.pop("key")].replies.append(Reply(**told))
                self.changed.notify_all()
        with self.changed:
            self.ended = True
            self.changed.notify_all()

    def until(self, is_so, seconds=100):
        """Waits until something is so; false when it is not in a time that is long for a check."""
        with self.changed:
            self.changed.wait_for(lambda: self.ended or is_so(), seconds)
            if self.ended:
                raise RuntimeError("the client has ended")
            return is_so()

    def send(self, **line):
        """Has the client send something, as client.cpp says."""
        self.deliveries.append(Delivery())
        line["key"] = len(self.deliveries) - 1
        self.client.stdin.write(json.dumps(line).encode() + b"\n")
        self.client.stdin.flush()
        return self.deliveries[-1]

    def start(self, call, text, padding=0):
        return self.send(endpoint=call.endpoint, text=text, padding=padding)

    def complete(self, *deliveries, seconds=100):
        return self.until(lambda: all(delivery.replies for delivery in deliveries), seconds)

    def works(self, call, text="afterwards"):
        """Whether one more call succeeds."""
        self.server.script(call.path, lambda connection: connection.send(whole(call.bytes(text))) or connection.close())
        delivery = self.start(call, text)
        return self.complete(delivery) and delivery.json() == call.reply(text)

    def forget_peak(self):
        """What the client holds now does not count as memory that it takes."""
        with open(f"/proc/{self.client.pid}/clear_refs", "w") as file:
            file.write("5")
        self.before = memory(self.client.pid, "VmRSS")

    def peak(self):
        """The most memory that the client took since, in MiB."""
        return memory(self.client.pid, "VmHWM") - self.before


class Trial:
    """Puts calls through faults; the rows of the table begin with `prefix`."""

    def __init__(self, tally, bench, prefix=""):
        self.tally, self.bench, self.prefix = tally, bench, prefix
        self.number = 1_000_000

    def run(self, fault, index):
        """Before it another call is made and held by the server; it is answered afterwards, and one more call made."""
        call, held, after = (CALLS[(index + step) % len(CALLS)] for step in (0, 3, 5))
        wrong = self._attempt(fault, call, held, after)
        self.tally.note(self.prefix + fault.row, not wrong, f"{call.endpoint}, {fault.name}: {wrong}")

    def _attempt(self, fault, call, held, after):
        bench, server = self.bench, self.bench.server
        self.number += 1
        text = f"try {self.number}"
        server.forget()
        server.script(held.path, lambda connection: (
            connection.hold(), connection.send(whole(held.bytes(text))), connection.close()))
        waiting = bench.start(held, text)
        if not bench.until(lambda: server.has(held.path)):
            return "the call that is to be held has not come"
        good = fault.body or call.bytes(text)
        if fault.refused:
            server.listen(False)
        elif fault.when == "door":
            server.door = lambda connection: fault.play(connection, good)
        else:
            server.script(call.path, lambda connection: fault.play(connection, good), fault.when)
        bench.forget_peak()
        delivery = bench.start(call, text, fault.padding)
        ended = bench.complete(delivery)
        taken = bench.peak()
        if fault.refused:
            server.listen(True)
        server.door = None
        if not ended:
            return "has not ended"
        # By then the call that is held has ended by silence too.
        forgotten = fault.forgettable and not call.is_post and delivery.replies[0].took >= SILENCE
        if not forgotten and waiting.replies:
            return f"another call ended with it, with {waiting.json()}"
        server.release(held.path)
        if not bench.works(after, text):
            return "the next call did not succeed"
        if not bench.complete(waiting) or not forgotten and waiting.json() != held.reply(text):
            return f"the call held got {waiting.json()}"
        if taken > MOST_MEMORY:
            return f"{taken:.0f} MiB of memory"
        return delivery.wrong() or self._judge(fault, delivery, json.loads(good)) or self._count(fault, call)

    @staticmethod
    def _judge(fault, delivery, good):
        allowed = {RECORD: [good], ABSENT: [None], EITHER: [good, None]}[fault.gets]
        return None if delivery.json() in allowed else f"got {delivery.json()}"

    def _count(self, fault, call):
        lines = self.bench.server.lines()
        came = lines[call.line]
        if came < min(fault.posts) or came > max(fault.posts) and call.is_post:
            return f"{came} requests came"
        if self.bench.server.visitors:
            return "a visit elsewhere"
        unknown = set(lines) - {one.line for one in CALLS}
        return f"asked for {unknown}" if unknown else None

    def finish(self):
        """Notes, at the very end, that no call was completed a second time."""
        wrong = [one.wrong() for one in self.bench.deliveries if one.wrong()]
        self.tally.note(self.prefix + "one completion of every call, to the end", not wrong, str(wrong[:5]))
