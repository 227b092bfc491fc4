"""Arbitrary bytes through the reader of JSON, and what it reads through the writer.

usage: check.py FUZZER quick|long      MAROVENDA_RENEW=1 adds to documents.json what reaches a branch that nothing else does

The fuzzer begins with documents.json, where bytes stand as Latin-1: those with a name show something, it has found the others.
A document that it judges wrongly is left in the current folder.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
DOCUMENTS = HERE / "documents.json"


def main():
    fuzzer, form = sys.argv[1:]
    # Without a seed it takes one of its own.
    runs = ["-runs=10000000"] if form == "long" else ["-runs=20000", "-seed=1"]
    with tempfile.TemporaryDirectory(prefix="marovenda-decoder-") as name:
        found, known = pathlib.Path(name, "found"), pathlib.Path(name, "known")
        found.mkdir()
        known.mkdir()
        for document, text in json.loads(DOCUMENTS.read_text()).items():
            (known / document).write_bytes(text.encode("latin-1"))
        # Half of the time would go into keeping freed memory and the stacks that freed it.
        environment = {**os.environ, "ASAN_OPTIONS": "malloc_context_size=2:quarantine_size_mb=16"}
        done = subprocess.run([fuzzer, *runs, "-max_len=4096", f"-dict={HERE / 'decoder.dict'}", "-timeout=20", found, known],
                              env=environment, check=False)
        if os.environ.get("MAROVENDA_RENEW"):
            subprocess.run([fuzzer, "-merge=1", "-use_counters=0", known, found], env=environment, check=True)
            documents = {file.name: file.read_bytes().decode("latin-1") for file in sorted(known.iterdir())}
            DOCUMENTS.write_text(json.dumps(documents, indent=0) + "\n")
    sys.exit(done.returncode)


if __name__ == "__main__":
    main()
