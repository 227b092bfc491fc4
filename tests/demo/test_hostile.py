"""Requests that are not what they should be: each is refused or not answered, and none counts."""

import concurrent.futures
import json
import pathlib
import re
import socket
import unittest

from demo import PATIENCE, DemoTest, get, head, post

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
AT_ONCE = 16
# In MiB: each of the service's threads may keep the room that its largest request took.
MOST_MEMORY = 1000
LARGEST = 33_000_000
ANA = RECORDS["api_login.php"]
QUOTATION = json.dumps(RECORDS["api_cotizar.php"]).encode()
GOOD = post("api_cotizar.php", QUOTATION)
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


class HostileTest(DemoTest):
    def setUp(self):
        super().setUp()
        self.start()

    def tables(self):
        return {table: self.count(table) for table in ("customers", "quotations", "vehicle_requests", "recovery_requests")}

    def assert_silent(self, reply):
        """It refuses and gives nothing away."""
        self.assertTrue(reply.sound() and reply.json()["status"] == "error", reply.data[:300])
        self.assertFalse([secret for secret in SECRETS if secret in reply.data])

    def test_listens_on_this_machine_alone(self):
        # The kernel tells addresses in hexadecimal, and those where somebody listens with the state 0A.
        lines = [line.split() for table in ("tcp", "tcp6")
                 for line in pathlib.Path(f"/proc/net/{table}").read_text().splitlines()]
        self.assertEqual([words[1] for words in lines if words[3] == "0A" and words[1].endswith(f":{self.port:04X}")],
                         [f"0100007F:{self.port:04X}"])

    def test_malformed_requests_leave_no_trace(self):
        before = self.tables()
        requests = [(data, False) for data in NOT_HTTP]
        for path in RECORDS:
            record = json.dumps(RECORDS[path]).encode()
            requests += [(post(path, body), True) for body in (*NOT_JSON, *(record[:n] for n in range(len(record))))]
        with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
            for (data, whole), reply in zip(requests, pool.map(lambda request: self.exchange(*request), requests)):
                with self.subTest(data[:200]):
                    if whole:
                        self.assertTrue(reply.status == 400 and reply.sound(), reply.data[:300])
                    elif reply.data:
                        self.assertTrue(400 <= reply.status < 500 and reply.sound(), reply.data[:300])
                        self.assertEqual(reply.json()["status"], "error")
        self.assertEqual(self.tables(), before)

    def test_texts_are_stored_as_they_are(self):
        """Each in its own column; nothing else can be had by it."""
        fixed = ["SELECT type, name, sql FROM sqlite_schema ORDER BY name", "SELECT count(*) FROM customers",
                 "SELECT count(*) FROM packages"]
        before = list(map(self.rows, fixed))
        quotation = RECORDS["api_cotizar.php"]
        for text in SQL:
            with self.subTest(text):
                for path, record, query, stored in (
                        ("api_cotizar.php", {**quotation, "origen": text, "destino": text, "descripcion": text},
                         "origen, destino, descripcion FROM quotations", (text,) * 3),
                        ("api_auto.php", {"user_id": 3, "marca": text, "modelo": text, "anio": text, "ubicacion": text},
                         "marca, modelo, anio, ubicacion FROM vehicle_requests", (text,) * 4),
                        ("api_recuperar.php", {"email": text + "x"}, "email, customer FROM recovery_requests",
                         (text + "x", None))):
                    self.assertEqual(self.ask(path, record)["status"], "success")
                    self.assertEqual(self.rows(f"SELECT {query} ORDER BY id DESC LIMIT 1"), [stored])
                self.ask("api_perfil.php", {**RECORDS["api_perfil.php"], "nombre": text + "x"})
                self.assertEqual(self.ask("api_casillero.php", {"user_id": "2"})["nombreCompleto"], text + "x MRV-1002")
                self.assert_silent(self.exchange(post("api_cotizar.php", {**quotation, "tipo": text})))
                for email, password in ((text, ANA["password"]), (ANA["email"], text)):
                    self.assert_silent(self.exchange(post("api_login.php", {"email": email, "password": password})))
        for number in NUMBERS:
            with self.subTest(number):
                listing = self.exchange(get("api_paquetes.php?user_id=" + "".join(f"%{b:02x}" for b in number.encode())))
                self.assertEqual(listing.status, 400)
                self.assert_silent(listing)
                self.assert_silent(self.exchange(post("api_casillero.php", {"user_id": number})))
        for text in ("1%0d%0aX-Injected:%20yes", "1\rX-Injected: yes", "../demo.sqlite", "..%2f..%2fetc%2fpasswd"):
            for path in (f"api_paquetes.php?user_id={text}", text):
                with self.subTest(path):
                    reply = self.exchange(get(path))
                    if reply.data:
                        self.assert_silent(reply)
                    self.assertNotIn(b"x-injected", reply.data.lower())
        self.assertEqual(list(map(self.rows, fixed)), before)

    def test_memory_is_given_back(self):
        """Bodies as large as may be, and connections that never finish."""
        stalled = [socket.create_connection(("127.0.0.1", self.port), PATIENCE) for _ in range(8)]
        for number, connection in enumerate(stalled):
            self.addCleanup(connection.close)
            connection.sendall(GOOD[:number * 7])
        for body in (b'{"a":"' + b"x" * LARGEST, b"[" * LARGEST, b"[" + b"1," * (LARGEST // 2)) * 8:
            reply = self.exchange(post("api_cotizar.php", body))
            self.assertTrue(reply.status == 400 and reply.sound(), reply.data[:300])
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        self.assertLess(int(re.search(r"VmHWM:\s+(\d+)", status)[1]) // 1024, MOST_MEMORY)
        self.assertEqual(self.listing(2)["status"], "success")


if __name__ == "__main__":
    unittest.main()
