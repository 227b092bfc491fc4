"""Each mistake that the records and the screens' rules allow is named with its place; a good server has none."""

import copy
import json
import unittest

from program import ProgramTest, faults, notes, screens, warnings
from server import CASILLERO, DONE, LISTING, LOGIN, PAQUETES, Reply, Server, body


def without(record, key):
    return {name: value for name, value in record.items() if name != key}


def row(list_name, index, **changes):
    """The listing with changes in a row; absent where a change is `...`."""
    listing = copy.deepcopy(LISTING)
    for name, value in changes.items():
        if value is ...:
            del listing[list_name][index][name]
        else:
            listing[list_name][index][name] = value
    return listing


L, P, C = "api_login.php", "api_paquetes.php", "api_casillero.php"
ONCE = "Encode the whole reply once (PHP: one json_encode)."
ALWAYS = "Send a list always, also with an error status: [] for a customer who has nothing."
CORRECT = "Correct the error; the server's error log has it in full. Set display_errors to off."
OUTSIDE = "Outside texts, JSON allows blanks, tabs and line breaks only."

# What a server says wrongly, the one fault of the report, and how to fix it where it was said wrongly once.
FAULTS = [
    # types
    (L, {**LOGIN, "id": 42}, "id: number, must be text"),
    (L, [LOGIN], "the reply: array, must be object",
     "Send the object itself, without a list around it. PHP writes an empty array as []: use (object)[]."),
    (P, b"false", "the reply: boolean, must be object",
     "Send a JSON object. PHP prints null for a variable that is not set, and nothing or false for a text that is not "
     "UTF-8."),
    (P, json.dumps(LISTING), "the reply: text, must be object: it is JSON that was encoded twice", ONCE),
    (P, {**LISTING, "paquetes": json.dumps(PAQUETES)},
     "paquetes: text, must be array: it is JSON that was encoded twice", ONCE),
    (P, {**LISTING, "paquetes": "ninguno"}, "paquetes: text, must be array", "Send a JSON array, [] for no rows."),
    (P, {**LISTING, "paquetes": {"0": {}}}, "paquetes: object, must be array",
     "Send a JSON array, [] for no rows. PHP writes an array with gaps or names as an object: use array_values."),
    (P, row("paquetes", 17, tracking=123), "paquetes[17].tracking: number, must be text",
     'Send it as a JSON string, as in "42" (PHP: (string)$value), or null for none.'),
    (P, row("paquetes", 17, estado=True), "paquetes[17].estado: boolean, must be text",
     'Send a text that says it (a "status" is "success" or "error"), or null for none.'),
    (P, row("paquetes", 17, estado=["a"]), "paquetes[17].estado: array, must be text",
     'Send one text, for example the parts joined (PHP: implode(", ", $list)), or null for none.'),
    (P, row("paquetes", 17, estado={"name": "a"}), "paquetes[17].estado: object, must be text",
     'Send one text, for example one field of the object (PHP: $value["name"]), or null for none.'),
    (P, {**LISTING, "paquetes": [*PAQUETES, None]}, "paquetes[20]: null, must be object",
     "Leave the row out (PHP: array_values(array_filter($rows))); each row is an object."),
    (P, {**LISTING, "paquetes": [*PAQUETES, ["MRV-1", "Caja"]]}, "paquetes[20]: array, must be object",
     "Send each row as an object with keys (PHP: PDO::FETCH_ASSOC or mysqli_fetch_assoc, no numbered columns)."),
    (P, {**LISTING, "paquetes": [*PAQUETES, "MRV-1"]}, "paquetes[20]: text, must be object",
     'Send each row as an object with keys: {"tracking": "…"}.'),
    # lists
    (P, without(LISTING, "paquetes"), 'paquetes: absent or null, shown as "0 Paquetes" and a blank list', ALWAYS),
    (P, {**LISTING, "cotizaciones": None},
     'cotizaciones: absent or null, shown as "0 Cotizaciones" and "No tienes cotizaciones registradas."', ALWAYS),
    (P, {**LISTING, "paquetes": []}, 'paquetes: empty, shown as "0 Paquetes" and a blank list',
     "Check with a test customer who has some, or with --empty if this one has nothing."),
    (P, {**LISTING, "paquetes": [{name.upper(): value for name, value in each.items()} for each in PAQUETES]},
     "paquetes: no row has a key that the app reads",
     "Write the keys as the app does; letter case and underscores count."),
    # documents
    (P, b"<br />\n<b>Warning</b>: x in y.php\n" + b'{"paquetes":[]}',
     'line 1, byte 0: text before the JSON: "<br /> <b>Warning</b>: x in y.php {"paqu…"'),
    (P, b'\n\n  Notice {"paquetes":[]}', 'line 3, byte 2: text before the JSON: "Notice {"paquetes":[]}"'),
    (P, b'{"paquetes":[]}\n<!-- 3 ms -->', 'line 2, byte 0: text after the JSON: "<!-- 3 ms -->"'),
    (P, b"<!DOCTYPE html>\n<html></html>",
     'line 1, byte 0: an HTML page, not JSON: "<!DOCTYPE html> <html></html>"'),
    (P, b" \n ", "line 1, byte 0: only blanks"),
    (P, b'{"paquetes":[{"tracking":"A"},', "line 1, byte 30: the document is incomplete"),
    (P, b'{"paquetes":[{"tracking":"\xd1"}]}', "line 1, byte 26: byte 0xd1 is not UTF-8"),
    (P, b"<br />\n<b>Fatal error</b>: Uncaught Error in y.php:3",
     'line 1, byte 0: an error message of PHP, not JSON: "<br /> <b>Fatal error</b>: Uncaught Erro…"', CORRECT),
    (P, b"PHP Parse error:  syntax error in y.php:3",
     'line 1, byte 0: an error message of PHP, not JSON: "PHP Parse error: syntax error in y.php:3"', CORRECT),
    (P, b"Warning: a is b in /srv/y.php on line 3",
     'line 1, byte 0: an error message of PHP, not JSON: "Warning: a is b in /srv/y.php on line 3"', CORRECT),
    (P, b"Warning: no service", 'line 1, byte 0: "W" instead of a value'),
    (P, b"<?php\n$a = 1;", 'line 1, byte 0: the source of a PHP file, not JSON: "<?php $a = 1;"',
     "The web server does not run PHP for this file: enable PHP (PHP-FPM, for example). Anybody can read such files: "
     "change the passwords in them."),
    (P, b'<?xml version="1.0"?><r/>', 'line 1, byte 0: XML, not JSON: "<?xml version="1.0"?><r/>"',
     "Answer with JSON (PHP: json_encode); the app does not read XML."),
    (P, b'<?xml version="1.0"?><!DOCTYPE html><html/>',
     'line 1, byte 0: an HTML page, not JSON: "<?xml version="1.0"?><!DOCTYPE html><htm…"'),
    (P, b"[{}", "line 1, byte 3: the document is incomplete"),
    (P, b"['a', {}", 'line 1, byte 1: "\'" instead of a value'),
    (P, b'[error] {"paquetes":[]}', 'line 1, byte 0: text before the JSON: "[error] {"paquetes":[]}"'),
    (P, b'\x0b{"paquetes":[]}', "line 1, byte 0: byte 0x0b instead of a value", OUTSIDE),
    (P, b'{"paquetes":[],\x0b"a":1}', "line 1, byte 15: byte 0x0b instead of a key in double quotes", OUTSIDE),
    (P, b'{"paquetes":[]\x0b,"a":1}', 'line 1, byte 14: byte 0x0b instead of "," or "}"', OUTSIDE),
    (P, b'{"paquetes":[]}\x0b', "line 1, byte 15: byte 0x0b after the JSON", OUTSIDE),
    (P, b"\x0b", "line 1, byte 0: byte 0x0b instead of a value", OUTSIDE),
    (P, b'{"paquetes":[],}', 'line 1, byte 14: a comma before "}"'),
    (P, b'{"paquetes":[{},\n {},\n]}', 'line 2, byte 3: a comma before "]"'),
    (P, b"{'paquetes':[]}", 'line 1, byte 1: "\'" instead of a key in double quotes'),
    (P, b'{"paquetes":[],"x":NaN}', 'line 1, byte 19: "N" instead of a value'),
    (P, b'{"paquetes":[],"x":007}', "line 1, byte 19: a number that begins with 0"),
    (P, b'{"paquetes":[],"x":1e999}', "line 1, byte 19: a number too large for the app"),
    (P, b'{"paquetes":[],"x":' + b"[" * 1100 + b"]" * 1100 + b"}",
     "line 1, byte 1041: nested deeper than the app reads"),
    (P, b'{"paquetes":[{"tracking":"a\nb"}]}', "line 1, byte 27: byte 0x0a in a text must be escaped"),
    (P, b'{"paquetes":[{"tracking":"a\\qb"}]}', 'line 1, byte 27: "\\" before "q" is not a valid escape'),
    (P, b'{"paquetes":[{"tracking":"\\ud83d"}]}', 'line 1, byte 26: "\\ud83d" is a lone surrogate'),
    (P, b'{"paquetes" []}', 'line 1, byte 12: "[" instead of ":"'),
    (P, b'{"paquetes":[] "x":1}', 'line 1, byte 15: """ instead of "," or "}"'),
    (P, b"\xef\xbb\xbf" * 2 + b'{"paquetes":[]}', "line 1, byte 3: a second byte-order mark"),
    (P, '{"paquetes":[]}'.encode("utf-16"), "line 1, byte 0: UTF-16 text, must be UTF-8"),
    # rules
    (L, without(LOGIN, "id"), "id: absent, signs nobody in"),
    (L, {**LOGIN, "status": "Success"}, 'status: "Success" counts as a failure'),
    (L, without(LOGIN, "status"), "status: absent, which counts as a failure"),
    (C, without(CASILLERO, "nombreCompleto"), 'nombreCompleto: absent, shown as "Error"'),
    (C, {"status": "error", "message": "No hay"},
     'nombreCompleto: absent, shown as "Error" instead of the message "No hay"'),
]

