"""The command itself: its password, its options, its terminal, and the demo service, which has nothing wrong."""

import base64
import copy
import fcntl
import json
import os
import pathlib
import pty
import re
import select
import signal
import subprocess
import tempfile
import termios
import unittest

from program import CUSTOMER, PASSWORD, PROGRAM, ProgramTest, environment, faults, lines, notes, run, screens
from server import CASILLERO, LISTING, LOGIN, Reply, Server, body
from service import Service

ROOT = pathlib.Path(__file__).parents[2]
DEMO_SERVICE = os.environ["MAROVENDA_DEMO_SERVICE"]


class DemoTest(ProgramTest):
    """Against the demo service, which plays the company's side."""

    def demo(self, *arguments, customer=("ana", 1)):
        name, number = customer
        done = run("--base", self.base, f"{name}@marovenda.example", *arguments,
                   MAROVENDA_CHECK_PASSWORD=f"Casillero#{number}")
        self.assertEqual((done.returncode, "Sanitizer" in done.stderr), (0, False), done.stdout + done.stderr)
        return done.stdout

    def test_demo_service_has_nothing_wrong(self):
        with tempfile.TemporaryDirectory() as folder, Service(DEMO_SERVICE, 0, f"{folder}/demo.sqlite") as service:
            self.base = service.base
            for *customer, options in (("ana", 1, []), ("bruno", 2, []), ("carla", 3, ["--empty"])):
                report = json.loads(self.demo("--json", *options, customer=customer))
                self.assertTrue(report["works"] and report["reached"] and not report["refused"])
                self.assertNotIn("fault", [each["severity"] for each in report["findings"]])
                self.assertEqual([each["state"] for each in report["screens"]], ["works"] * 5 + ["not tried"] * 5)
                self.assertEqual((len(report["exchanges"]), report["created"]), (4, []))
            report = self.demo("--write")
            self.assertEqual(faults(report), [])
            self.assertNotIn("is not in the listing", report)
            self.assertIn("the listing's avatar is the photo that was saved", report)
            stamp = r"\d{8}-\d{6}-[0-9a-f]{4}"
            saved = 'the profile of customer 1, saved with the name that it had, "Ana Lucía Peñalver Ríos", and'
            for line, pattern in zip(lines(report, "WHAT WAS CREATED"), [
                    rf'a quotation for customer 1: "Prueba de marovenda-check {stamp}: .*"',
                    rf"a vehicle request for customer 1: Prueba marovenda-check {stamp}",
                    f"{saved} a photo of 127 bytes",
                    f"{saved} no photo, which keeps the old one",
                    "a request to reset the password of ana@marovenda.example",
                    rf"a customer ana\+check-{stamp}@marovenda.example, number 4, with a password that nobody knows"],
                    strict=True):
                self.assertRegex(line, f"^{pattern}$")
            shown = screens(json.loads(self.demo("--json")))
            self.assertEqual(shown["Mi Resumen"]["texts"][:3],
                             ["Hola, Ana Lucía Peñalver Ríos", "230 Paquetes", "13 Cotizaciones"])
            self.assertIn("  a customer nueva@marovenda.example, number 5, with",
                          self.demo("--write", "--largest-photo", "--new-email", "nueva@marovenda.example"))


