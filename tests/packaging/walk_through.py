"""Follows CONTRIBUTING.md's walk-through in a copy of the repository, and compiles what comes of it.

usage: walk_through.py SOURCE_DIRECTORY BUILD_DIRECTORY MOC WORK_DIRECTORY

A block that is headed by a file's name is that new file, or with "diff" a change of it, which must fit exactly once.
"""

import json
import pathlib
import re
import shlex
import shutil
import subprocess
import sys


def copy(source, work):
    shutil.rmtree(work, ignore_errors=True)
    listed = subprocess.run(["git", "-C", source, "ls-files", "--cached", "--others", "--exclude-standard", "-z"],
                            check=True, stdout=subprocess.PIPE, text=True).stdout
    for name in filter(None, listed.split("\0")):
        if (source / name).is_file():
            (work / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(source / name, work / name)


def blocks(page):
    section = page.split("\n## A new screen")[1].split("\n## ")[0]
    return re.findall(r"^```(\w+)(?: (\S+))?\n(.*?)^```$", section, re.MULTILINE | re.DOTALL)


def change(file, lines):
    before = "".join(f"{line[1:]}\n" for line in lines if line[0] in " -")
    after = "".join(f"{line[1:]}\n" for line in lines if line[0] in " +")
    text = file.read_text()
    if text.count(before) != 1:
        sys.exit(f"CONTRIBUTING.md: {file.name} has this {text.count(before)} times, not once:\n{before}")
    file.write_text(text.replace(before, after))


def apply(work):
    """Makes the changes; returns the new files."""
    new = []
    for kind, name, text in blocks((work / "CONTRIBUTING.md").read_text()):
        if kind == "diff":
            change(work / name, [line or " " for line in text.splitlines()])
        elif name:
            if (work / name).exists():
                sys.exit(f"CONTRIBUTING.md: {name} is there already")
            (work / name).write_text(text)
            new.append(name)
    if len(new) < 4:
        sys.exit("CONTRIBUTING.md: the walk-through was not found")
    return new


def compile_together(names, target, source, build, work, moc):
    """As one source and with the options of a target that is built, whose include folders become those of the copy."""
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if f"/{target}.dir/" in entry["command"]:
            break
    else:
        sys.exit(f"{target} is not built")
    words = shlex.split(entry["command"])
    inside = lambda word: word.replace(str(source), str(work)) if str(build) not in word else word
    options = [inside(w) for w in words if w.startswith(("-D", "-I", "-std", "-f", "-W"))]
    options += [word for at, word in enumerate(words) if word == "-isystem" or words[at - 1] == "-isystem"]
    generated = work / "generated"
    generated.mkdir(exist_ok=True)
    options += [f"-I{generated}", *(f"-I{(work / name).parent}" for name in names)]
    for name in names:
        moc_file = pathlib.Path(name).stem + ".moc"
        if f'#include "{moc_file}"' in (work / name).read_text():
            subprocess.run([moc, *(o for o in options if o.startswith(("-D", "-I"))), work / name, "-o", generated / moc_file],
                           check=True)
    together = generated / "together.cpp"
    together.write_text("".join(f'#include "{work / name}"\n' for name in names))
    compiler = next(w for w in words if w.endswith(("c++", "g++", "clang++")))
    if subprocess.run([compiler, *options, "-fsyntax-only", "-Werror", together]).returncode:
        sys.exit(f"CONTRIBUTING.md: {' or '.join(names)} does not compile")


def main():
    source, build, moc, work = (pathlib.Path(argument).absolute() for argument in sys.argv[1:])
    copy(source, work)
    new = apply(work)
    compile_together(("screens/logistics/HorarioViewModel.cpp", "tests/screens/logistics/tst_HorarioView.cpp",
                      "tests/api/tst_Records.cpp"), "tests_screens", source, build, work, moc)
    print(f"{len(new)} new files; the walk-through holds")


if __name__ == "__main__":
    main()
