"""Each way in which a connection and what is around a reply's body can be wrong is named."""

import datetime
import json
import pathlib
import ssl
import sys
import tempfile
import unittest

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "hard" / "tls")]
from certificates import Maker
from namespaces import apart
from program import ProgramTest, faults, notes, warnings
from server import LISTING, LOGIN, Reply, Server, body, packed, silent

P, C = "api_paquetes.php", "api_casillero.php"
HTML = b"<html>502</html>"
HTML_FAULT = 'line 1, byte 0: an HTML page, not JSON: "<html>502</html>"'

FAULTS = [
    (Reply(b""), ["HTTP 200: an empty body"]),
    (Reply(HTML, "502 Bad Gateway", type="text/html"), [HTML_FAULT, "HTTP 502: with a body that is not the reply"]),
    (Reply(b"", "302 Found", ["Location: https://elsewhere.example/a"]),
     ['HTTP 302: redirects to "https://elsewhere.example/a", which the app does not follow']),
    (Reply(b"", "401 Unauthorized", ['WWW-Authenticate: Basic realm="x"']),
     ["HTTP 401: asks for credentials that the app does not have"]),
    (Reply(raw=b""), ["connection: no HTTP reply: Connection closed"]),
    (Reply(b'{"paquetes":[', length=1000),
     ["line 1, byte 13: the document is incomplete", "connection: broke after 13 bytes of 1000 announced: "]),
    (Reply(raw=b"HTTP/1.1 200 OK\r\nContent-Length: 1000000000\r\n\r\n{"),
     ["size: more than 64 MiB of body, which the app drops"]),
    (Reply(b"no gzip at all", headers=["Content-Encoding: gzip"]), ["connection: the reply is lost: Decompression failed"]),
]

WARNINGS = [
    (Reply(LISTING, "500 Error"), ["HTTP 500: has no effect: the app reads the body, whatever the status is"]),
    (Reply(LISTING, "302 Found", ["Location: /x"]), ['HTTP 302: redirects to "/x", which the app does not follow']),
    (Reply(LISTING, type="application/json; charset=ISO-8859-1"),
     ['Content-Type: "application/json; charset=iso-8859-1": the charset is ignored, the body is read as UTF-8']),
    (Reply(LISTING, length=len(body(LISTING)) + 9), [f"connection: broke after {len(body(LISTING))} bytes of"]),
    (Reply({**LISTING, "x": "Muy-Secreta#1"}), ["the reply: contains the customer's password"]),
]

NOTES = [
    (Reply(LISTING, type="text/html; charset=utf-8"), ['Content-Type: "text/html; charset=utf-8", ignored by the app']),
    (Reply(LISTING, type=None), ["Content-Type: absent, ignored by the app"]),
    (Reply(LISTING, headers=["Set-Cookie: a=b"]), ["Set-Cookie: the app neither keeps nor sends cookies"]),
    (Reply({**LISTING, "status": "success" + " " * 300_000}), ["size: 3"]),
]