# What the app bears, and how the report names it.
WARNINGS = [
    (L, without(LOGIN, "nombre"), 'nombre: absent, so that the greeting is "Hola, "'),
    (L, {**LOGIN, "nombre": " "}, 'nombre: empty, so that the greeting is "Hola, "'),
    (L, {**LOGIN, "id": "-7"}, 'id: "-7", a negative number, signs in'),
    (P, row("paquetes", 5, tracking=...),
     'paquetes[5].tracking: absent, shown as "N/A"; a tap on the row opens nothing'),
    (P, row("paquetes", 5, tracking=""), "paquetes[5].tracking: empty, shown as nothing"),
    (P, {**without(LISTING, "paquetes"), "paquetes": LISTING["paquetes"], "Paquetes": []},
     'Paquetes: ignored by the app, which reads "paquetes"'),
    (C, {**CASILLERO, "nombre_completo": "x"}, 'nombre_completo: ignored by the app, which reads "nombreCompleto"'),
    (L, {**without(LOGIN, "nombre"), "name": "Ana"}, 'name: ignored by the app, which reads "nombre"'),
    (C, {"nombreCompleto": "Ana", "data": CASILLERO}, 'data: ignored by the app, which reads "status" one level up',
     'Send these keys beside "status", not inside another key.'),
    (P, b'{"paquetes":[],"paquetes":[{"tracking":"A","tracking":"B"}],"cotizaciones":[{"origen":"A"}]}',
     "paquetes: duplicate key; the last one counts"),
    (P, row("paquetes", 1, descripcion="ni\ufffdo"),
     "paquetes[1].descripcion: contains U+FFFD, which replaces a lost character"),
    (P, row("paquetes", 1, descripcion="niÃ±o"), 'paquetes[1].descripcion: looks like UTF-8 encoded twice: "niÃ±o"'),
    (P, row("paquetes", 1, descripcion="ni&ntilde;o"),
     'paquetes[1].descripcion: contains an HTML entity, which the app does not decode: "ni&ntilde;o"'),
]

