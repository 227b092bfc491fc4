"""The documents that the check of the decoder begins with: those with a name show something, the others were found by the
fuzzer and reach a branch that no other does. Their bytes stand as Latin-1 in documents.json.

usage: documents.py unpack FOLDER      writes each to a file
       documents.py pack FOLDER        takes the files of a folder instead

To renew them: MAROVENDA_CORPUS=FOUND check.py, unpack to FOLDER, decoder-fuzz -merge=1 -use_counters=0 FOLDER FOUND, pack.
"""

import json
import pathlib
import sys

FILE = pathlib.Path(__file__).with_name("documents.json")


def unpack(folder):
    folder.mkdir(parents=True, exist_ok=True)
    for name, text in json.loads(FILE.read_text()).items():
        (folder / name).write_bytes(text.encode("latin-1"))


def pack(folder):
    documents = {file.name: file.read_bytes().decode("latin-1") for file in sorted(folder.iterdir())}
    FILE.write_text(json.dumps(documents, indent=0) + "\n")


if __name__ == "__main__":
    {"unpack": unpack, "pack": pack}[sys.argv[1]](pathlib.Path(sys.argv[2]))