class WriteTest(ProgramTest):
    """What --write finds out by asking again."""

    def test_each_request_is_sent_once(self):
        reading = [("POST", "/api_login.php", f'{{"email":"{CUSTOMER}","password":"{PASSWORD}"}}'.encode()),
                   ("GET", "/api_paquetes.php?user_id=42", b""),
                   ("POST", "/api_casillero.php", b'{"user_id":"42"}')]
        with Server() as server:
            self.check(server, status=0)
            self.assertEqual(server.sent()[:-1], reading)
            self.assertRegex(server.sent()[-1][2], f'^{{"email":"{CUSTOMER}","password":"Aa_[0-9a-z]{{20,}}"}}$'.encode())
            server.requests.clear()
            self.check(server, "--write", status=0)
            self.assertEqual(server.sent()[:3], reading)
            sent = [(path, json.loads(content or "{}")) for _, path, content in server.sent()[3:]]
        self.assertEqual([path for path, _ in sent], [
            "/api_cotizar.php", "/api_auto.php", "/api_perfil.php", "/api_perfil.php", "/api_login.php",
            "/api_paquetes.php?user_id=42", "/api_recuperar.php", "/api_registro.php", "/api_login.php"])
        unchanged = {"user_id": 42, "nombre": "Ana Ríos", "email": "", "password": "", "avatar_base64": ""}
        photo = sent[2][1]["avatar_base64"]
        self.assertEqual([sent[2][1], sent[3][1]], [{**unchanged, "avatar_base64": photo}, unchanged])
        picture = subprocess.run(["identify", "-regard-warnings", "-"], input=base64.b64decode(photo), capture_output=True,
                                 check=True)
        self.assertRegex(picture.stdout, b" PNG 16x16 ")
        self.assertRegex(sent[7][1]["password"], "^Aa_[0-9a-z]{20,}$")

    def test_photo_that_comes_back(self):
        for avatar, says in ((lambda photo: photo, "is the photo that was saved"),
                             (lambda photo: "https://x/1.png", 'is not the photo that was saved: "https://x/1.png"')):
            with Server() as server:
                def profile(content):
                    if photo := json.loads(content)["avatar_base64"]:
                        server.replies["api_paquetes.php"] = {**LISTING, "avatar": avatar(photo)}
                    return {"status": "success"}
                server.replies["api_perfil.php"] = profile
                self.assertIn(f"api_paquetes.php: after api_perfil.php: the listing's avatar {says}",
                              notes(self.check(server, "--write", status=0)))

    def test_largest_photo(self):
        sizes = []
        with Server() as server:
            def profile(content):
                sizes.append(len(base64.b64decode(json.loads(content)["avatar_base64"])))
                return Reply(b"", "413 Content Too Large") if sizes[-1] > 1 << 20 else {"status": "success"}
            server.replies["api_perfil.php"] = profile
            report = self.check(server, "--write", "--largest-photo", status=1)
        self.assertEqual(sizes, [127, 64 << 20, 0])
        self.assertEqual(faults(report), ["api_perfil.php: HTTP 413: an empty body"])
        self.assertIn('fails      Mi Perfil: "Error al actualizar"', report)
        self.assertIn('"avatar_base64":"(89478488 characters)"', report)

    def test_two_runs_at_once_register_two_addresses(self):
        with Server() as server:
            started = [subprocess.Popen([PROGRAM, "--base", server.base, "--write", "--quiet", CUSTOMER],
                                        stdout=subprocess.DEVNULL, env=environment()) for _ in range(4)]
            self.assertEqual([each.wait() for each in started], [0] * 4)
            sent = [json.loads(each.body) for each in server.posts()]
        new = {each["email"] for each in sent if "ciudad" in each}
        self.assertEqual(len(new), 4)
        self.assertEqual(len({each["modelo"] for each in sent if "modelo" in each}), 4)

    def test_profile_is_looked_at_again(self):
        for login, status, expected in (
                ({"status": "error", "message": "No"}, 1, "the customer can no longer sign in"),
                ({**LOGIN, "nombre": "Ana RÃ­os"}, 0, "the name is no longer the one that was saved")):
            with Server() as server:
                def profile(_):
                    server.replies["api_login.php"] = login
                    return {"status": "success"}
                server.replies["api_perfil.php"] = profile
                self.assertIn(f"api_login.php: after api_perfil.php: {expected}",
                              self.check(server, "--write", status=status))

    def test_quotation_that_comes_back_otherwise_is_a_warning(self):
        def described(change):
            def quote(content):
                text = change(json.loads(content)["descripcion"])
                server.replies["api_paquetes.php"] = {**LISTING, "cotizaciones": [{"descripcion": text}]}
                return {"status": "success"}
            return quote
        with Server() as server:
            server.replies["api_cotizar.php"] = described(lambda text: text.replace('"', '\\"'))
            self.assertIn("after api_cotizar.php: the quotation's description differs from the text that was sent",
                          self.check(server, "--write", status=0))
            server.replies["api_cotizar.php"] = described(lambda text: text)
            self.assertNotIn("after api_cotizar.php", self.check(server, "--write", status=0))

    def test_second_look_at_the_listing_counts_no_row_twice(self):
        with Server({"api_paquetes.php": {**LISTING, "paquetes": [{"tracking": "A", "id_interno": 1}]}}) as server:
            report = self.check(server, "--write", status=0)
            self.assertEqual(server.paths().count("/api_paquetes.php?user_id=42"), 2)
        self.assertIn("api_paquetes.php: paquetes[0].id_interno: ignored by the app", lines(report, "NOTES"))

    def test_profile_without_a_name_is_left_alone(self):
        with Server({"api_login.php": {**LOGIN, "nombre": None}}) as server:
            report = self.json(server, "--write", status=0)
            self.assertNotIn("/api_perfil.php", server.paths())
        self.assertEqual(screens(report)["Mi Perfil"]["state"], "not tried")

    def test_what_may_have_been_created_is_said(self):
        with Server({"api_auto.php": b"<br>", "api_recuperar.php": {"status": "error"}}) as server:
            created = lines(self.check(server, "--write", status=1), "WHAT WAS CREATED")
        self.assertRegex(created[1], r"^perhaps a vehicle request .* \(there is no readable reply\)$")
        self.assertRegex(created[4], r"^perhaps a request to reset .* \(the reply says that it failed\)$")


