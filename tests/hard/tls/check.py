"""What a connection must be before one byte of a request goes over it: over those that must not be trusted none goes.

usage: check.py CLIENT quick|long
"""

import pathlib
import ssl
import sys
import tempfile
import warnings

HERE = pathlib.Path(__file__).parent
sys.path[:0] = [str(HERE.parent), str(HERE.parent / "wire")]
import certificates
import faults
from bench import CALLS, LATE, SILENCE, Bench, Trial
from faults import head, whole
from tally import Tally

# A request is longer than this, and an alert is shorter.
REQUEST = 500
SECRET = "s" * REQUEST
SHORT = 1000


class Handshakes:
    def __init__(self, tally, bench, folder):
        self.tally, self.bench, self.folder = tally, bench, folder
        self.server = bench.server

    def context(self, certificate="good", version=None, ciphers="DEFAULT:@SECLEVEL=0"):
        """A server takes whatever it is given; to refuse is the client's part."""
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.set_ciphers(ciphers)
        if version:
            context.minimum_version = context.maximum_version = version
        if certificate:
            context.load_cert_chain(self.folder / f"{certificate}.pem")
        return context

    def good(self):
        return {"good certificate": self.context(), "good certificate by way of another": self.context("by-middle"),
                "TLS 1.2": self.context(version=ssl.TLSVersion.TLSv1_2),
                "TLS 1.3": self.context(version=ssl.TLSVersion.TLSv1_3)}

    def bad(self):
        """Contexts, and servers that do something else instead of a handshake."""
        tls = ssl.TLSVersion
        plain = whole(b'{"status":"success"}')
        redirect = head("302 Found", "Location: http://127.0.0.1/", "Content-Length: 0")
        alert = b"\x15\x03\x03\0\2\2\x28"
        return {
            **{name.replace("-", " "): self.context(name) for name in certificates.BAD},
            "TLS 1.0": self.context(version=tls.TLSv1, ciphers="ALL:@SECLEVEL=0"),
            "TLS 1.1": self.context(version=tls.TLSv1_1, ciphers="ALL:@SECLEVEL=0"),
            "without a certificate": self.context(None, tls.TLSv1_2, "ADH:AECDH:@SECLEVEL=0"),
            "with ciphers that hide nothing": self.context(version=tls.TLSv1_2, ciphers="eNULL:@SECLEVEL=0"),
            "plain text on the port": lambda c: (c.send(plain), c.half()),
            "plain text that waits for a request": lambda c: (c.take(1), c.send(plain), c.half()),
            "a redirect in plain text": lambda c: (c.take(1), c.send(redirect), c.half()),
            "garbage instead of a handshake": lambda c: (c.send(b"\x17" * 300), c.half()),
            "an alert instead of a handshake": lambda c: (c.take(1), c.send(alert), c.half()),
            "closed instead of a handshake": lambda c: c.close(),
        }

    def prepare(self, server):
        self.server.forget()
        self.server.tls = server if isinstance(server, ssl.SSLContext) else None
        self.server.door = None if isinstance(server, ssl.SSLContext) else server

    def try_certificates(self, every_call):
        for is_good, servers in ((True, self.good()), (False, self.bad())):
            for turn, (name, server) in enumerate(servers.items()):
                for number, call in enumerate(CALLS):
                    if every_call or number == turn % (len(CALLS) - 1) or not call.is_post:
                        wrong = self.attempt(server, is_good, call) or self.works(CALLS[(number + 3) % len(CALLS)])
                        self.tally.note(name, not wrong, f"{call.endpoint}: {wrong}")

    def attempt(self, server, is_good, call):
        self.prepare(server)
        self.server.script(call.path, lambda c: (c.send(head() + call.bytes("trusted")), c.close()))
        delivery = self.bench.start(call, SECRET)
        self.bench.complete(delivery)
        if wrong := delivery.wrong():
            return wrong
        if delivery.json() != (call.reply("trusted") if is_good else None):
            return f"got {delivery.json()}"
        return None if is_good else self.leaked()

    def leaked(self):
        """What is wrong with what the server got: it has to be nothing at all, or, where it cannot decrypt, less than a
        request."""
        seen = self.server.seen
        if not self.bench.until(lambda: all(connection.done for connection in seen)):
            return "a connection stays open"
        if not seen or self.server.lines():
            return "a request came" if seen else "nobody came"
        for connection in seen:
            # Decrypted bytes, or those behind the client's hello.
            if connection.hello or connection.handshake is not None:
                count = len(connection.received) - connection.hello
                if count > (0 if connection.handshake is not None else REQUEST // 2):
                    return f"{count} bytes came"
        return None

    def works(self, call):
        self.prepare(self.context())
        return None if self.bench.works(call) else "the client is of no use afterwards"

    def try_broken_off(self, step):
        """A good server that is cut off, or one of whose bytes is changed on the way, after every `step` bytes."""
        call = CALLS[0]
        for version in (ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3):
            context = self.context(version=version)
            for name, play in (
                    ("closed after n bytes of the handshake", lambda c, n: (c.flight(context, n), c.close())),
                    ("a byte of the handshake changed", lambda c, n: (c.flight(context, changed=n), c.half()))):
                n, size = 0, 1
                while n < size:
                    wrong = self.attempt(lambda c, play=play, n=n: play(c, n), False, call)
                    size = max(size, *(connection.flight_size for connection in self.server.seen))
                    if not wrong and n % 50 == 0:
                        wrong = self.works(call)
                    self.tally.note(name, not wrong, f"{version.name}, byte {n}: {wrong}")
                    n += step

    def try_stalled(self, long):
        """A good server that falls silent during the handshake: it reads on, and says no more. With TLS 1.3 the server's
        first words complete it. With the limit that customers get, or with a shorter one."""
        older, newer = (self.context(version=v) for v in (ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3))
        for name, play in {
            "stalled before the handshake": lambda c: c.take(1),
            "stalled in the server's hello": lambda c: c.flight(newer, 40),
            "stalled in the server's certificate": lambda c: c.flight(newer, 500),
            "stalled before the end of the handshake": lambda c: c.flight(older),
        }.items():
            self.prepare(play)
            limit = SILENCE if long else SHORT
            if long:
                all_deliveries = [self.bench.start(call, SECRET) for call in CALLS]
            else:
                all_deliveries = [self.bench.send(url=self.bench.base + SECRET, text=text, silence=limit)
                                  for text in (SECRET, "")]
            self.bench.complete(*all_deliveries)
            leaked = self.leaked()
            for delivery in all_deliveries:
                wrong = delivery.wrong() or leaked
                if not wrong and not limit <= delivery.replies[0].took <= limit + LATE:
                    wrong = f"ended after {delivery.replies[0].took} ms"
                self.tally.note(name, not wrong and delivery.json() is None, wrong or "got a reply")
            wrong = self.works(CALLS[0])
            self.tally.note(name, not wrong, wrong)


def try_faults(tally, bench, context, long):
    """The faults of any connection, over an encrypted one."""
    bench.server.forget()
    bench.server.tls = context
    trial = Trial(tally, bench, "encrypted: ")
    every = [*faults.connections(), *faults.lengths(), *faults.sizes()]
    if long:
        every += [*faults.chunks(), *faults.compressed(), *faults.heads()]
    every += faults.endings(CALLS[0].bytes("try 1"), 1 if long else 41)
    for turn, fault in enumerate(every):
        # Over an encrypted connection the first bytes are no request yet; the handshakes above are broken off there.
        if fault.when == "door" and fault.posts == (1,):
            continue
        # A reply of its own is that of the first call only.
        number = 0 if fault.body else turn % len(CALLS)
        if CALLS[number].is_post or not fault.padding:
            trial.run(fault, number)
    trial.finish()


def main():
    program, form = sys.argv[1:]
    long = form == "long"
    # Old versions are what is to be refused.
    warnings.simplefilter("ignore", DeprecationWarning)
    tally = Tally()
    with tempfile.TemporaryDirectory(prefix="marovenda-tls-") as name:
        folder = pathlib.Path(name)
        certificates.make_all(folder)
        with Bench(program, "https", folder / "root.crt") as bench:
            handshakes = Handshakes(tally, bench, folder)
            handshakes.try_certificates(long)
            handshakes.try_broken_off(1 if long else 150)
            handshakes.try_stalled(long)
            try_faults(tally, bench, handshakes.context(), long)
    tally.finish()


if __name__ == "__main__":
    main()
