"""Each way in which a connection and what is around a reply's body can be wrong is named."""

import base64
import datetime
import gzip
import html
import json
import pathlib
import re
import ssl
import sys
import tempfile
import unicodedata
import unittest
from html.entities import codepoint2name
from urllib.parse import quote, quote_plus

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "hard" / "tls")]
from certificates import FUTURE, PAST, Maker
from namespaces import apart
from program import ProgramTest, faults, notes, warnings
from server import LISTING, LOGIN, Reply, Server, body, packed, silent

P, C = "api_paquetes.php", "api_casillero.php"
HTML = b"<html>502</html>"
WAIT = ("The server had too many requests: wait, and check again. The app does not wait: it ignores Retry-After, and sends a "
        "request for each press.")
TOO_LARGE = ("Allow larger requests: a photo of 64 MiB is a body of 87 MiB (nginx: client_max_body_size 192m; PHP: "
             "post_max_size = 192M).")
HTML_FAULT = 'line 1, byte 0: an HTML page, not JSON: "<html>502</html>"'

FAULTS = [
    (Reply(b""), ["HTTP 200: an empty body"]),
    (Reply(HTML, "502 Bad Gateway", type="text/html"), [HTML_FAULT, "HTTP 502: with a body that is not the reply"]),
    (Reply(b"", "302 Found", ["Location: https://elsewhere.example/a"]),
     ['HTTP 302: redirects to "https://elsewhere.example/a", which the app does not follow']),
    (Reply(b"", "401 Unauthorized", ['WWW-Authenticate: Basic realm="x"']),
     ["HTTP 401: asks for credentials that the app does not have"]),
    (Reply(b"<p>Log in</p>", "401 Unauthorized"),
     ['line 1, byte 0: an HTML page, not JSON: "<p>Log in</p>"', "HTTP 401: with a body that is not the reply"],
     "Look into the server's error log; answer with JSON, errors too."),
    (Reply(HTML, "429 Too Many Requests", ["Retry-After: 30"]),
     [HTML_FAULT, 'HTTP 429: with a body that is not the reply (Retry-After: "30")'], WAIT),
    (Reply(b"", "413 Content Too Large"), ["HTTP 413: an empty body"],
     TOO_LARGE),
    (Reply(b'<!DOCTYPE html><title>Just a moment...</title><p>Wait</p>',
           "403 Forbidden"),
     ['line 1, byte 0: the challenge page of a CDN or firewall, not JSON: "<!DOCTYPE html><title>Just a moment...</…"',
      "HTTP 403: with a body that is not the reply"],
     "Exempt the app's endpoints from the challenge: the app is no browser and cannot pass it."),
    (Reply(gzip.compress(body(LISTING))),
     ["line 1, byte 0: compressed with gzip, without a header that says so"],
     'Send "Content-Encoding: gzip" with it, or let the web server compress.'),
    (Reply(raw=b""), ["connection: no HTTP reply: Connection closed"]),
    (Reply(b'{"paquetes":[', length=1000),
     ["line 1, byte 13: the document is incomplete", "connection: broke after 13 bytes of 1000 announced: Connection closed"]),
    (Reply(raw=b"HTTP/1.1 200 OK\r\nContent-Length: 1000000000\r\n\r\n{"),
     ["size: more than 64 MiB of body, which the app drops"]),
    (Reply(b"no gzip at all", headers=["Content-Encoding: gzip"]), ["connection: the reply is lost: Decompression failed"]),
]

WARNINGS = [
    (Reply(LISTING, "500 Error"), ["HTTP 500: has no effect: the app reads the body, whatever the status is"]),
    (Reply(LISTING, "401 Unauthorized"), ["HTTP 401: has no effect: the app reads the body, whatever the status is"],
     "After the sign-in the app sends no cookie, token or password, only the customer's number: answer for that number."),
    (Reply(LISTING, "413 Content Too Large"), ["HTTP 413: has no effect: the app reads the body, whatever the status is"],
     TOO_LARGE),
    (Reply(LISTING, "503 Busy", ["Retry-After: 9"]),
     ['HTTP 503: has no effect: the app reads the body, whatever the status is (Retry-After: "9")'],
     "See why the server is not ready: maintenance, or an error in its log. Then check again."),
    (Reply(LISTING, "429 Too Many Requests"),
     ["HTTP 429: has no effect: the app reads the body, whatever the status is (no Retry-After)"], WAIT),
    (Reply(LISTING, "302 Found", ["Location: /x"]), ['HTTP 302: redirects to "/x", which the app does not follow']),
    (Reply(LISTING, type="application/json; charset=ISO-8859-1"),
     ['Content-Type: "application/json; charset=iso-8859-1": the charset is ignored, the body is read as UTF-8']),
    (Reply(LISTING, length=len(body(LISTING)) + 9), [f"connection: broke after {len(body(LISTING))} bytes of"]),
    (Reply({**LISTING, "x": "Muy-Secreta#1"}), ["the reply: contains the customer's password"]),
]