NOTES = [
    (L, {**LOGIN, "token": "x"}, "token: ignored by the app"),
    (L, {**LOGIN, "user": LOGIN, "name": "Ana"}, "user: ignored by the app"),
    (L, {**LOGIN, "id": "+42"}, 'id: "+42" signs in as 42'),
    (P, row("paquetes", 5, descripcion=...), 'paquetes[5].descripcion: absent, shown as "Sin descripción"'),
    (P, row("paquetes", 5, estado=None), 'paquetes[5].estado: absent, shown as "RECIBIDO"'),
    (P, row("paquetes", 5, tracking="N/A"), 'paquetes[5].tracking: "N/A": a tap on the row opens nothing'),
    (P, row("cotizaciones", 1, origen=...), 'cotizaciones[1].origen: absent, shown as "N/A"'),
    (P, row("cotizaciones", 1, descripcion=...),
     'cotizaciones[1].descripcion: absent, shown as "Sin descripción" or "Cotización"'),
    (P, row("cotizaciones", 1, estado=...), 'cotizaciones[1].estado: absent, shown as "PENDIENTE"'),
    (P, row("paquetes", 5, tracking="MRV-2"),
     'paquetes[2, 5].tracking: these rows share the number "MRV-2"; each is shown'),
    (P, {**LISTING, "paquetes": [{**each, "id_interno": 1} for each in LISTING["paquetes"]]},
     "paquetes[0, 1, 2, 3, 4, 5 and 14 more].id_interno: ignored by the app"),
    (P, {**LISTING, "status": "error"}, 'status: "error", which these screens ignore'),
    (P, row("paquetes", 1, descripcion="<b>Caja</b>"),
     'paquetes[1].descripcion: contains HTML, which the app shows as it stands: "<b>Caja</b>"'),
    (P, b"\xef\xbb\xbf" + body(LISTING), "line 1, byte 0: a byte-order mark before the JSON, which the app skips"),
    (C, b" \n" + body(CASILLERO), "line 1, byte 0: blanks before the JSON, which the app skips"),
    (C, body(CASILLERO) + b"\n\n", "line 1, byte 61: blanks after the JSON, which the app skips"),
    (P, {**LISTING, "avatar": "A" * 100_000}, "avatar: 100000 characters in each listing, which no screen uses"),
    (C, without(CASILLERO, "status"), "status: absent, which this screen ignores"),
]


