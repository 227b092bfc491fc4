"""Arbitrary bytes and random records through the reader and the writer of JSON.

usage: check.py CHECK [FUZZER COVERAGE LLVM-COV LLVM-PROFDATA] quick|long
MAROVENDA_SEED=N repeats a run; MAROVENDA_CORPUS=FOLDER keeps what the fuzzer finds. To renew the documents that are
kept here: FUZZER -merge=1 -use_counters=0 -max_len=1024 corpus FOLDER.
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
from tally import Tally

KNOWN = [str(HERE / "seeds"), str(HERE / "corpus")]
# The records are lists of fields, of which later Clang counts each line as code.
OWN = ("api/Json.cpp", "api/Json.h")
QUICK_SEED = 1
LONGEST = 4096
# Of the lines: what no document reaches, since it is about records that a program fills.
ALLOWED = 0.05


def count(tally, command):
    """Takes over the rows of a program that counts by itself."""
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=False)
    failures = 0
    for line in done.stdout.splitlines():
        fault, tries, failed = line.split("\t")
        tally.note(fault, True, tries=int(tries))
        tally.rows[fault][1] += int(failed)
        failures += int(failed)
    if done.returncode != (1 if failures else 0) or not done.stdout:
        tally.note("program that reads and writes", False, f"{' '.join(command)} ended with {done.returncode}")


def fuzz(tally, fuzzer, found, seed, executions):
    """Lets the fuzzer look for a document that is judged wrongly, and tells which one."""
    found.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="marovenda-decoder-") as name:
        done = subprocess.run(
            [fuzzer, f"-seed={seed}", f"-runs={executions}", f"-max_len={LONGEST}", f"-dict={HERE / 'decoder.dict'}",
             "-timeout=20", "-print_final_stats=1", f"-artifact_prefix={name}/", str(found), *KNOWN],
            # Half of the time would go into keeping freed memory and the stacks that freed it.
            env={**os.environ, "ASAN_OPTIONS": "malloc_context_size=2:quarantine_size_mb=16"},
            stderr=subprocess.PIPE, text=True, errors="replace", check=False)
        executed = re.search(r"^stat::number_of_executed_units: *(\d+)", done.stderr, re.MULTILINE)
        executed = int(executed[1]) if executed else 0
        what = done.stderr[-6000:]
        for culprit in pathlib.Path(name).iterdir():
            what += f"\nthe document, in base64: {base64.b64encode(culprit.read_bytes()).decode()}"
    tally.note("document made by the fuzzer", done.returncode == 0 and executed >= executions, what, executed)


def cover(tally, program, llvm_cov, llvm_profdata, folders):
    """Counts the lines of the reader and the writer that the documents leave out."""
    with tempfile.TemporaryDirectory(prefix="marovenda-decoder-") as name:
        raw, profile = f"{name}/raw", f"{name}/profile"
        subprocess.run([program, "replay", *folders], env={**os.environ, "LLVM_PROFILE_FILE": raw},
                       stdout=subprocess.DEVNULL, check=False)
        subprocess.run([llvm_profdata, "merge", "-o", profile, raw], check=True)
        listing = subprocess.run([llvm_cov, "export", program, f"-instr-profile={profile}", "-format=lcov"],
                                 stdout=subprocess.PIPE, text=True, check=True).stdout
    # One file can be listed by several names, each with some of its lines.
    times = {}
    for line in listing.splitlines():
        if line.startswith("SF:"):
            file = os.path.realpath(line[3:])
        elif line.startswith("DA:") and file.endswith(OWN):
            number, executed = line[3:].split(",")[:2]
            times[file, int(number)] = max(times.get((file, int(number)), 0), int(executed))
    missed = sorted(place for place, executed in times.items() if not executed)
    print("lines not reached:", *(f"{pathlib.Path(file).name}:{number}" for file, number in missed), file=sys.stderr)
    fault = "line of the reader and the writer reached"
    tally.note(fault, bool(times), "there are no lines", len(times))
    tally.rows[fault][1] += max(0, len(missed) - int(len(times) * ALLOWED))


def main():
    check, *clang, form = sys.argv[1:]
    long = form == "long"
    seed = int(os.environ.get("MAROVENDA_SEED", random.SystemRandom().randrange(1, 10**9) if long else QUICK_SEED))
    print(f"seed {seed}", file=sys.stderr)
    tally = Tally()
    count(tally, [check, "properties", str(seed), str(20_000 if long else 300)])
    with tempfile.TemporaryDirectory(prefix="marovenda-decoder-") as name:
        found = pathlib.Path(os.environ.get("MAROVENDA_CORPUS", name))
        if clang:
            fuzzer, program, llvm_cov, llvm_profdata = clang
            fuzz(tally, fuzzer, found, seed, 10_000_000 if long else 20_000)
            cover(tally, program, llvm_cov, llvm_profdata, [*KNOWN, str(found)] if long else KNOWN)
        elif long:
            tally.note("document made by the fuzzer", False, "there is no Clang to build the fuzzer with")
        count(tally, [check, "replay", *KNOWN, str(found)])
    tally.finish()


if __name__ == "__main__":
    main()
