"""docs/examples/php: the checker finds the server in order, and it is as short as its README says."""

import json
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import php_example
import program


class ExampleTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory(prefix="marovenda-php-"))
        self.base = self.enterContext(php_example.PhpExample(0, folder)).base

    def check_in_order(self, states, *arguments):
        done = program.run("--base", self.base, "--json", *arguments, "bruno@marovenda.example",
                           MAROVENDA_CHECK_PASSWORD="Casillero#2")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        report = json.loads(done.stdout)
        # The largest photo may take seconds on a busy machine.
        found = [f for f in report["findings"] if f["severity"] != "note" and f["place"] != "time"]
        self.assertEqual(found, [])
        self.assertEqual({s["state"] for s in report["screens"]}, states, report["screens"])

    def test_reading_is_in_order(self):
        self.check_in_order({"works", "not tried"})

    def test_writing_is_in_order(self):
        self.check_in_order({"works"}, "--write", "--largest-photo")


class SizeTest(unittest.TestCase):
    def test_is_short(self):
        files = [f for kind in ("*.php", "*.sql") for f in php_example.FOLDER.rglob(kind)]
        lines = sum(len(f.read_text().splitlines()) for f in files)
        self.assertTrue(200 < lines < 300, lines)


if __name__ == "__main__":
    unittest.main()