class TransportTest(ProgramTest):
    def test_each_finding_is_named(self):
        for table, severity, status in ((FAULTS, faults, 1), (WARNINGS, warnings, 0), (NOTES, notes, 0)):
            for reply, expected in table:
                with self.subTest(expected), Server({P: reply}) as server:
                    report = self.check(server, status=status)
                    found = severity(report)
                    # Of faults and warnings all are expected.
                    self.assertEqual(len(faults(report)), len(expected) if severity is faults else 0)
                    self.assertEqual(len(warnings(report)), len(expected) if severity is warnings else 0)
                    for start in expected:
                        self.assertTrue(any(line.startswith(f"{P}: {start}") for line in found), report)
                    # The other screens were tried all the same, and nobody was asked twice.
                    self.assertEqual([each.path for each in server.posts()],
                                     ["/api_login.php", "/api_casillero.php"])

    def test_compression_is_named_with_the_exchange(self):
        with Server({P: packed(LISTING)}) as server:
            report = self.json(server, status=0)
        self.assertEqual(report["findings"], [])
        exchange = report["exchanges"][1]
        self.assertEqual((exchange["headers"]["content-encoding"], exchange["bytes"], exchange["status"]),
                         ("gzip", len(body(LISTING)), 200))

    def test_silence_is_named_with_how_long_the_app_waits(self):
        with Server({C: silent()}) as server:
            report = self.check(server, "--timeout", "1", status=1)
        self.assertEqual(faults(report), [
            f"{C}: time: no byte moved for 1 second; the app waits 60 seconds without showing progress"])

    def test_nobody_there_is_a_status_of_its_own(self):
        with Server() as server:
            port = server.port
        report = self.check(f"http://127.0.0.1:{port}/", "--write", status=2)
        self.assertIn("\nThe server is not reachable.\n", report)
        self.assertEqual(faults(report), ["api_login.php: connection: Connection refused"])
        # Without a network, so that nobody is asked for the name.
        report = self.check("https://nobody.invalid/", status=2, prefix=apart("--net"))
        self.assertRegex(faults(report)[0], "^api_login.php: connection: .*nobody.invalid.*not found")

    def test_server_that_dies_later_is_a_fault(self):
        with Server() as server:
            def last(_):
                server.close()
                return LISTING
            server.replies[P] = last
            report = self.check(server, status=1)
        self.assertEqual(faults(report), [f"{C}: connection: Connection refused"])

    def test_password_in_a_reply_is_not_printed(self):
        message = "Clave Muy-Secreta#1 mala"
        with Server({"api_login.php": {"status": "error", "message": message}}) as server:
            self.assertIn('"Clave (hidden) mala"', self.check(server, status=2))
            self.assertNotIn("Muy-Secreta", json.dumps(self.json(server, status=2)))

    def test_server_cannot_command_the_terminal(self):
        evil = "\x1b]0;x\x07\x9b31m\u202e\u2066\r\n\u2028\x7f"
        clean = r"\u001b]0;x\u0007\u009b31m\u202e\u2066\u000d\u000a\u2028\u007f"
        with Server({
            "api_login.php": {**LOGIN, "nombre": evil, evil: 1},
            P: Reply({"paquetes": [{"tracking": evil, evil: 1}], "cotizaciones": []}, "302 Found",
                     ["Location: /\x1b[31m", "Set-Cookie: \x1b[2J"]),
            C: {"nombreCompleto": evil, "status": evil},
        }) as server:
            for report in (self.check(server, status=0), self.check(server, "--json", status=0)):
                self.assertEqual([each for each in report if each != "\n" and not each.isprintable()], [])
            report = self.json(server, status=0)
        self.assertIn(f"Hola, {clean}", json.dumps(report, ensure_ascii=False).replace("\\\\", "\\"))
        self.assertIn(f"paquetes[].{clean}", [each["place"] for each in report["findings"]])


class TlsTest(ProgramTest):
    """A certificate authority of our own, which the program trusts where a name space for it is granted."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="marovenda-check-")
        cls.path = pathlib.Path(cls.folder.name)
        cls.maker = Maker(cls.path)
        cls.maker.make("Prueba", part="root")
        trusted = cls.path / "certs"
        trusted.mkdir()
        (trusted / "Prueba.crt").write_bytes((cls.path / "Prueba.crt").read_bytes())
        cls.maker.openssl("rehash", "certs")
        cls.trusting = [*apart("--mount"), "sh", "-c",
                        f'mount --bind {trusted} /etc/ssl/certs && exec "$@"', "sh"]

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def certificate(self, days):
        until = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(days=days, hours=1)
        self.maker.make("localhost", "Prueba", valid=("20200101000000Z", f"{until:%Y%m%d%H%M%SZ}"))
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.path / "localhost.pem")
        return context

    def test_good_certificate_is_described(self):
        with Server(tls=self.certificate(300)) as server:
            report = self.trusted(server, status=0)
        self.assertEqual(report["findings"], [])
        tls = report["exchanges"][0]["tls"]
        self.assertEqual((tls["protocol"], tls["subject"], tls["issuer"]), ("TLS 1.3", "localhost", "Prueba"))

    def test_certificate_that_soon_expires_is_a_warning(self):
        with Server(tls=self.certificate(5)) as server:
            report = self.trusted(server, status=0)
        self.assertEqual([each["what"] for each in report["findings"]],
                         ["the certificate expires in 5 days; the app refuses it then"])

    def test_unknown_authority_is_refused(self):
        with Server(tls=self.certificate(300)) as server:
            report = self.json(server, status=1)
            self.assertEqual(server.requests, [])
        self.assertEqual([each["place"] for each in report["findings"]], ["TLS"])
        self.assertEqual(report["exchanges"][0]["tls"]["issuer"], "Prueba")

    def test_server_without_tls_is_a_fault(self):
        with Server() as server:
            server.answer = lambda connection: connection.sendall(b"HTTP/1.1 400 Bad Request\r\n\r\n")
            report = self.check(server.base.replace("http", "https"), status=1)
        self.assertRegex(faults(report)[0], "^TLS: .*(wrong version number|packet length too long|record layer)")

    def trusted(self, server, status):
        return self.json(server, status=status, prefix=self.trusting)


if __name__ == "__main__":
    unittest.main()
