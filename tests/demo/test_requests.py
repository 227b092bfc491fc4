"""What the demo service answers, by tables of requests and replies."""

import sqlite3
import unittest

from demo import DemoTest, get, head, post

MEBIBYTE = 2**20
LOGIN, REGISTER, PROFILE = "api_login.php", "api_registro.php", "api_perfil.php"
RECOVER, MAILBOX, QUOTE, VEHICLE = "api_recuperar.php", "api_casillero.php", "api_cotizar.php", "api_auto.php"
ANA, BRUNO = ("ana@marovenda.example", "Casillero#1"), ("bruno@marovenda.example", "Casillero#2")
TEXT = 'Sofá de "cuero"\n– 3 piezas / ñandú 🛋\0'


def says(message):
    """The refusal of what the protocol allows, in the customer's words."""
    return {"status": "error", "message": message}


def done(message, **more):
    return {"status": "success", "message": message, **more}


def sign_in(email, password):
    return {"email": email, "password": password}


def register(nombre, email, password):
    return {"nombre": nombre, "email": email, "password": password, "direccion": "", "ciudad": ""}


def profile(user_id, nombre, email="", password="", avatar_base64=""):
    return {"user_id": user_id, "nombre": nombre, "email": email, "password": password, "avatar_base64": avatar_base64}


def quote(user_id=3, tipo="aereo", peso=0, descripcion=""):
    return {"user_id": user_id, "tipo": tipo, "origen": "Miami", "destino": "Panamá", "peso": peso, "valor": 1,
            "descripcion": descripcion}


def vehicle(user_id, modelo="b"):
    return {"user_id": user_id, "marca": "a", "modelo": modelo, "anio": "2019", "ubicacion": "d"}


WRONG = says("Correo o contraseña incorrectos")
NOBODY = says("No encontramos a ese cliente")
TAKEN = says("Ese correo ya está registrado")
INCOMPLETE = says("Completa tu nombre y tu contraseña")
NO_EMAIL = says("Escribe un correo válido")
LINK = done("Si el correo está registrado, recibirás un enlace")
SAVED = done("Perfil actualizado")
QUOTED = done("Recibimos tu solicitud de cotización")


def welcome(id, nombre):
    return done("Bienvenido", id=id, nombre=nombre)


# In this order, on one database.
STORY = [
    (LOGIN, sign_in(*ANA), welcome("1", "Ana Lucía Peñalver Ríos")),
    (LOGIN, sign_in(*BRUNO), welcome("2", "Bruno Díaz")),
    (LOGIN, sign_in("  CARLA@Marovenda.Example\n", "Casillero#3"), welcome("3", "Carla Núñez")),
    (LOGIN, sign_in(ANA[0], "casillero#1"), WRONG),
    (LOGIN, sign_in("nadie@marovenda.example", ANA[1]), WRONG),
    (LOGIN, sign_in("", ""), WRONG),
    (RECOVER, {"email": ANA[0]}, LINK),
    (RECOVER, {"email": "nadie@marovenda.example"}, LINK),
    (REGISTER, register("Eva", " ANA@marovenda.example", "x"), TAKEN),
    (REGISTER, register(" ", "e@e", "x"), INCOMPLETE),
    (REGISTER, register("Eva", "e@e", ""), INCOMPLETE),
    *[(REGISTER, register("Eva", email, "x"), NO_EMAIL) for email in ("eva", "eva@", "@eva", "e@v@a")],
    (REGISTER, register("Íñigo Peña", " Inigo@Example.com ", "Muy/Secreta"),
     done("Tu casillero está listo", id="4", nombre="Íñigo Peña")),
    (LOGIN, sign_in("inigo@example.com", "Muy/Secreta"), welcome("4", "Íñigo Peña")),
    (PROFILE, profile(99, "X"), NOBODY),
    (PROFILE, profile(2, "X", ANA[0].upper()), TAKEN),
    (PROFILE, profile(2, " "), says("Completa tu nombre")),
    (PROFILE, profile(2, "X", "x"), NO_EMAIL),
    (LOGIN, sign_in(*BRUNO), welcome("2", "Bruno Díaz")),
    (PROFILE, profile(4, "Íñigo", "Nuevo@Example.com", "Aun-Mas-Secreta", "/9j/AA=="), SAVED),
    (LOGIN, sign_in("inigo@example.com", "Aun-Mas-Secreta"), WRONG),
    (LOGIN, sign_in("nuevo@example.com", "Muy/Secreta"), WRONG),
    # Empty fields stay as they are.
    (PROFILE, profile(4, "Dos"), SAVED),
    (LOGIN, sign_in("nuevo@example.com", "Aun-Mas-Secreta"), welcome("4", "Dos")),
    (PROFILE, profile(3, "Carla", avatar_base64="A" * 4_000_000), SAVED),
    (MAILBOX, {"user_id": "1"}, {"status": "success", "nombreCompleto": "Ana Lucía Peñalver Ríos MRV-1001"}),
    *[(MAILBOX, {"user_id": number}, NOBODY) for number in ("99", "0", "-1", "01", "uno", "")],
    (QUOTE, quote(99), NOBODY),
    (QUOTE, quote(tipo="Aereo"), says("Elige envío aéreo o marítimo")),
    (QUOTE, quote(peso=-1), says("El peso y el valor no pueden ser negativos")),
    (QUOTE, quote(4, descripcion="Silla"), QUOTED),
    (QUOTE, quote(4, "maritimo", 1e308, TEXT), QUOTED),
    (VEHICLE, vehicle(4, "ñ" * 10_000), done("Recibimos tu solicitud de importación")),
    (VEHICLE, vehicle(99), NOBODY),
    *[(f"api_paquetes.php?user_id={number}", None, {**NOBODY, "paquetes": [], "cotizaciones": []})
      for number in (99, 0, -3, -2**63)],
]

