"""The release as customers get it: hardened, silent about passwords, deaf to what a hostile server asks of it.

usage: check.py RELEASE_TREE SBOM quick|long      MAROVENDA_ONLY=PART runs one part
"""

import os
import pathlib
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
sys.path[:0] = [str(HERE.parent), str(HERE.parents[1] / "e2e")]
import binaries
import canary
import links
import markup
import materials
from stories import in_own_network
from tally import Tally


def run_apart(parts, tally):
    """Each part in a process of its own: the accessibility library stays with the first bus that it sees."""
    for part in parts:
        tally.run([sys.executable, *sys.argv], env={**os.environ, "MAROVENDA_ONLY": part})


def main():
    build, sbom, long = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3] == "long"
    app, service = str(build / "bin" / "marovenda"), str(build / "bin" / "marovenda-demo-service")
    tally = Tally()
    parts = {
        "binaries": lambda folder: binaries.check(tally, build),
        "materials": lambda folder: materials.check(tally, sbom, app, folder, long),
        "canary": lambda folder: canary.check(tally, folder, app, service),
        "links": lambda folder: links.check(tally, folder, app),
        "markup": lambda folder: markup.check(tally, folder, app),
    }
    if only := os.environ.get("MAROVENDA_ONLY"):
        lock = in_own_network()
        with tempfile.TemporaryDirectory(prefix="marovenda-hardening-") as folder:
            parts[only](pathlib.Path(folder))
        del lock
    else:
        run_apart(parts, tally)
    tally.finish()


if __name__ == "__main__":
    main()
