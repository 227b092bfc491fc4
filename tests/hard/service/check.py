"""Requests to the demo service that are not what they should be: each is refused or not answered, and none counts.

usage: check.py SERVICE quick|long
"""

import concurrent.futures
import json
import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from program import RECORDS, Program, head, post_bytes
from tally import Tally, memory

AT_ONCE = 16
# In MiB: each of the service's threads may keep the room that its largest request took.
MOST_MEMORY = 1000
LARGEST = 33_000_000
ANA = RECORDS["api_login.php"]
QUOTATION = json.dumps(RECORDS["api_cotizar.php"]).encode()
GOOD = post_bytes("api_cotizar.php", QUOTATION)
JSON = b"Content-Type: application/json\r\n"
LENGTH = b"Content-Length: %d\r\n" % len(QUOTATION)
CHUNKED = JSON + b"Transfer-Encoding: chunked\r\n"


def post_with(headers, body=QUOTATION):
    return head("POST", "api_cotizar.php") + headers + b"\r\n" + body


# None of these may end in a row.
NOT_HTTP = [
    b"", b"\r\n\r\n", b"\0" * 64, b"\xff" * 4096, b"GET", b"GET\r\n\r\n", b" / HTTP/1.1\r\n\r\n",
    b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03" + bytes(range(256)),  # a TLS client's first words
    b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
    b"POST /api_cotizar.php\r\n\r\n" + QUOTATION,
    *(GOOD.replace(old, new) for old, new in (
        (b"HTTP/1.1", b"HTTP/9.9"), (b"HTTP/1.1", b"SMTP/1.1"), (b"POST", b"P OST"), (b"POST", b"PO\0ST"), (b"\r\n", b"\n"),
        (b"\r\n", b"\r"), (b"/api_cotizar.php", b"/api_cotizar.php\0"), (b"/api_cotizar.php", b"/" + b"a" * 100_000),
        (b"Host: 127.0.0.1\r\n", b""), (b"Host:", b"X: " + b"a" * 200_000 + b"\r\nHost:"),
        (b"Host: 127", b"Host: evil.example\r\nHost: 127"))),
    *(post_with(JSON + b"Content-Length: %b\r\n" % length) for length in (
        b"-1", b"x", b"0", b"5", b"%d" % (len(QUOTATION) + 1), b"9223372036854775807", b"18446744073709551616")),
    post_with(JSON + b"Content-Length: 33554433\r\n", b" " * 100_000),
    post_with(LENGTH + b"Content-Type: text/plain\r\n"),
    post_with(LENGTH + JSON + b"Content-Encoding: gzip\r\n"),
    *(post_with(CHUNKED, body) for body in (
        QUOTATION, b"", b"-1\r\n" + QUOTATION, b"ffffffffffffffff\r\n" + QUOTATION, b"zz\r\n", b"5\r\n{\"a\":\r\n",
        b"%x\r\n%b\r\n" % (len(QUOTATION), QUOTATION), b"0\r\n\r\n")),
]
# None of these is a JSON text, or of the shape that any endpoint takes.
NOT_JSON = [
    b"", b"\0", b"nul", b"{", b"}", b"{]", b"{}{}", b'{"a"}', b'{"a":1,}', b"{'a':1}", b'{"a":1}//', b'{"a":NaN}',
    b'{"a":01}', b'{"a":1e999}', b'{"a":"\n"}', b'{"a":"\\x"}', b'{"a":"\\ud800"}', b'{"a":"\xff"}', b'{"a":"\xc0\x80"}',
    b"\xfe\xff\x00{\x00}", b"[" * 100_000, b'{"a":' * 100_000, b"[" * 100_000 + b"]" * 100_000,
]
SQL = [
    "'", '"', "`", "'; DROP TABLE customers; --", "' OR '1'='1", '" OR ""="', "'/*", "\\'", "%", "_",
    "'); DELETE FROM quotations; --", "' UNION SELECT password_hash FROM customers --", "?1", ":a", "x'00'", "\0",
    "a\0'; DROP TABLE packages; --", "'||(SELECT password_hash FROM customers)||'", "; ATTACH DATABASE 'x.sqlite' AS x; --",
    "ana@marovenda.example'--", "ana@marovenda.example' OR '1'='1", "\u02bc",
]
NUMBERS = ["1 OR 1=1", "1;DROP TABLE customers", "1--", "'1'", "0x1", "1e0", "(1)", "1 UNION SELECT 1", "1\0",
           "\u0661", " 1", "1\n", "user_id", "+1", "1&user_id=2"]
SECRETS = (b"SQLite format 3", b"root:", b"$argon2id$", b"CREATE TABLE")


def rows(program):
    return [program.count(table) for table in ("customers", "quotations", "vehicle_requests", "recovery_requests")]


def refused(reply):
    return reply.closed() or (400 <= reply.status < 500 and reply.sound() and reply.json()["status"] == "error")


