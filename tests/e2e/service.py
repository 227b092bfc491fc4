"""The demo service as a separate process, with a database of its own."""

import pathlib
import re
import subprocess


class Service:
    """Use as a context; `base` is the address that it answers at, on a free port where `port` is 0."""

    def __init__(self, executable, port, database):
        self.command = [executable, "--port", str(port), "--database", str(database)]
        self.process = None

    def start(self):
        self.process = subprocess.Popen(self.command, stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        if not line.startswith("Listening"):
            raise RuntimeError(f"the demo service did not start: {line!r}")
        self.base = line.split()[-1]

    def stop(self):
        if self.process:
            self.process.terminate()
            self.process.wait()
            self.process.stdout.close()
            self.process = None

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()


def demo_port():
    """The port that the demo deployment has built in."""
    file = pathlib.Path(__file__).parents[2] / "deployments" / "demo.cmake"
    return int(re.search(r'MAROVENDA_BASE_URL "http://127\.0\.0\.1:(\d+)/"', file.read_text()).group(1))
