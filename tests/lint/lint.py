"""Checks the sources with clang-format, clang-tidy, qmllint and php, with the repository's own configuration.

usage: lint.py SOURCE BUILD CACHE

What clang-tidy and qmllint have found good is remembered in the folder CACHE under a hash of all that they read: the file,
the project's headers or modules that it uses, the configuration, the compiler's arguments and the tool itself.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

FOLDERS = ("api", "app", "bench", "check", "demo", "deployments", "screens", "session", "tests", "ui")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)
# Sources that clang-tidy reads as one.
TOGETHER = 8
EXTREME = re.compile(r"\bMath\.(?:max|min)\(")


class Lint:
    def __init__(self, source, build, cache):
        self.source, self.build, self.cache = source, build, cache
        self.cache.mkdir(parents=True, exist_ok=True)
        files = [f for folder in FOLDERS for f in sorted((source / folder).rglob("*"))]
        self.cpp = [f for f in files if f.suffix in (".cpp", ".h")]
        self.qml = [f for f in files if f.suffix == ".qml"]
        self.php = sorted((source / "docs" / "examples").rglob("*.php"))
        self.headers = {f.name: f for f in self.cpp if f.suffix == ".h"}
        self.commands = {c["file"]: c["command"] for c in json.loads((build / "compile_commands.json").read_text())}

    def uses(self, file, seen=None):
        """A file and all of the project's headers that it includes, directly or not."""
        seen = {} if seen is None else seen
        if file not in seen:
            seen[file] = None
            for name in INCLUDE.findall(file.read_text()):
                header = self.headers.get(pathlib.PurePath(name).name)
                if header:
                    self.uses(header, seen)
        return list(seen)

    def remembered(self, tool, what, texts, check):
        """Runs a check unless the same texts have passed it before; returns what it complained about."""
        version = subprocess.run([tool, "--version"], check=True, capture_output=True).stdout
        digest = hashlib.sha256(version)
        for text in texts:
            digest.update(hashlib.sha256(text.encode()).digest())
        mark = self.cache / digest.hexdigest()
        if mark.exists():
            return ""
        complaint = check()
        if not complaint:
            mark.write_text(what + "\n")
        return complaint

    @staticmethod
    def run(*command, **options):
        done = subprocess.run(command, capture_output=True, text=True, **options)
        return "" if done.returncode == 0 else done.stdout + done.stderr or f"{command[0]} failed"

    def format(self):
        return self.run("clang-format", "--dry-run", "--Werror", *map(str, self.cpp), cwd=self.source)

    def groups(self):
        """The sources that are compiled with the same options, a few together: clang-tidy takes most of its time for the
        headers of libraries. The tests are formatted like all else, but may be as plain as they like."""
        by_options = {}
        for file in self.cpp:
            if str(file) in self.commands and file.relative_to(self.source).parts[0] != "tests":
                words = shlex.split(self.commands[str(file)])
                at = words.index("-o")
                rest = words[:at] + words[at + 2:]
                first = next(i for i, word in enumerate(rest) if word.startswith("-"))  # behind the compiler
                by_options.setdefault(tuple(w for w in rest[first:] if w not in ("-c", str(file))), []).append(file)
        for options, files in by_options.items():
            for at in range(0, len(files), TOGETHER):
                yield options, files[at:at + TOGETHER]

    def tidy(self, options, files):
        text = "".join(f'#include "{file}"\n' for file in files)
        used = dict.fromkeys(each for file in files for each in self.uses(file))
        texts = [each.read_text() for each in used] + [(self.source / ".clang-tidy").read_text()]
        texts.append(" ".join(options).replace(str(self.build), "").replace(str(self.source), ""))
        together = self.cache / f"together-{hashlib.sha256(text.encode()).hexdigest()[:12]}.cpp"
        together.write_text(text)
        return self.remembered("clang-tidy", " ".join(str(file.relative_to(self.source)) for file in files), texts,
                               lambda: self.run("clang-tidy", "--quiet", f"--config-file={self.source / '.clang-tidy'}",
                                                str(together), "--", *options))

    def lint_qml(self):
        tool = next((t for t in ("/usr/lib/qt6/bin/qmllint", "qmllint6", "qmllint") if self.has(t)), None)
        if not tool:
            return "qmllint is not installed"
        types = sorted((self.build / "qml").rglob("*.qmltypes"))
        texts = [f.read_text() for f in self.qml + types]
        return self.remembered(tool, "qml", texts, lambda: self.run(
            tool, "-I", str(self.build / "qml"), *map(str, self.qml)))

    def parse_php(self):
        return "".join(self.run("php", "-l", str(file)) for file in self.php) if self.php else "no PHP files"

    def extremes(self):
        """Qt 6.8 compiles Math.max of three numbers wrongly: where the result is 0, it can be the second of them."""
        found = []
        for file in self.qml:
            text = file.read_text()
            for call in EXTREME.finditer(text):
                depth, commas, at = 1, 0, call.end()
                while depth:
                    depth += (text[at] in "([") - (text[at] in ")]")
                    commas += text[at] == "," and depth == 1
                    at += 1
                if commas > 1:
                    line = text.count("\n", 0, call.start()) + 1
                    found.append(f"{file.relative_to(self.source)}:{line}: nest {call[0]}...), two numbers each")
        return "\n".join(found)

    def named_view_models(self):
        """See ViewModel.h; a screen has its view model as a property."""
        return "\n".join(f"{file.relative_to(self.source)}: a view model with an id"
                         for file in self.qml if re.search(r"ViewModel \{\s*id:", file.read_text()))

    @staticmethod
    def has(tool):
        return subprocess.run(["sh", "-c", f"command -v {tool}"], capture_output=True).returncode == 0

    def checks(self):
        yield "clang-format", self.format
        yield "qmllint", self.lint_qml
        yield "php", self.parse_php
        yield "largest and smallest of two", self.extremes
        yield "view models without ids", self.named_view_models
        for options, files in self.groups():
            names = " ".join(str(file.relative_to(self.source)) for file in files)
            yield f"clang-tidy {names}", lambda options=options, files=files: self.tidy(options, files)


def main():
    lint = Lint(*(pathlib.Path(argument).resolve() for argument in sys.argv[1:4]))
    failed = ran = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        running = {name: pool.submit(check) for name, check in lint.checks()}
        for name, result in running.items():
            ran += 1
            if complaint := result.result():
                failed += 1
                print(f"== {name}\n{complaint}")
    print(f"{ran} checks, {failed} failed")
    sys.exit(1 if failed or ran < 10 else 0)


if __name__ == "__main__":
    main()
