"""Each mistake that the records and the screens' rules allow is named with its place; a good server has none."""

import copy
import unittest

from program import ProgramTest, faults, notes, screens, warnings
from server import CASILLERO, DONE, LISTING, LOGIN, Server


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

# What a server says wrongly, and the one fault of the report.
FAULTS = [
    # types
    (L, {**LOGIN, "id": 42}, "id: number, must be text"),
    (L, [LOGIN], "the reply: array, must be object"),
    (P, row("paquetes", 17, tracking=123), "paquetes[17].tracking: number, must be text"),
    (P, {**LISTING, "paquetes": {"0": {}}}, "paquetes: object, must be array"),
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
    (P, without(LISTING, "paquetes"), 'paquetes: absent, shown as "0 Paquetes" and a blank list'),
    (P, {**LISTING, "cotizaciones": None},
     'cotizaciones: absent, shown as "0 Cotizaciones" and "No tienes cotizaciones registradas."'),
    (P, {**without(LISTING, "paquetes"), "paquetes": LISTING["paquetes"], "Paquetes": []},
     'Paquetes: ignored by the app, which reads "paquetes"'),
    (C, {**CASILLERO, "nombre_completo": "x"}, 'nombre_completo: ignored by the app, which reads "nombreCompleto"'),
    (P, b'{"paquetes":[],"paquetes":[{"tracking":"A","tracking":"B"}],"cotizaciones":[]}',
     "paquetes: duplicate key; the last one counts"),
    (P, row("paquetes", 1, descripcion="ni\ufffdo"),
     "paquetes[1].descripcion: contains U+FFFD, which replaces a lost character"),
    (P, row("paquetes", 1, descripcion="niÃ±o"), 'paquetes[1].descripcion: looks like UTF-8 encoded twice: "niÃ±o"'),
    (P, row("paquetes", 1, descripcion="ni&ntilde;o"),
     'paquetes[1].descripcion: contains an HTML entity, which the app does not decode: "ni&ntilde;o"'),
]

NOTES = [
    (L, {**LOGIN, "token": "x"}, "token: ignored by the app"),
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
    (P, {**LISTING, "paquetes": []}, "paquetes: no rows to check"),
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
        self.assertEqual(faults(report) + notes(report), [])
        self.assertEqual(warnings(report), ["api_paquetes.php: after api_cotizar.php: the quotation is not in the listing"])
        self.assertIn("\nThe app would work: 1 warning, 0 notes.\n", report)

    def test_each_finding_is_named_with_its_place(self):
        for table, severity, status in ((FAULTS, faults, 1), (WARNINGS, warnings, 0), (NOTES, notes, 0)):
            for endpoint, reply, line in table:
                with self.subTest(line):
                    report = self.report(endpoint, reply, status)
                    self.assertIn(f"{endpoint}: {line}", severity(report))
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
                             ["/api_login.php", "/api_paquetes.php?user_id=42", "/api_casillero.php"])
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
