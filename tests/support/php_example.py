"""The server of docs/examples/php as a separate process, with its two customers in a new database."""

import os
import pathlib
import re
import shlex
import subprocess
import time

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "docs" / "examples" / "php"
COMMAND = re.compile(r"^ +(php .*-S 127\.0\.0\.1:)\d+( .*)$", re.MULTILINE)
PATIENCE = 60


class PhpExample:
    """Use as a context; `base` is the address that it answers at, on a free port where `port` is 0. It is started with
    the command of its README, and writes its log to `folder`."""

    def __init__(self, port, folder):
        before, after = COMMAND.search((FOLDER / "README.md").read_text()).groups()
        self.command = shlex.split(f"{before}{port}{after}")
        self.log = pathlib.Path(folder) / "php.log"
        self.environment = {**os.environ, "MAROVENDA_DB": str(pathlib.Path(folder) / "php.sqlite")}

    def __enter__(self):
        subprocess.run(["php", "seed.php"], cwd=FOLDER, env=self.environment, check=True, stdout=subprocess.DEVNULL)
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(self.command, cwd=FOLDER, env=self.environment, stdout=log, stderr=log)
        until = time.monotonic() + PATIENCE
        while not (started := re.search(r"\((http://127\.0\.0\.1:\d+)\) started", self.log.read_text())):
            if self.process.poll() is not None or time.monotonic() > until:
                self.__exit__()
                raise RuntimeError(f"PHP did not start: {self.log.read_text()}")
            time.sleep(0.05)
        self.base = f"{started[1]}/"
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
