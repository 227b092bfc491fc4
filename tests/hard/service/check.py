"""The demo service under malice, load and kill -9.

usage: check.py SERVICE quick|long      MAROVENDA_SEED=N repeats a run, MAROVENDA_ONLY=PART runs one part
"""

import os
import pathlib
import random
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
sys.path[:0] = [str(HERE.parent), str(HERE.parents[1] / "support")]
import injection
import killed
import load
import loopback
import malformed
from namespaces import enter_own_network
from program import Program, allow_many_files
from tally import Tally

# Each of these has a service of its own, started for it.
PARTS = {"malformed": malformed, "load": load, "injection": injection, "loopback": loopback}
QUICK_SEED = 1


def main():
    executable, form = sys.argv[1:3]
    # Addresses may be added there.
    enter_own_network()
    allow_many_files()
    long = form == "long"
    seed = int(os.environ.get("MAROVENDA_SEED", random.SystemRandom().randrange(10**9) if long else QUICK_SEED))
    print(f"seed {seed}", file=sys.stderr)
    only = os.environ.get("MAROVENDA_ONLY")
    tally = Tally()
    with tempfile.TemporaryDirectory(prefix="marovenda-service-") as name:
        folder = pathlib.Path(name)
        for part, module in PARTS.items():
            if only in (None, part):
                with Program(executable, folder / part) as program:
                    module.check(tally, program, random.Random(seed), long)
        if only in (None, "killed"):
            killed.check(tally, executable, folder, random.Random(seed), long)
    tally.finish()


if __name__ == "__main__":
    main()