def check_malformed(tally, program):
    before = rows(program)
    requests = [("not HTTP", data, False, refused) for data in NOT_HTTP]
    for path in RECORDS:
        record = json.dumps(RECORDS[path]).encode()
        for body in [*NOT_JSON, *(record[:length] for length in range(len(record)))]:
            requests.append(("not the endpoint's record", post_bytes(path, body), True,
                             lambda reply: reply.status == 400 and reply.sound()))
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        replies = pool.map(lambda request: program.exchange(*request[1:3]), requests)
        for (fault, data, _, held), reply in zip(requests, replies):
            tally.note(fault, held(reply), f"{data[:200]!r}: {reply}")
    tally.note("refused without a trace", rows(program) == before, f"{before} rows became {rows(program)}")


def check_injection(tally, program):
    """Every text is stored in its own column, as it is; nothing else can be had by it."""
    def silent(reply):
        return reply.sound() and not reply.good() and not any(secret in reply.received for secret in SECRETS)

    schema = "SELECT type, name, sql FROM sqlite_schema ORDER BY name"
    before = program.rows(schema), program.count("customers"), program.count("packages")
    for text in SQL:
        record = {**RECORDS["api_cotizar.php"], "origen": text, "destino": text, "descripcion": text}
        kept = program.post("api_cotizar.php", record).good() and program.rows(
            "SELECT origen, destino, descripcion FROM quotations ORDER BY id DESC LIMIT 1") == [(text,) * 3]
        record = {"user_id": 3, "marca": text, "modelo": text, "anio": text, "ubicacion": text}
        kept = kept and program.post("api_auto.php", record).good() and program.rows(
            "SELECT marca, modelo, anio, ubicacion FROM vehicle_requests ORDER BY id DESC LIMIT 1") == [(text,) * 4]
        kept = kept and program.post("api_recuperar.php", {"email": text + "x"}).good() and program.rows(
            "SELECT email, customer FROM recovery_requests ORDER BY id DESC LIMIT 1") == [(text + "x", None)]
        kept = kept and program.post("api_perfil.php", {**RECORDS["api_perfil.php"], "nombre": text + "x"}).good()
        name = (program.post("api_casillero.php", {"user_id": "2"}).json() or {}).get("nombreCompleto")
        tally.note("SQL in a text", kept and name == text + "x MRV-1002", f"{text!r}: {name}")
        kind = program.post("api_cotizar.php", {**RECORDS["api_cotizar.php"], "tipo": text})
        tally.note("SQL as a kind", silent(kind), f"{text!r}: {kind}")
        for email, password in ((text, ANA["password"]), (ANA["email"], text)):
            login = program.post("api_login.php", {"email": email, "password": password})
            tally.note("SQL at the sign-in", silent(login), f"{email!r} {password!r}: {login}")
    for number in NUMBERS:
        listing = program.get("api_paquetes.php?user_id=" + "".join(f"%{byte:02x}" for byte in number.encode()))
        mailbox = program.post("api_casillero.php", {"user_id": number})
        held = listing.status == 400 and silent(listing) and silent(mailbox)
        tally.note("SQL as a number", held, f"{number!r}: {listing}")
    for text in ("1%0d%0aX-Injected:%20yes", "1\rX-Injected: yes", "../demo.sqlite", "..%2f..%2fetc%2fpasswd"):
        for path in (f"api_paquetes.php?user_id={text}", text):
            reply = program.get(path)
            held = (reply.closed() or silent(reply)) and b"x-injected" not in reply.received.lower()
            tally.note("header or path in an address", held, f"{path!r}: {reply}")
    after = program.rows(schema), program.count("customers"), program.count("packages")
    tally.note("tables as before", after == before, str(after))


def check_memory(tally, program, tries):
    """Bodies as large as may be, whose memory is given back, and connections that never finish."""
    stalled = [program.connect() for _ in range(8)]
    for number, connection in enumerate(stalled):
        connection.sendall(GOOD[:number * 7])
    for turn in range(tries):
        body = (b'{"a":"' + b"x" * LARGEST, b"[" * LARGEST, b"[" + b"1," * (LARGEST // 2))[turn % 3]
        reply = program.exchange(post_bytes("api_cotizar.php", body))
        tally.note("body as large as may be", reply.status == 400 and reply.sound(), repr(reply))
    taken = memory(program.process.pid, "VmHWM")
    tally.note("memory", taken < MOST_MEMORY, f"{taken:.0f} MiB")
    tally.note("behind stalled connections", program.get("api_paquetes.php?user_id=2").good())
    for connection in stalled:
        connection.close()


def main():
    executable, form = sys.argv[1:]
    tally = Tally()
    with tempfile.TemporaryDirectory(prefix="marovenda-service-") as folder, \
            Program(executable, pathlib.Path(folder)) as program:
        places = program.listening_places()
        tally.note("listens at 127.0.0.1 alone", places == ["0100007F"], str(places))
        check_malformed(tally, program)
        check_injection(tally, program)
        check_memory(tally, program, 60 if form == "long" else 24)
        tally.note("nothing to complain about", program.process.poll() is None and program.errors() == "", program.errors())
    tally.finish()


if __name__ == "__main__":
    main()
