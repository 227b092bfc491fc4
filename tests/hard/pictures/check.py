"""Feeds the app's picture code with bombs and damage, and looks what they cost and whether the window goes on.

usage: check.py FUZZER PROGRAM quick|long      PICTURES_ONLY=PART tries only the bombs whose names hold that

The fuzzer has the sanitizers, which see every wrong access; the program, see main.cpp, has none, since they multiply the
memory that is to be measured.
"""

import collections
import concurrent.futures
import itertools
import os
import pathlib
import subprocess
import sys
import tempfile
import threading

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent.parent)]

import bombs
from tally import Tally

MOST_MEMORY = 256  # MiB
LONGEST_GAP = 100  # ms
LONGEST_SECONDS = 20
DEADLINE = 150  # seconds until a program counts as hung

Shown = collections.namedtuple("Shown", "decoded gap run seconds memory")


class Check:
    def __init__(self, folder, fuzzer, program, form):
        self.folder = folder
        self.fuzzer, self.program = fuzzer, program
        self.long = form == "long"
        self.tally = Tally()
        self.lock = threading.Lock()
        self.pool = concurrent.futures.ThreadPoolExecutor(2)
        self.numbers = itertools.count()
        self.good = self.file(bombs.png(8, 8))
        self.corpus = folder / "corpus"
        self.corpus.mkdir()
        self.run(program, "make", self.corpus)
        bombs.add_good(self.corpus)

    def file(self, data):
        """Most of what follows is named after what it is not."""
        path = self.folder / f"{next(self.numbers)}.jpg"
        path.write_bytes(data)
        return path

    def run(self, *command):
        """The program's lines. Says on stderr why there are none: it failed, did not end, or was not silent."""
        environment = {**os.environ, "XDG_RUNTIME_DIR": str(self.folder), "XDG_DATA_HOME": str(self.folder)}
        try:
            done = subprocess.run([str(part) for part in command], env=environment, capture_output=True, text=True,
                                  errors="replace", timeout=DEADLINE)
        except subprocess.TimeoutExpired:
            return None, "did not end"
        if done.returncode != 0:
            return None, f"ended with {done.returncode}: {done.stdout[-500:]}{done.stderr[:3000]}"
        return done.stdout.splitlines(), f"wrote to stderr: {done.stderr[:500]}" if done.stderr else None

    def show(self, how, path, again=2):
        """What it took to show a file, and what is wrong with that (None: nothing)."""
        lines, wrong = self.run(self.program, "show", how, path, self.good)
        if lines is None:
            return None, wrong
        shown = Shown(*map(float, lines[-1].split()))
        late = None
        if shown.memory > MOST_MEMORY:
            wrong = f"took {shown.memory:.0f} MiB"
        # On a busy machine only the time that the window's own thread computed tells something.
        elif shown.run > LONGEST_GAP:
            wrong = f"the window's thread computed for {shown.run:.0f} ms"
        elif self.long and shown.gap > LONGEST_GAP:
            # A lock's holder may itself have been waiting for a processor.
            late = f"the window did not answer for {shown.gap:.0f} ms"
        elif shown.seconds > LONGEST_SECONDS:
            late = f"took {shown.seconds:.0f} s"
        if late and again:
            return self.show(how, path, again - 1)
        wrong = late or wrong
        return shown, wrong

    def bomb(self, bomb):
        """As a stored photo, as a picked one, which is held once more in base64, and as one of the picker's."""
        path = self.file(bomb.make())
        kind, colon, _ = bomb.name.partition(":")
        kind = kind if colon else kind.split(" ")[0] + " bomb"
        ways = ("stored", "picked", "listed") if self.long else ("picked",)
        for how in ways:
            shown, wrong = self.show(how, path)
            if not wrong and bomb.shows is not None and bool(shown.decoded) != bomb.shows:
                wrong = "shows" if shown.decoded else "does not show"
            self.note(f"{kind}, {how}", not wrong, f"{bomb.name}: {wrong}")
        if self.long:
            lines, wrong = self.run(self.fuzzer, "-detect_leaks=0", path)
            self.note(f"{kind}, under the sanitizers", lines is not None, f"{bomb.name}: {wrong}")
        path.unlink()

    def note(self, *row):
        with self.lock:
            self.tally.note(*row)

    def together(self, work):
        """As many at a time as the pool has hands; what one raises, is raised."""
        for done in [self.pool.submit(*each) for each in work]:
            done.result()

    def all_bombs(self):
        only = os.environ.get("PICTURES_ONLY", "")
        self.together((self.bomb, bomb) for bomb in bombs.all_bombs(self.corpus) if only in bomb.name)

    def damages(self):
        """Good pictures, cut off at many parts of their length, and what the fuzzer makes of them. A picture that it judges
        wrongly is left in the current folder."""
        parts, runs = (500, 20_000_000) if self.long else (40, 25_000)
        cut = self.folder / "cut"
        cut.mkdir()
        for file in self.corpus.iterdir():
            for part in range(parts):
                (cut / f"{file.name}-{part}").write_bytes(file.read_bytes()[:file.stat().st_size * part // parts])
        found = self.folder / "found"
        found.mkdir()
        # Without a seed the fuzzer takes one of its own.
        done = subprocess.run([self.fuzzer, f"-runs={runs + len(list(cut.iterdir()))}", *([] if self.long else ["-seed=1"]),
                               "-timeout=20", "-malloc_limit_mb=256", "-detect_leaks=0", found, self.corpus, cut], check=False)
        self.note("damaged pictures", done.returncode == 0, f"the fuzzer ended with {done.returncode}", runs)


def main():
    *programs, form = sys.argv[1:]
    with tempfile.TemporaryDirectory(prefix="pictures-") as folder:
        check = Check(pathlib.Path(folder), *programs, form)
        check.all_bombs()
        check.damages()
    check.tally.finish()


main()