NOTES = [
    # Legal: the body ends where the connection does.
    (Reply(raw=b"HTTP/1.1 200 OK\r\nContent-Type: text/json\r\n\r\n" + body(LISTING)),
     ['Content-Type: "text/json", ignored by the app']),
    (Reply(raw=b"HTTP/1.0 200 OK\r\nContent-Type: text/json\r\n\r\n" + body(LISTING)),
     ['Content-Type: "text/json", ignored by the app']),
    (Reply(LISTING, type="text/html; charset=utf-8"), ['Content-Type: "text/html; charset=utf-8", ignored by the app']),
    (Reply(LISTING, type=None), ["Content-Type: absent, ignored by the app"]),
    (Reply(LISTING, headers=["Set-Cookie: a=b"]), ["Set-Cookie: the app neither keeps nor sends cookies"]),
    (Reply({**LISTING, "status": "success" + " " * 300_000}), ["size: 3"]),
]


def encodings(password):
    """What a server may make of a password that it sends back."""
    octets = password.encode()
    yield password
    yield from (password.upper(), octets.decode("latin-1"), unicodedata.normalize("NFD", password))
    yield from (quote(password), quote(password, safe=""), quote_plus(password), quote(quote(password)))
    yield "".join(f"%{octet:02x}" for octet in octets)
    yield from (html.escape(password), html.escape(html.escape(password)))
    yield "".join(f"&{codepoint2name[ord(each)]};" if ord(each) in codepoint2name else each for each in password)
    yield from ("".join(f"&#{ord(each)};" for each in password), "".join(f"&#x{ord(each):04X};" for each in password))
    yield from (json.dumps(password)[1:-1], json.dumps(json.dumps(password)), json.dumps(password)[1:-1].replace("/", "\\/"))
    yield "".join(f"\\u{ord(each):04X}" if ord(each) < 0x10000 else each for each in password)
    yield from (octets.hex(), octets.hex().upper(), octets.hex(" "), "".join(f"\\x{octet:02x}" for octet in octets))
    for before in (b"", b"a:", b"ab:"):
        for coded in (base64.b64encode, base64.urlsafe_b64encode):
            yield coded(before + octets).decode()
            yield coded(before + octets + b" and more").decode()


