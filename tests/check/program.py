"""The real executable, and what its report says."""

import json
import os
import subprocess
import unittest

PROGRAM = os.environ["MAROVENDA_CHECK"]
PASSWORD = "Muy-Secreta#1"
CUSTOMER = "prueba@example.com"


def environment(**more):
    ours = {name: value for name, value in os.environ.items() if not name.lower().endswith("_proxy")}
    ours.pop("NO_COLOR", None)
    ours["MAROVENDA_CHECK_PASSWORD"] = PASSWORD
    ours.update(more)
    return {name: value for name, value in ours.items() if value is not None}


def run(*arguments, prefix=(), input="", **more):
    return subprocess.run([*prefix, PROGRAM, *arguments], capture_output=True, text=True, input=input, timeout=120,
                          env=environment(**more), check=False)


class ProgramTest(unittest.TestCase):
    """Each test's runs of the program end with a status that is no crash, and never print the password."""

    maxDiff = None

    def check(self, server, *arguments, status, **more):
        """The report on a server, as text."""
        done = run("--base", server if isinstance(server, str) else server.base, CUSTOMER, *arguments, **more)
        self.assertNotIn("Sanitizer", done.stderr)
        self.assertNotIn("runtime error", done.stderr)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertNotIn(PASSWORD, done.stdout + done.stderr)
        return done.stdout

    def json(self, server, *arguments, status, **more):
        """The same for machines, as objects."""
        return json.loads(self.check(server, "--json", *arguments, status=status, **more))


def lines(report, title):
    """The lines below a title, without those that say how to fix them."""
    found, inside = [], False
    for line in report.splitlines():
        if not line.startswith(" "):
            inside = line.startswith(title)
        elif inside and not line.startswith("      →"):
            found.append(line.strip())
    return found


def faults(report):
    return lines(report, "FAULTS")


def warnings(report):
    return lines(report, "WARNINGS")


def notes(report):
    return lines(report, "NOTES")


def screens(report):
    """What each screen shows, by its name: the state, and the rest."""
    return {each["screen"]: each for each in report["screens"]}