NOT_JSON = "Content-Type must be application/json"
# What is not the protocol: the request, the status, and what the message begins with after "Solicitud no válida: ".
REFUSED = [
    *[(post(path, body), 400, place) for path, body, place in [
        (LOGIN, {"email": "a"}, "password: missing"),
        (LOGIN, sign_in(1, "b"), "email: number, must be text"),
        (LOGIN, b"", "not JSON"),
        (LOGIN, b"[]", "array, must be object"),
        (LOGIN, b" " * 32 * MEBIBYTE, "not JSON"),
        (RECOVER, b'{"email":"\xc3"}', "not JSON"),
        (RECOVER, b'{"email":"a"}\0', "not JSON"),
        (REGISTER, {**register("a", "b", "c"), "direccion": None}, "direccion: null, must be text"),
        (MAILBOX, {"user_id": 1}, "user_id: number, must be text"),
        (QUOTE, quote(1.5), "user_id: number, must be a whole number of 64 bits"),
        (VEHICLE, {**vehicle(1), "anio": 2019}, "anio: number, must be text"),
        (VEHICLE, vehicle(3, "ñ" * 10_001), "modelo: text of 10001 characters, must be at most 10000"),
        (PROFILE, profile(2, "X", avatar_base64="AA*C"), "avatar_base64: text, must be base64"),
        (PROFILE, profile(2, "X", avatar_base64="AAECA"), "avatar_base64: text, must be base64"),
    ]],
    *[(get("api_paquetes.php" + query), 400, "user_id: ") for query in (
        "", "?", "?user_id", "?user_id=", "?user_id=uno", "?user_id=+1", "?user_id=01", "?user_id=-0", "?user_id=%31",
        "?user_id=9223372036854775808", "?userid=1", "?USER_ID=1", "?user_id=2=1", "?user_id=2%20or%201=1", "?user_id==1",
        "?user_id=2%3d1", "?user_id=2%26user_id=1", "?user_id=1&user_id=2", "?user_id=2&user_id=2", "?user_id=1&",
        "?&user_id=1", "?user_id[]=1", "?user_id=1&x=2", "?user_id=2;user_id=1")],
    *[(head("POST", RECOVER) + headers + b'\r\n{"email":"a"}', status, message) for headers, status, message in [
        (b"Content-Length: 13\r\n", 400, NOT_JSON),
        (b"Content-Length: 13\r\nContent-Type: application/json; charset=utf-8\r\n", 400, NOT_JSON),
        (b"Content-Length: 13\r\nContent-Type: text/plain\r\n", 400, NOT_JSON),
        (b"Content-Type: application/json\r\n", 411, "Content-Length missing"),
        (b"Content-Length: 13\r\nContent-Type: application/json\r\nContent-Encoding: gzip\r\n", 415,
         "Content-Encoding must be absent"),
    ]],
]

LISTING = b"GET /api_paquetes.php?user_id=3 HTTP/1.1\r\n"
HERE = ("127.0.0.1", "127.0.0.1:80", "localhost", "LocalHost:8473", "[::1]", "[::1]:9")
ELSEWHERE = ("marovenda.example", "127.0.0.1.example", "localhost.example:80", "127.0.0.1:", "[::1", "::1",
             "127.0.0.1:x", "a@localhost", "127.0.0.2", "", "localhost\r\nHost: example.com")


