"""A private copy of the working tree, with a build of its own, and the tests in it."""

import concurrent.futures
import contextlib
import dataclasses
import functools
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
PLACE = ROOT / "build/mutate"
TIMES = PLACE / "times.json"
AT_ONCE = 2
PRODUCT = ("api/", "app/", "screens/", "session/", "ui/")


def run(*command, **options):
    return subprocess.run([str(each) for each in command], check=True, text=True, capture_output=True, **options).stdout


@dataclasses.dataclass
class Test:
    name: str
    command: list
    environment: dict
    limit: float
    targets: list
    folders: set
    sources: list
    words: set = dataclasses.field(default_factory=set)


class Times:
    """How long each test usually takes, kept from one run to the next."""

    def __init__(self):
        self.known = json.loads(TIMES.read_text()) if TIMES.exists() else {}
        self.lock = threading.Lock()

    def note(self, test, seconds):
        with self.lock:
            self.known[test.name] = round(max(seconds, self.known.get(test.name, 0) / 2), 2)
            TIMES.write_text(json.dumps(self.known, indent=1))

    def usual(self, test):
        return self.known.get(test.name, 10)

    def limit(self, test):
        usual = self.known.get(test.name)
        return min(test.limit, 120) if usual is None else max(60, 6 * usual)


class DoesNotBuild(Exception):
    pass