class RecordsTest(ProgramTest):
    def report(self, endpoint, reply, status):
        with Server({endpoint: reply}) as server:
            return self.check(server, status=status)

    def test_good_server_has_nothing_wrong(self):
        with Server() as server:
            report = self.check(server, "--write", status=0)
        # Only the quotation that was sent is missing from a listing that never changes.
        self.assertEqual(faults(report), [])
        self.assertEqual(notes(report), [f"{P}: after api_perfil.php: the listing has no avatar"])
        self.assertEqual(warnings(report), ["api_paquetes.php: after api_cotizar.php: the quotation is not in the listing"])
        self.assertIn("\nThe app would work: 1 warning, 1 note.\n", report)

    def test_each_finding_is_named_with_its_place(self):
        for table, severity, status in ((FAULTS, faults, 1), (WARNINGS, warnings, 0), (NOTES, notes, 0)):
            for endpoint, reply, line, *remedies in table:
                with self.subTest(line):
                    report = self.report(endpoint, reply, status)
                    self.assertIn(f"{endpoint}: {line}", severity(report))
                    for remedy in remedies:
                        self.assertIn(f"      → {remedy}\n", report)
                    # Nothing worse is said of it.
                    self.assertEqual(len(faults(report)), status)
                    if severity is notes:
                        self.assertEqual(warnings(report), [])

    def test_all_of_a_refused_reply_is_looked_at(self):
        listing = copy.deepcopy(LISTING)
        for index in (3, 4, 5, 6, 7, 8, 9, 10):
            listing["paquetes"][index]["tracking"] = index
        listing["paquetes"][3]["id_interno"] = 1
        listing["paquetes"][11]["estado"] = []
        listing["paquetes"][12] = "?"
        del listing["paquetes"][13]["tracking"]
        listing["paquetes"][14]["tracking"] = "MRV-1"
        listing["cotizaciones"][0]["origen"] = {}
        listing["avatar"] = 5
        report = self.report(P, listing, 1)
        self.assertEqual(faults(report), [f"{P}: {line}" for line in [
            "avatar: number, must be text",
            "paquetes[3, 4, 5, 6, 7, 8 and 2 more].tracking: number, must be text",
            "paquetes[11].estado: array, must be text",
            "paquetes[12]: text, must be object",
            "cotizaciones[0].origen: object, must be text",
        ]])
        self.assertEqual(warnings(report),
                         [f'{P}: paquetes[13].tracking: absent, shown as "N/A"; a tap on the row opens nothing'])
        self.assertEqual(notes(report), [
            f"{P}: paquetes[3].id_interno: ignored by the app",
            f'{P}: paquetes[1, 14].tracking: these rows share the number "MRV-1"; each is shown'])

    def test_number_for_an_id_still_lets_the_rest_be_looked_at(self):
        with Server({L: {**LOGIN, "id": 42}, P: row("paquetes", 0, tracking=1)}) as server:
            report = self.check(server, status=1)
            self.assertEqual(server.paths(),
                             ["/api_login.php", "/api_paquetes.php?user_id=42", "/api_casillero.php", "/api_login.php"])
        self.assertEqual(faults(report), [f"{L}: id: number, must be text",
                                          f"{P}: paquetes[0].tracking: number, must be text"])
        self.assertIn("(for customer 42, once the sign-in works)", report)

    def test_nobody_signed_in_is_asked_about_only_when_told(self):
        with Server({L: without(LOGIN, "id")}) as server:
            self.check(server, "--write", status=1)
            self.assertEqual(server.paths(),
                             ["/api_login.php", "/api_recuperar.php", "/api_registro.php"])
            server.requests.clear()
            report = self.json(server, "--id", "-3", status=1)
            self.assertEqual(server.paths()[1], "/api_paquetes.php?user_id=-3")
            self.assertEqual(server.requests[2].body, b'{"user_id":"-3"}')
        self.assertEqual(screens(report)["Iniciar Sesión"]["remark"], "the form stays, without a message")

    def test_refused_customer_is_no_fault_of_the_app(self):
        with Server({L: {"status": "error", "message": "Correo o contraseña incorrectos"}}) as server:
            report = self.check(server, "--write", status=2)
            self.assertEqual(len(server.requests), 1)
        self.assertIn("\nThe service refuses the test customer: check e-mail and password.", report)
        self.assertIn('fails      Iniciar Sesión: "Correo o contraseña incorrectos"', report)
        with Server({L: {"status": "error"}}) as server:
            report = self.check(server, status=2)
        self.assertEqual(warnings(report), [f'{L}: message: absent: the customer sees "Error de credenciales"'])

    def test_service_that_signs_nobody_in_now_is_not_about_the_password(self):
        for status in ("503 Service Unavailable", "429 Too Many Requests"):
            with Server({L: Reply({"status": "error", "message": "Mantenimiento"}, status)}) as server:
                self.assertIn(f"\nThe service signs nobody in now (HTTP {status[:3]}): check again later. ",
                              self.check(server, status=2))

    def test_customer_who_has_nothing(self):
        with Server({P: {**LISTING, "paquetes": [], "cotizaciones": []}}) as server:
            self.assertEqual(len(faults(self.check(server, status=1))), 2)
            self.assertEqual(self.json(server, "--empty", status=0)["findings"], [])
        with Server({P: {"status": "success"}}) as server:
            self.assertEqual(len(faults(self.check(server, "--empty", status=1))), 2)

    def test_service_that_accepts_any_password(self):
        for right, wrong in ((LOGIN, LOGIN), ({**LOGIN, "id": 42}, {**LOGIN, "id": 42})):
            with Server({L: right}, wrong=wrong) as server:
                self.assertIn(f"{L}: a wrong password: accepted: whoever knows a customer's e-mail signs in",
                              faults(self.check(server, status=1)))
                self.assertEqual(server.paths()[-1], "/api_login.php")
        for wrong, trouble in ((b"<p>No</p>", 'line 1, byte 0: an HTML page, not JSON: "<p>No</p>"'),
                               ({"status": "error", "message": 3}, "message: number, must be text"),
                               (Reply(b"", "401 Unauthorized"), "HTTP 401: an empty body")):
            with Server(wrong=wrong) as server:
                report = self.check(server, status=0)
            self.assertEqual(warnings(report), [
                f'{L}: a wrong password: the app cannot read the refusal ({trouble}), and shows "Error de credenciales"'])
        for wrong in ({"status": "error"}, {"status": "success", "id": None},
                      Reply({"status": "error", "message": "No"}, "401 Unauthorized")):
            with Server(wrong=wrong) as server:
                self.assertEqual(self.json(server, status=0)["findings"], [])

    def test_forms_fail_on_any_other_status(self):
        refused = {"status": "error", "message": "Espere"}, 'status: "error": the service refuses, saying "Espere"'
        absent = {"message": "Espere"}, "status: absent, which counts as a failure"
        number = {**DONE, "id": 43}, "id: number, must be text"
        cases = [(f"api_{form}.php", case) for form in ("cotizar", "auto", "perfil", "recuperar") for case in (refused, absent)]
        for endpoint, (reply, line) in [*cases, ("api_registro.php", refused), ("api_registro.php", number)]:
            with self.subTest(endpoint + line), Server({endpoint: reply}) as server:
                self.assertEqual(faults(self.check(server, "--write", status=1)), [f"{endpoint}: {line}"])


if __name__ == "__main__":
    unittest.main()