class RequestsTest(DemoTest):
    def setUp(self):
        super().setUp()
        self.start()

    def test_customers_are_answered_and_remembered(self):
        for path, body, expected in STORY:
            with self.subTest(path, body=str(body)[:200]):
                self.assertEqual(self.ask(path, body), expected)
        for _ in range(2):
            listing = self.listing(4)
            self.assertEqual((listing["status"], listing["avatar"], listing["paquetes"]), ("success", "/9j/AA==", []))
            self.assertEqual(listing["cotizaciones"], [
                {"origen": "Miami", "descripcion": text, "estado": "pendiente"} for text in (TEXT, "Silla")])
            self.assertEqual(self.ask(LOGIN, sign_in("nuevo@example.com", "Aun-Mas-Secreta")), welcome("4", "Dos"))
            self.assertEqual([self.count(rows) for rows in ("recovery_requests", "vehicle_requests WHERE customer = 4")],
                             [2, 1])
            self.stop()
            self.start()

    def test_seed_is_as_promised(self):
        ana, bruno, carla = map(self.listing, (1, 2, 3))
        packages = ana["paquetes"]
        self.assertEqual((len(packages), len(ana["cotizaciones"]), "avatar" in ana), (230, 12, False))
        for key in ("tracking", "descripcion", "estado", "fecha_recibido"):
            self.assertTrue(any(key not in row for row in packages), key)
        self.assertEqual((packages[0]["tracking"], packages[-1]["tracking"]), ("MRV-100230", "MRV-100001"))
        numbers = [row["tracking"] for row in packages if "tracking" in row]
        self.assertEqual(len(set(numbers)), len(numbers) - 1)
        self.assertEqual([row["tracking"] for row in bruno["paquetes"]], ["MRV-200002", "MRV-200001"])
        self.assertEqual(len(bruno["cotizaciones"]), 1)
        self.assertEqual(carla, {"status": "success", "paquetes": [], "cotizaciones": []})
        self.stop()
        self.start("--reset")
        self.assertEqual(list(map(self.listing, (1, 2, 3))), [ana, bruno, carla])

    def test_listing_follows_who_else_has_the_file_open(self):
        self.listing(2)
        with sqlite3.connect(self.database) as database:
            database.execute("UPDATE packages SET estado = 'perdido' WHERE customer = 2")
        self.assertEqual(self.listing(2)["paquetes"][0]["estado"], "perdido")

    def test_what_is_not_the_protocol_is_refused(self):
        for request, status, place in REFUSED:
            with self.subTest(request[:200]):
                reply = self.exchange(request)
                self.assertEqual((reply.status, reply.json()["status"]), (status, "error"))
                message = reply.json()["message"]
                self.assertTrue(message.startswith(f"Solicitud no válida: {place}"), message)
        self.assertEqual(self.count("recovery_requests"), 0)

    def test_other_hosts_paths_and_methods_are_refused(self):
        requests = [(LISTING + b"\r\n", 403)]
        requests += [(LISTING + f"Host: {host}\r\n\r\n".encode(), 200) for host in HERE]
        requests += [(LISTING + f"Host: {host}\r\n\r\n".encode(), 403) for host in ELSEWHERE]
        for path in ("", "api_login", "api_loginXphp", "API_LOGIN.PHP", "api_login.php/", "../api_login.php"):
            requests += [(get(path), 404), (post(path, {}), 404)]
        requests += [(head(method, LOGIN) + b"Content-Length: 0\r\n\r\n", 405) for method in ("GET", "PUT", "OPTIONS")]
        requests += [(post("api_paquetes.php?user_id=1", {}), 405)]
        for request, status in requests:
            with self.subTest(request):
                reply = self.exchange(request)
                self.assertEqual((reply.status, reply.json()["status"]), (status, "success" if status == 200 else "error"))
                if status == 405:
                    allowed = b"Allow: GET" if b"paquetes" in request else b"Allow: POST"
                    self.assertIn(allowed, reply.head)

    def test_large_bodies_are_refused(self):
        chunk = b"100000\r\n" + b" " * MEBIBYTE + b"\r\n"
        chunked = b"Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n"
        requests = [post(LOGIN, b" " * (32 * MEBIBYTE + 1))]
        requests += [head("POST", path) + chunked + most * chunk + b"1\r\n \r\n0\r\n\r\n"
                     for path, most in ((LOGIN, 32), (PROFILE, 192))]
        for request in requests:
            with self.subTest(request[:200]):
                self.assertEqual(self.exchange(request).status, 413)

    def test_largest_photo_of_the_app_is_taken(self):
        # In base64 nothing but slashes, which the app escapes: no photo makes a larger body.
        size, photo = 64 * MEBIBYTE, b"\\/" * (64 * MEBIBYTE // 3 * 4) + b"\\/w=="
        body = b'{"user_id":2,"nombre":"Bruno","email":"","password":"","avatar_base64":"%b"}' % photo
        self.assertEqual(self.ask(PROFILE, body), SAVED)
        self.assertEqual(self.rows("SELECT length(avatar) FROM customers WHERE id = 2"), [(size,)])
        # With it, the listing would be larger than what the app reads.
        self.assertEqual(self.listing(2).keys(), {"status", "paquetes", "cotizaciones"})

    def test_body_of_a_refused_request_is_not_the_next_request(self):
        hidden = post(RECOVER, {"email": "hidden"})
        self.exchange(head("POST", RECOVER, "marovenda.example") + b"Content-Length: %d\r\n\r\n" % len(hidden) + hidden)
        self.assertEqual(self.count("recovery_requests"), 0)

    def test_no_part_of_a_listing_is_sent(self):
        whole = self.listing(2)
        for part in ("0-1", "99999-", "0-1,5-99999999", "-0"):
            reply = self.exchange(get("api_paquetes.php?user_id=2")[:-2] + f"Range: bytes={part}\r\n\r\n".encode())
            self.assertEqual((reply.status, reply.json()), (200, whole))


if __name__ == "__main__":
    unittest.main()