class Tree:
    def __init__(self, number, times):
        self.path = PLACE / f"tree-{number}"
        self.build = self.path / "build/dev"
        self.times = times
        self.changed = None  # the file that differs from the working tree
        self.verdicts = {}  # of the unchanged tests: whether they pass
        self.synchronise()
        self.configure()
        self.tests = self.read_tests()

    def synchronise(self):
        listed = run("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", cwd=ROOT).split("\0")
        wanted = {name for name in listed if name and (ROOT / name).is_file()}
        for name in sorted(wanted):
            source, copy = ROOT / name, self.path / name
            if copy.is_file() and source.read_bytes() == copy.read_bytes():
                continue
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)  # with the time of now, so that ninja builds it again
        for folder, names, files in os.walk(self.path):
            names[:] = [name for name in names if name not in ("build", "__pycache__")]
            for file in files:
                if str((pathlib.Path(folder) / file).relative_to(self.path)) not in wanted:
                    (pathlib.Path(folder) / file).unlink()

    def configure(self):
        if not (self.build / "build.ninja").exists():
            # Without debug information, which takes time to write and nobody reads; and what a change makes superfluous is
            # no error.
            run("cmake", "--preset", "dev", "-DCMAKE_CXX_FLAGS_DEBUG=", "-DCMAKE_COMPILE_WARNING_AS_ERROR=OFF",
                f"-DCMAKE_PROJECT_INCLUDE={self.path}/tests/mutation/tree.cmake", cwd=self.path, env=self.environment())
            # The stories look there for the executable that customers get.
            (self.path / "build/demo").symlink_to("dev")
        self.ninja("build.ninja")

    def environment(self):
        return {**os.environ, "CCACHE_BASEDIR": str(self.path)}

    def ninja(self, *targets):
        if targets:
            done = subprocess.run(["ninja", "-C", self.build, *targets], capture_output=True, text=True, check=False,
                                  env=self.environment())
            if done.returncode:
                raise DoesNotBuild(done.stdout[-3000:])

    def read_tests(self):
        """What CTest lists, with what ninja builds for it and the words that lead from it to the sources."""
        listed = json.loads(run("ctest", "--test-dir", self.build, "--show-only=json-v1"))["tests"]
        commands = {}
        for file in self.build.rglob("CTestTestfile.cmake"):
            for name, rest in re.findall(r"^add_test\(\[=\[(.*?)\]=\] (.*)\)$", file.read_text(), re.MULTILINE):
                commands[name] = re.findall(r'"((?:\\.|[^"\\])*)"', rest)
        built = set(re.findall(r"^(\S+): ", run("ninja", "-C", self.build, "-t", "targets", "all"), re.MULTILINE))
        tests = []
        for each in listed:
            properties = {one["name"]: one["value"] for one in each["properties"]}
            environment = dict(one.split("=", 1) for one in properties.get("ENVIRONMENT", []))
            paths = [os.path.realpath(one) for one in [*commands[each["name"]], *environment.values()] if one[:1] == "/"]
            targets = sorted({os.path.relpath(one, self.build) for one in paths} & built)
            inputs = self.inputs(tuple(targets))
            if each["name"] != "lint" and any(one.startswith(PRODUCT) for one in inputs):
                roots = [one for one in inputs if not one.startswith(PRODUCT) or one == "app/main.cpp"]
                tests.append(Test(each["name"], commands[each["name"]], environment, properties.get("TIMEOUT", 300), targets,
                                  {os.path.dirname(one) for one in inputs}, roots))
        return tests

    @functools.lru_cache(maxsize=None)
    def inputs(self, targets):
        """The files of the tree that these are made of."""
        if not targets:
            return []
        lines = run("ninja", "-C", self.build, "-t", "inputs", *targets).replace("'", "").splitlines()
        inside = (os.path.relpath(line, self.path) for line in lines if line.startswith(f"{self.path}/"))
        return [one for one in inside if not one.startswith("build/")]

    @functools.cached_property
    def mentions(self):
        """Of each source's name (without its suffix) the names of others that are mentioned in it."""
        files = [file for suffix in ("cpp", "h", "qml") for file in self.path.glob(f"[!b]*/**/*.{suffix}")]
        stems = {file.stem for file in files}
        found = {}
        for file in files:
            text = re.sub("//.*", "", file.read_text())
            found.setdefault(file.stem, set()).update(stems & set(re.findall(r"\b[A-Z]\w+", text)))
        return found

    def reached(self, test):
        """The names of the sources that a test can come to, from what it mentions to what is mentioned there."""
        if not test.words:
            waiting = [pathlib.Path(source).stem for source in test.sources]
            while waiting:
                stem = waiting.pop()
                if stem not in test.words:
                    test.words.add(stem)
                    waiting += self.mentions.get(stem, ())
        return test.words

    def covering(self, file):
        """The tests that a change of this file may fail, the likeliest first and of these the quickest."""
        stem, folder = pathlib.Path(file).stem, os.path.dirname(file)
        base = re.sub(r"(View)?Model$|View$", "", stem)

        def rank(test):
            own = [pathlib.Path(source).stem for source in test.sources if source.startswith("tests/")]
            kind = test.name.split("-")[0]
            if not kind.startswith("tst_"):
                return 5 + (kind not in ("story", "check")) + (kind == "hard")
            if test.name in (f"tst_{stem}", f"tst_{base}", f"tst_{base}View"):
                return 0
            if any(stem in self.mentions.get(each, ()) for each in own if each.startswith("tst_")):
                return 1
            if any(re.match("tests/(look|pictures)/tst_", source) for source in test.sources):
                return 2 if file.endswith(".qml") else 4
            return 2 if any(source.startswith(f"tests/{folder}/tst_") for source in test.sources) else 3

        tests = [test for test in self.tests if folder in test.folders and stem in self.reached(test)]
        return sorted(tests, key=lambda test: (rank(test), self.times.usual(test), test.name))

    def show(self, file, content):
        """Makes this content of the file the tree's one difference to the working tree; none, if None. Returns what the
        tests need in their environment for it: a layout is not built, but shown instead of the one that is built in."""
        if self.changed and self.changed != file:
            (self.path / self.changed).write_text((ROOT / self.changed).read_text())
        self.changed = None if file.endswith(".qml") else file
        if self.changed:
            (self.path / file).write_text(content)
            return {}
        self.ninja("libmutated_layouts.so")
        layout, list_, packed = (self.path / f"build/mutated.{suffix}" for suffix in ("qml", "qrc", "rcc"))
        layout.write_text(content)
        built_in = next(text for text in self.lists_of_layouts if f">{self.path / file}<" in text)
        list_.write_text(built_in.replace(f">{self.path / file}<", f">{layout}<"))
        run(self.rcc, "--binary", "-o", packed, list_)
        return {"LD_PRELOAD": str(self.build / "libmutated_layouts.so"), "MUTATED_LAYOUT": str(packed)}

    @functools.cached_property
    def lists_of_layouts(self):
        return [file.read_text() for file in self.build.rglob("*_raw_qml_*.qrc")]

    @functools.cached_property
    def rcc(self):
        return re.search(r"\S+/rcc(?= )", (self.build / "build.ninja").read_text()).group()

    def run_test(self, test, environment, limit):
        """Whether the test passes, and how long it took; a Qt Test is ended at the first thing that fails."""
        began = time.monotonic()
        with tempfile.TemporaryDirectory(prefix="mutate-", ignore_cleanup_errors=True) as scratch:
            child = subprocess.Popen(
                test.command, cwd=self.build, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                errors="replace", start_new_session=True,
                env={**os.environ, "TMPDIR": scratch, **test.environment, **environment})
            timer = threading.Timer(limit, end, [child])
            timer.start()
            failed = False
            for line in child.stdout:
                if line.startswith("FAIL!"):
                    failed = True
                    break
            end(child) if failed else child.wait()
            timer.cancel()
            end(child)
        return child.returncode == 0 and not failed, time.monotonic() - began

    def passes(self, test, environment):
        """Whether the test passes with the change that is shown."""
        while True:
            limit = self.times.limit(test)
            passed, seconds = self.run_test(test, environment, limit)
            if passed:
                self.times.note(test, seconds)
            # What it takes is known for certain once it has passed unchanged.
            if passed or seconds < limit or not self.is_sound(test) or self.times.limit(test) <= limit:
                return passed

    def is_sound(self, test):
        """Whether the test passes twice without any change; the changed file stays as it is."""
        if test.name not in self.verdicts:
            changed = self.changed and (self.changed, (self.path / self.changed).read_text())
            if changed:
                self.show(changed[0], (ROOT / changed[0]).read_text())
            self.ninja(*test.targets)
            tries = [self.run_test(test, {}, test.limit) for _ in range(2)]
            self.verdicts[test.name] = all(passed for passed, _ in tries)
            if self.verdicts[test.name]:
                self.times.note(test, max(seconds for _, seconds in tries))
            else:
                print(f"left out {test.name}: without a change it {'is flaky' if any(tries) else 'fails'}", flush=True)
            if changed:
                self.show(*changed)
                self.ninja(*test.targets)
        return self.verdicts[test.name]

    def judge(self, file, content):
        """The name of the test that fails because of this content of the file, or None; and how many tests were run."""
        environment = self.show(file, content)
        tests = [test for test in self.covering(file) if self.verdicts.get(test.name, True)]
        count = 0
        # Most changes fail one of the likeliest tests; what has survived those meets the others several at a time.
        for begin, end_ in [(0, 1), (1, 2), (2, 3), *((at, at + 8) for at in range(3, len(tests), 8))]:
            group = tests[begin:end_]
            self.ninja(*{target for test in group for target in test.targets})
            with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
                failed = [test for test, passed in zip(group, pool.map(lambda each: self.passes(each, environment), group))
                          if not passed]
            count += len(group)
            for test in failed:
                # Beside others it may have failed for want of time.
                if self.is_sound(test) and (len(group) == 1 or not self.passes(test, environment)):
                    return test.name, count
        return None, count


def end(child):
    """Ends a test with everything that it has started."""
    with contextlib.suppress(ProcessLookupError):
        os.killpg(child.pid, signal.SIGKILL)
    child.wait()
