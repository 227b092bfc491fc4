"""The release as customers get it: hardened, silent about passwords, and deaf to what a hostile server or text asks of it.

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


def main():
    build, sbom, form = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
    long = form == "long"
    lock = in_own_network()
    app, service = str(build / "bin" / "marovenda"), str(build / "bin" / "marovenda-demo-service")
    parts = {
        "binaries": lambda folder: binaries.check(tally, build),
        "materials": lambda folder: materials.check(tally, sbom, app, folder, long),
        "canary": lambda folder: canary.check(tally, folder, app, service),
        "links": lambda folder: links.check(tally, folder, app),
        "markup": lambda folder: markup.check(tally, folder, app),
    }
    only = os.environ.get("MAROVENDA_ONLY")
    tally = Tally()
    for part, check in parts.items():
        if only in (None, part):
            with tempfile.TemporaryDirectory(prefix="marovenda-hardening-") as folder:
                check(pathlib.Path(folder))
    del lock
    tally.finish()


if __name__ == "__main__":
    main()
