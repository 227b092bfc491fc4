"""Texts that would be commands if they were not kept apart from them: SQL, paths, headers."""

from program import RECORDS, head

SQL = [
    "'", "''", '"', "`", "'; DROP TABLE customers; --", "' OR '1'='1", '" OR ""="', "' OR 1=1 --", "'/*", "*/; --",
    "\\'", "%", "_", "'); DELETE FROM quotations; --", "' UNION SELECT password_hash FROM customers --", "?1", ":a",
    "$b", "@c", "x'00'", "\0", "a\0'; DROP TABLE packages; --", "'||(SELECT password_hash FROM customers)||'",
    "; ATTACH DATABASE 'x.sqlite' AS x; --", "load_extension('x')", "ana@marovenda.example'--",
    "ana@marovenda.example' OR '1'='1", "\ud7ff'", "\u02bc", "\uff07",
]
NUMBERS = [
    "1 OR 1=1", "1;DROP TABLE customers", "1--", "1/*", "'1'", "1'", "0x1", "1e0", "1,2", "(1)", "1)",
    "1 UNION SELECT 1", "1\0", "\u0661", "\uff11", " 1", "1\n", "null", "true", "*", "user_id", "-0", "00", "+1",
    "1&user_id=2",
]
PATHS = [
    "..", "../", "../demo.sqlite", "../../../../../../etc/passwd", "..%2f..%2fetc%2fpasswd",
    "%2e%2e/%2e%2e/etc/passwd", "%252e%252e%252fetc%252fpasswd", "..\\..\\etc\\passwd", "..%5c..%5cetc%5cpasswd",
    "%c0%ae%c0%ae/etc/passwd", "/etc/passwd", "//etc/passwd", "etc/passwd", "demo.sqlite", "./demo.sqlite",
    "demo.sqlite-wal", "stderr", "api_paquetes.php/../demo.sqlite", "api_paquetes.php/demo.sqlite",
    "api_paquetes.php%00.txt", "api_paquetes.php%2f", "api_paquetes.php;a", "./api_paquetes.php",
    ".//api_paquetes.php", "api_paquetes%2ephp%2f..", "file:///etc/passwd", "proc/self/environ",
    "%61pi_paquetes.phpx", ".",
]
ANA = RECORDS["api_login.php"]
SECRETS = (b"SQLite format 3", b"root:", b"$argon2id$", b"CREATE TABLE")


def schema(program):
    return program.rows("SELECT type, name, sql FROM sqlite_schema ORDER BY name")


def silent(reply):
    return not any(secret in reply.received for secret in SECRETS)


def escape(text):
    return "".join(f"%{byte:02x}" for byte in text.encode())


def check_texts(tally, program):
    """Every text comes to rest in its own column, as it is."""
    for text in SQL:
        record = {**RECORDS["api_cotizar.php"], "origen": text, "destino": text, "descripcion": text}
        kept = program.post("api_cotizar.php", record).good() and program.rows(
            "SELECT origen, destino, descripcion FROM quotations ORDER BY id DESC LIMIT 1") == [(text,) * 3]
        record = {"user_id": 3, "marca": text, "modelo": text, "anio": text, "ubicacion": text}
        kept = kept and program.post("api_auto.php", record).good() and program.rows(
            "SELECT marca, modelo, anio, ubicacion FROM vehicle_requests ORDER BY id DESC LIMIT 1") == [(text,) * 4]
        kept = kept and program.post("api_recuperar.php", {"email": text + "x"}).good() and program.rows(
            "SELECT email, customer FROM recovery_requests ORDER BY id DESC LIMIT 1") == [(text + "x", None)]
        tally.note("SQL in a text", kept, repr(text))
        refused = program.post("api_cotizar.php", {**RECORDS["api_cotizar.php"], "tipo": text})
        tally.note("SQL as a kind", refused.sound() and not refused.good(), repr(text))


def check_people(tally, program):
    for number, text in enumerate(SQL):
        for email, password in ((text, text), (text, ANA["password"]), (ANA["email"], text)):
            login = program.post("api_login.php", {"email": email, "password": password})
            held = login.status == 200 and login.sound() and not login.good() and silent(login)
            tally.note("SQL at the sign-in", held, f"{email!r} {password!r}: {login}")
        name = text + str(number)
        profile = program.post("api_perfil.php", {**RECORDS["api_perfil.php"], "user_id": 3, "nombre": name})
        mailbox = program.post("api_casillero.php", {"user_id": "3"}).json() or {}
        tally.note("SQL as a name", profile.good() and mailbox.get("nombreCompleto") == f"{name} MRV-1003",
                   f"{name!r}: {mailbox}")
    registered = program.post("api_registro.php", {
        "nombre": SQL[4], "email": "'||(SELECT 1)||'@x", "password": SQL[5], "direccion": SQL[4], "ciudad": SQL[4]})
    again = program.post("api_login.php", {"email": "'||(SELECT 1)||'@x", "password": SQL[5]})
    tally.note("SQL as a new customer", registered.good() and again.good(), repr(registered))


def check_numbers(tally, program):
    for number in NUMBERS:
        listing = program.get("api_paquetes.php?user_id=" + escape(number))
        tally.note("SQL as a number", listing.status == 400 and listing.sound(), f"{number!r}: {listing}")
        mailbox = program.post("api_casillero.php", {"user_id": number})
        tally.note("SQL as a number", mailbox.sound() and not mailbox.good() and silent(mailbox), repr(number))


def check_paths(tally, program):
    for path in PATHS:
        for verb in ("GET", "HEAD", "POST"):
            reply = program.exchange(head(verb, path) + b"Content-Length: 0\r\n\r\n")
            sound = (verb == "HEAD" and not reply.failure) or reply.closed() or reply.sound()
            held = not reply.good() and sound and reply.status in (0, 400, 404) and silent(reply)
            tally.note("path elsewhere", held, f"{verb} {path}: {reply}")
    for text in ("1%0d%0aX-Injected:%20yes", "1\rX-Injected: yes", "1%0aX-Injected:%20yes%0a%0a<b>",
                 "1%00%0d%0aX-Injected:%20yes"):
        for path in (f"api_paquetes.php?user_id={text}", f"{text}", f"api_login.php?{text}"):
            reply = program.get(path)
            tally.note("header in an address", b"x-injected" not in reply.received.lower(), f"{path!r}: {reply}")


def check(tally, program, _random, _long):
    before, customers, packages = schema(program), program.count("customers"), program.count("packages")
    check_texts(tally, program)
    check_people(tally, program)
    check_numbers(tally, program)
    check_paths(tally, program)
    counts = (program.count("customers"), program.count("packages"))
    tally.note("tables as before", schema(program) == before and counts == (customers + 1, packages),
               f"{counts}, {schema(program)}")
    hashes = [kept for kept, in program.rows("SELECT password_hash FROM customers")]
    tally.note("passwords kept as hashes", all(kept.startswith(b"$argon2id$") for kept in hashes), repr(hashes))
    strays = sorted(p.name for p in program.folder.iterdir() if not p.name.startswith(("demo.sqlite", "stderr")))
    tally.note("no file made", not strays, str(strays))
    tally.note("nothing to complain about", program.alive() and program.errors() == "", program.errors())
