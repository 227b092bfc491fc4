"""The demo service as a program: its options, its signals, and the file that it keeps."""

import signal
import sqlite3
import subprocess
import unittest

from demo import PATIENCE, PROGRAM, DemoTest, post

QUOTATION = {"user_id": 3, "tipo": "aereo", "origen": "", "destino": "", "peso": 1, "valor": 1, "descripcion": ""}


def run(*arguments):
    return subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=PATIENCE, check=False)


class ProgramTest(DemoTest):
    def refused(self, status, says, *arguments):
        done = run(*arguments)
        self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (status, "", 1), done.stderr)
        self.assertIn(says, done.stderr)

    def test_ends_by_signal(self):
        for by in (signal.SIGTERM, signal.SIGINT):
            self.start()
            self.assertEqual(self.listing(1)["status"], "success")
            self.stop(by)

    def test_wrong_options_are_refused(self):
        for arguments in (["--nope"], ["nope"], ["--port"], ["--database", ""], *(
                ["--port", port] for port in ("65536", "-1", "x", "080", "0x10"))):
            with self.subTest(arguments):
                self.refused(2, "", *arguments)

    def test_what_is_printed(self):
        for option, text in (("--help", "--database <FILE>"), ("--version", "marovenda-demo-service "),
                             ("--customers", "ana@marovenda.example     Casillero#1"), ("--customers", "Casillero#3")):
            done = run(option)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn(text, done.stdout)

    def test_second_service_leaves_the_first_ones_port_and_data(self):
        self.start()
        self.ask("api_cotizar.php", QUOTATION)
        self.refused(1, f"Port {self.port} ", "--port", str(self.port), "--database", str(self.database), "--reset")
        self.assertEqual(len(self.listing(3)["cotizaciones"]), 1)

    def test_reset_drops_what_was_kept(self):
        self.start()
        self.ask("api_cotizar.php", QUOTATION)
        self.stop()
        self.start("--reset")
        self.assertEqual(self.listing(3)["cotizaciones"], [])

    def test_other_files_are_left_alone(self):
        self.start()
        self.stop()
        demo = self.database.read_bytes()
        foreign = self.folder / "foreign.sqlite"
        with sqlite3.connect(foreign) as database:
            database.execute("CREATE TABLE other (a)")
        for name, content, arguments in (
                ("text", b"My thesis.\n", []), ("text", b"My thesis.\n", ["--reset"]),
                ("foreign", foreign.read_bytes(), []), ("foreign", foreign.read_bytes(), ["--reset"]),
                ("damaged", demo[:4096] + b"x" * 20_000 + demo[24_096:], []), ("cut", demo[:len(demo) // 2], [])):
            with self.subTest(name, arguments=arguments):
                file = self.folder / name
                file.write_bytes(content)
                self.refused(1, str(file), "--port", "0", "--database", str(file), *arguments)
                self.assertEqual(file.read_bytes(), content)
        for path in (self.folder, self.folder / "none" / "demo.sqlite"):
            self.refused(1, str(path), "--port", "0", "--database", str(path), "--reset")

    def test_file_is_the_owners_alone_and_holds_no_password(self):
        # Also where an empty file that everyone may read stood before.
        self.database.touch(0o644)
        self.start()
        self.ask("api_registro.php", {"nombre": "Eva", "email": "eva@example.com", "password": "Muy-Secreta",
                                      "direccion": "", "ciudad": ""})
        files = list(self.folder.iterdir())
        self.assertGreater(len(files), 1)
        for file in files:
            self.assertEqual(file.stat().st_mode & 0o77, 0, file)
        content = b"".join(file.read_bytes() for file in files)
        self.stop()
        content += self.database.read_bytes()
        self.assertIn(b"eva@example.com", content)
        self.assertIn(b"$argon2id$", content)
        self.assertNotIn(b"Muy-Secreta", content)
        self.assertNotIn(b"Casillero#", content)


if __name__ == "__main__":
    unittest.main()
