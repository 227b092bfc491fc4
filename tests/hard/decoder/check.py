"""Arbitrary bytes through the reader of JSON, and what it reads through the writer.

usage: check.py CHECK [FUZZER] quick|long
MAROVENDA_SEED=N repeats a run; MAROVENDA_CORPUS=FOLDER keeps what the fuzzer finds, see documents.py.
"""

import base64
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE.parent))
import documents
from tally import Tally

QUICK_SEED = 1
LONGEST = 4096


def fuzz(tally, fuzzer, folders, seed, executions):
    """Lets the fuzzer look for a document that is judged wrongly, and tells which one."""
    with tempfile.TemporaryDirectory(prefix="marovenda-decoder-") as name:
        done = subprocess.run(
            [fuzzer, f"-seed={seed}", f"-runs={executions}", f"-max_len={LONGEST}", f"-dict={HERE / 'decoder.dict'}",
             "-timeout=20", "-print_final_stats=1", f"-artifact_prefix={name}/", *folders],
            # Half of the time would go into keeping freed memory and the stacks that freed it.
            env={**os.environ, "ASAN_OPTIONS": "malloc_context_size=2:quarantine_size_mb=16"},
            stderr=subprocess.PIPE, text=True, errors="replace", check=False)
        executed = re.search(r"^stat::number_of_executed_units: *(\d+)", done.stderr, re.MULTILINE)
        executed = int(executed[1]) if executed else 0
        what = done.stderr[-6000:]
        for culprit in pathlib.Path(name).iterdir():
            what += f"\nthe document, in base64: {base64.b64encode(culprit.read_bytes()).decode()}"
    tally.note("document made by the fuzzer", done.returncode == 0 and executed >= executions, what, executed)


def main():
    check, *fuzzer, form = sys.argv[1:]
    long = form == "long"
    seed = int(os.environ.get("MAROVENDA_SEED", random.SystemRandom().randrange(1, 10**9) if long else QUICK_SEED))
    print(f"seed {seed}", file=sys.stderr)
    tally = Tally()
    with tempfile.TemporaryDirectory(prefix="marovenda-decoder-") as name:
        known, found = pathlib.Path(name, "known"), pathlib.Path(os.environ.get("MAROVENDA_CORPUS", f"{name}/found"))
        documents.unpack(known)
        found.mkdir(parents=True, exist_ok=True)
        if fuzzer:
            fuzz(tally, fuzzer[0], [str(found), str(known)], seed, 10_000_000 if long else 20_000)
        elif long:
            tally.note("document made by the fuzzer", False, "there is no Clang to build the fuzzer with")
        tally.run([check, str(known), str(found)])
    tally.finish()


if __name__ == "__main__":
    main()