class TransportTest(ProgramTest):
    def test_each_finding_is_named(self):
        for table, severity, status in ((FAULTS, faults, 1), (WARNINGS, warnings, 0), (NOTES, notes, 0)):
            for reply, expected, *remedies in table:
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
                                     ["/api_login.php", "/api_casillero.php", "/api_login.php"])
                    for line in remedies:
                        self.assertIn(f"      → {line}\n", report)

    def test_error_that_reads_as_a_listing_without_rows_is_a_fault(self):
        for status in ("401 Unauthorized", "429 Too Many Requests", "503 Service Unavailable"):
            with Server({P: Reply({"error": "No"}, status)}) as server:
                report = self.check(server, status=1)
            self.assertEqual(faults(report), [
                f'{P}: paquetes: absent or null, shown as "0 Paquetes" and a blank list',
                f'{P}: cotizaciones: absent or null, shown as "0 Cotizaciones" and "No tienes cotizaciones registradas."'])
            self.assertIn(f"{P}: HTTP {status[:3]}: has no effect: ", "\n".join(warnings(report)))

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

    def test_password_is_not_printed_in_any_encoding(self):
        password = "Añ \"b/\\<&'+% é€😀#Z9"
        variants = list(encodings(password))
        # A key is printed as a place, a text with HTML in quotation marks, cut off after 30 characters.
        keys = {f"{number}|{each}|": 1 for number, each in enumerate(variants)}
        rows = [{"tracking": "<b>" + "x" * length + password, "estado": password} for length in range(30)]
        login = {**LOGIN, "nombre": variants[1], "message": variants[4]}
        with Server({"api_login.php": login, P: {**LISTING, **keys, "paquetes": rows}}) as server:
            report = self.json(server, status=0, MAROVENDA_CHECK_PASSWORD=password)
            text = self.check(server, status=0, MAROVENDA_CHECK_PASSWORD=password)
        places = [each["place"] for each in report["findings"]]
        for number, each in enumerate(variants):
            with self.subTest(each):
                # Of base64, what is not of the password may stay.
                self.assertRegex("\n".join(places), rf'(?m)^{number}\|[\w=\\"]*\(hidden\)[\w=\\"]*\|$')
                self.assertNotIn(each, text)
        for each in report["findings"]:
            if "contains HTML" in each["what"]:
                self.assertRegex(each["what"], r'"<b>x*(A|Añ|\(hidden\))?…?"$')

    def test_long_and_odd_passwords_are_not_printed(self):
        for password in ("é" * 2000, '😀"}]' * 30, "\\/" * 1000, "a \t  b<&>", "1234"):
            shown = [password, base64.b64encode(b"ab:" + password.encode()).decode(), password.encode().hex(),
                     "".join(f"&#{ord(each)};" for each in password)]
            # Cut in two by what seems to be the end of the JSON.
            replies = {"api_login.php": {**LOGIN, **{"K" + each: 1 for each in shown}}, C: b'"' + password.encode()}
            with Server(replies) as server:
                report = self.json(server, status=1, MAROVENDA_CHECK_PASSWORD=password)
            for place in (each["place"] for each in report["findings"] if each["place"].startswith("K")):
                self.assertRegex(place, r"^K(dT|YWI6)?\(hidden\)=*$")
            for finding in report["findings"]:
                self.assertNotIn(password[len(password) // 2:], finding["place"] + finding["what"])

    def test_server_cannot_command_the_terminal(self):
        evil = "\x1b]0;x\x07\x9b31m\u202e\u2066\r\n\u2028\x7f"
        clean = r"\u001b]0;x\u0007\u009b31m\u202e\u2066\u000d\u000a\u2028\u007f"
        with Server({
            "api_login.php": {**LOGIN, "nombre": evil, evil: 1},
            P: Reply({"paquetes": [{"tracking": evil, evil: 1}], "cotizaciones": [{"origen": evil}]}, "302 Found",
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
        return self.context("localhost")

    def context(self, name):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.set_ciphers("DEFAULT@SECLEVEL=0")
        context.load_cert_chain(self.path / f"{name}.pem")
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

    def test_refused_certificates_are_named_with_what_they_lack(self):
        self.maker.make("Otra", part="root")
        self.maker.make("Intermedia", "Prueba", part="root")
        self.maker.make("Vieja", "Prueba", part="root", valid=PAST)
        append = ("The server does not send it, and this machine does not know it: append it to the server's certificate "
                  "file (certbot: fullchain.pem).")
        authority = "Serve a certificate of an authority that phones trust, for example Let's Encrypt."
        renew = "Renew it, and let the web server load the new one."
        strong = "Serve a certificate with an RSA key of 2048 bits or more, or an EC key, signed with SHA-256."
        good = "valid 2020-01-01 to 2080-01-01"
        for made, line, remedy in [
                ({"signer": "Intermedia"}, f'"api" by "Intermedia", {good}, lacks the certificate of its issuer "Intermedia"',
                 append),
                ({"signer": "Otra"}, f'"api" by "Otra", {good}, lacks the certificate of its issuer "Otra"', append),
                ({"signer": "Otra", "above": ["Otra"]},
                 f'"Otra" by "Otra", {good}, is signed by itself, and not trusted by this machine', authority),
                ({}, f'"api" by "api", {good}, is signed by itself, and not trusted by this machine', authority),
                ({"signer": "Prueba", "valid": PAST}, '"api" by "Prueba", valid 2010-01-01 to 2011-01-01, has expired',
                 renew),
                ({"signer": "Vieja", "above": ["Vieja"]},
                 '"Vieja" by "Prueba", valid 2010-01-01 to 2011-01-01, has expired', renew),
                ({"signer": "Prueba", "valid": FUTURE},
                 '"api" by "Prueba", valid 2090-01-01 to 2091-01-01, is not valid yet',
                 "Wait, or correct the clock of this machine."),
                ({"signer": "Prueba", "names": "DNS:elsewhere.example,DNS:www.elsewhere.example"},
                 f'"api" by "Prueba", {good}, is for "elsewhere.example", "www.elsewhere.example", not for "localhost"',
                 "Serve a certificate for the address that the app uses."),
                ({"signer": "Prueba", "key": ("rsa", "rsa_keygen_bits:1024")},
                 f'"api" by "Prueba", {good}, has a key of 1024 bits', strong),
                ({"signer": "Prueba", "digest": "sha1"}, f'"api" by "Prueba", {good}, is signed with SHA1', strong),
                ({"signer": "Prueba", "part": "client"},
                 f'"api" by "Prueba", {good}, is refused: The supplied certificate is unsuitable for this purpose',
                 "Serve a certificate for this server, with its intermediate certificates."),
        ]:
            with self.subTest(line):
                self.maker.make("api", **made)
                with Server(tls=self.context("api")) as server:
                    report = self.check(server, status=1, prefix=self.trusting)
                    self.assertEqual(server.requests, [])
                self.assertEqual(faults(report), [f"TLS: the certificate of {line}"])
                self.assertIn(f"      → {remedy}\n", report)

    def test_server_without_tls_is_a_fault(self):
        with Server() as server:
            server.answer = lambda connection: connection.sendall(b"HTTP/1.1 400 Bad Request\r\n\r\n")
            report = self.check(server.base.replace("http", "https"), status=1)
        self.assertRegex(faults(report)[0], "^TLS: .*(wrong version number|packet length too long|record layer)")

    def trusted(self, server, status):
        return self.json(server, status=status, prefix=self.trusting)


if __name__ == "__main__":
    unittest.main()