class OptionsTest(ProgramTest):
    def refused(self, *arguments, says, **more):
        done = run(*arguments, **more)
        self.assertEqual((done.returncode, done.stdout), (2, ""), done.stderr)
        self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
        self.assertTrue(done.stderr.startswith("marovenda-check: ") and done.stderr[:-1].isprintable(), done.stderr)
        self.assertIn(says, done.stderr)

    def test_wrong_command_lines_are_refused(self):
        self.refused(says="e-mail of a test customer is missing")
        self.refused("", says="is empty")
        self.refused(CUSTOMER, "secret", says="Unexpected argument")
        self.refused("--nonsense", CUSTOMER, says="nonsense")
        self.refused("--password", "x", CUSTOMER, says="password")
        for value in ("0", "3601", "1.5", "060", "\x1b[2J"):
            self.refused("--timeout", value, CUSTOMER, says="--timeout must be 1 to 3600 seconds")
        for value in ("", "x", "0", "9223372036854775808"):
            self.refused("--id", value, CUSTOMER, says="--id must be a customer's number")
        self.refused("--largest-photo", CUSTOMER, says="--largest-photo needs --write")
        self.refused("--new-email", "a@b", CUSTOMER, says="--new-email needs")
        self.refused("--write", "--new-email", "", CUSTOMER, says="--new-email needs")

    def test_base_is_https_or_this_machine(self):
        for base, says in {
            "http://api.example/": "without https", "http://127.0.0.1.example/": "without https",
            "http://0.0.0.0/": "without https", "ftp://127.0.0.1/": "begin with https", "api.example": "begin with https",
            "": "begin with https", "https:///": "a host", "https://api.example": "end in",
            "https://api.example/?a=/": "without user", "https://ana@api.example/": "without user",
            " https://api.example/": "no blanks", "https://api.example/\x1b/": "no blanks",
            "http://127.1/": "four numbers from 0 to 255", "https://api..example/": "single dots",
            "https://api.example:0/": "a port from 1 to 65535", "https://ñandú.example/": "begins with xn--",
        }.items():
            self.refused("--base", base, CUSTOMER, says=says)
        # These are taken: what is refused next is the password.
        for base in ("https://api.example/", "https://api.example:8443/app/", "http://127.1.2.3/", "http://[::1]:80/",
                     "http://localhost/"):
            self.refused("--base", base, CUSTOMER, says="There is no password", MAROVENDA_CHECK_PASSWORD=None)

    def test_password_comes_from_file_or_environment(self):
        with tempfile.TemporaryDirectory() as name, Server() as server:
            def sent():
                return json.loads(server.requests.pop(0).body)["password"]
            path = pathlib.Path(name) / "secret"
            for content, password in {b"ni\xc3\xb1o #1\n": "niño #1", b"x": "x", b" a b \r\n": " a b "}.items():
                path.write_bytes(content)
                self.check(server, "--password-file", str(path), status=0)
                self.assertEqual(sent(), password)
                server.requests.clear()
            self.check(server, "--password-file", "-", status=0, input="otra\n")
            self.assertEqual(sent(), "otra")
            server.requests.clear()
            self.check(server, status=0, MAROVENDA_CHECK_PASSWORD="de fuera")
            self.assertEqual(sent(), "de fuera")
            for content, says in {
                b"": "contains no password", b"\n": "contains no password", b"a\nb\n": "in a single line",
                b"a\0": "in a single line", b"\xff": "not in UTF-8", b"a" * 5000: "more than 4096",
            }.items():
                path.write_bytes(content)
                self.refused("--base", server.base, "--password-file", str(path), CUSTOMER, says=says)
            self.refused("--password-file", name + "/none", CUSTOMER, says="cannot be read")
            self.refused("--password-file", "", CUSTOMER, says="must name a file")
            self.refused(CUSTOMER, says="contains no password", MAROVENDA_CHECK_PASSWORD="")

    def test_it_links_nothing_that_shows_windows(self):
        libraries = subprocess.run(["ldd", PROGRAM], capture_output=True, text=True, check=True).stdout
        self.assertEqual(set(re.findall(r"libQt6(\w+)", libraries)), {"Core", "Network"})

    def test_report_that_cannot_be_written_says_so(self):
        with Server() as server, open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM, "--quiet", "--base", server.base, CUSTOMER], stdout=full,
                                  stderr=subprocess.PIPE, text=True, env=environment(), check=False)
        self.assertEqual((done.returncode, done.stderr), (2, "marovenda-check: The report could not be written.\n"))

    def test_progress_goes_to_stderr(self):
        with Server() as server:
            done = run("--base", server.base, CUSTOMER, "--json")
            self.assertEqual(done.stderr, "".join(
                f"Asking {each} ...\n" for each in ("api_login.php", "api_paquetes.php", "api_casillero.php",
                                               "api_login.php")))
            json.loads(done.stdout)
            self.assertEqual(run("--base", server.base, CUSTOMER, "--quiet").stderr, "")


class DocumentTest(ProgramTest):
    """What docs/checking-a-server.md shows is what is printed."""

    def test_report_is_the_one_of_the_document(self):
        listing = copy.deepcopy(LISTING)
        listing["paquetes"][17]["tracking"] = 100230
        del listing["paquetes"][4]["descripcion"]
        listing["paquetes"][9]["tracking"] = "MRV-3"
        for row in listing["paquetes"]:
            row["id_interno"] = "2.5"
        warning = b'<br />\n<b>Warning</b>: Undefined array key "apellido" in api_casillero.php on line 12\n'
        with Server({
            "api_paquetes.php": Reply(listing, headers=["Set-Cookie: PHPSESSID=4f2a"]),
            "api_casillero.php": Reply(warning + body(CASILLERO), type="text/html; charset=UTF-8"),
        }) as server:
            report = self.check(server, status=1)
        for changing, fixed in ((r"127\.0\.0\.1:\d+", "127.0.0.1:8080"), (r"\d+ ms", "31 ms")):
            report = re.sub(changing, fixed, report)
        document = (ROOT / "docs/checking-a-server.md").read_text()
        if os.environ.get("MAROVENDA_RENEW"):
            document = re.sub("(?s)(## A report.*?```\n).*?(```)", lambda old: old[1] + report + old[2], document)
            (ROOT / "docs/checking-a-server.md").write_text(document)
        self.assertIn(f"```\n{report}```", document)


class TerminalTest(ProgramTest):
    """At a pseudo terminal."""

    def start(self, *arguments, **more):
        pid, terminal = pty.fork()
        if pid == 0:
            os.execve(PROGRAM, [PROGRAM, *arguments], environment(MAROVENDA_CHECK_PASSWORD=None, **more))
        self.addCleanup(os.close, terminal)
        return pid, terminal

    def read(self, terminal, until=None):
        text = b""
        while until is None or until not in text:
            self.assertTrue(select.select([terminal], [], [], 60)[0], text)
            try:
                text += os.read(terminal, 65536)
            except OSError:  # the other side has ended
                break
        return text

    def test_password_is_asked_for_and_not_shown(self):
        for variables, coloured in (({}, True), ({"NO_COLOR": "1"}, False), ({"TERM": "dumb"}, False)):
            with self.subTest(variables), Server() as server:
                pid, terminal = self.start("--base", server.base, CUSTOMER, **{"TERM": "xterm", **variables})
                self.assertEqual(self.read(terminal, b": "), f"Password of {CUSTOMER}: ".encode())
                os.write(terminal, (PASSWORD + "\n").encode())
                text = self.read(terminal)
                self.assertEqual(os.waitpid(pid, 0)[1], 0)
                self.assertEqual(json.loads(server.requests[0].body)["password"], PASSWORD)
                self.assertNotIn(PASSWORD.encode(), text)
                self.assertEqual(b"\x1b[1;32mThe app would work" in text, coloured)
                self.assertEqual(b"\x1b" in text, coloured)

    def test_interrupted_prompt_leaves_a_terminal_that_echoes(self):
        master, slave = pty.openpty()
        # The session's first process must stay, or the terminal is gone with it.
        script = 'trap : INT; "$@"; echo ended with $?'
        child = subprocess.Popen(["sh", "-c", script, "sh", PROGRAM, CUSTOMER], stdin=slave, stdout=slave,
                                 stderr=slave, env=environment(MAROVENDA_CHECK_PASSWORD=None),
                                 preexec_fn=lambda: take_terminal(slave))
        self.read(master, b": ")
        self.assertFalse(termios.tcgetattr(slave)[3] & termios.ECHO)
        os.write(master, b"\x03")
        self.read(master, f"ended with {128 + signal.SIGINT}".encode())
        self.assertTrue(termios.tcgetattr(slave)[3] & termios.ECHO)
        child.wait()
        os.close(slave)
        os.close(master)

    def test_end_of_input_is_no_password(self):
        pid, terminal = self.start(CUSTOMER)
        self.read(terminal, b": ")
        os.write(terminal, b"\x04")
        self.assertIn(b"The input contains no password.", self.read(terminal))
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), 2)


def take_terminal(slave):
    """A session of its own with this terminal. The shell must survive the interruption of what it runs."""
    os.setsid()
    fcntl.ioctl(slave, termios.TIOCSCTTY, 0)
    signal.signal(signal.SIGINT, signal.SIG_DFL)


if __name__ == "__main__":
    unittest.main()
