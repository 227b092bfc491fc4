"""A private copy of the working tree, with a build of its own, and the tests in it."""

import concurrent.futures
import contextlib
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
import types

ROOT = pathlib.Path(__file__).resolve().parents[2]
PLACE = ROOT / "build/mutate"
PRODUCT = ("api/", "app/", "screens/", "session/", "ui/")
# The ranks of tests, see Tree.rank: those that are quick, and the others.
LIKELY, OTHERS = range(0, 4), range(4, 8)
# Tests that run at the same time in one tree: they wait more than they compute.
AT_ONCE = 3


def run(*command, **options):
    return subprocess.run([str(each) for each in command], check=True, text=True, capture_output=True, **options).stdout


@functools.cache
def source_of(file):
    """What stands in the file of the working tree, from now on."""
    return (ROOT / file).read_text()


class Times:
    """How long each test usually takes, kept from one run to the next."""

    def __init__(self):
        self.file = PLACE / "times.json"
        self.known = json.loads(self.file.read_text()) if self.file.exists() else {}
        self.lock = threading.Lock()

    def note(self, test, seconds):
        with self.lock:
            self.known[test.name] = max(seconds, self.known.get(test.name, 0) / 2)
            self.file.write_text(json.dumps(self.known, indent=1))

    def limit(self, test):
        return max(60, 6 * self.known[test.name]) if test.name in self.known else test.limit


class DoesNotBuild(Exception):
    pass


class Tree:
    def __init__(self, number, times):
        self.path = PLACE / f"tree-{number}"
        self.build = self.path / "build/dev"
        self.times = times
        self.shown, self.environment = {}, {}
        self.sound = {}  # by name of the test: whether it passes without a change
        self.synchronise()
        if not (self.build / "build.ninja").exists():
            self.configure()
        self.ninja("build.ninja")
        self.tests = self.read_tests()

    def synchronise(self):
        listed = run("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", cwd=ROOT).split("\0")
        wanted = {name for name in listed if name and (ROOT / name).is_file()}
        for name in wanted:
            source, copy = ROOT / name, self.path / name
            if not copy.is_file() or source.read_bytes() != copy.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, copy)  # with the time of now, so that ninja builds it
        for folder, names, files in os.walk(self.path):
            names[:] = [name for name in names if name != "build"]
            for file in files:
                if os.path.relpath(f"{folder}/{file}", self.path) not in wanted:
                    os.unlink(f"{folder}/{file}")

    def configure(self):
        # Without debug information, which takes time and is not read; what a change makes superfluous is no error.
        run("cmake", "--preset", "dev", "-DCMAKE_CXX_FLAGS_DEBUG=", "-DCMAKE_COMPILE_WARNING_AS_ERROR=OFF", "-DCMAKE_UNITY_BUILD=ON",
            f"-DCMAKE_PROJECT_INCLUDE={self.path}/tests/mutation/tree.cmake", cwd=self.path)
        # The stories look there for the executable that customers get.
        (self.path / "build/demo").symlink_to("dev")

    def ninja(self, *targets):
        done = subprocess.run(["ninja", "-C", self.build, *targets], capture_output=True, text=True, check=False,
                              env={**os.environ, "CCACHE_BASEDIR": str(self.path)})
        if done.returncode:
            raise DoesNotBuild(done.stdout[-3000:])

    def read_tests(self):
        """What CTest lists and what ninja builds for it. CTest itself does not list commands that are yet to be built."""
        commands = {name: re.findall(r'"((?:\\.|[^"\\])*)"', rest)
                    for file in self.build.rglob("CTestTestfile.cmake")
                    for name, rest in re.findall(r"^add_test\(\[=\[(.*?)\]=\] (.*)\)$", file.read_text(), re.MULTILINE)}
        built = set(re.findall(r"^(\S+): ", run("ninja", "-C", self.build, "-t", "targets", "all"), re.MULTILINE))
        tests = []
        for listed in json.loads(run("ctest", "--test-dir", self.build, "--show-only=json-v1"))["tests"]:
            properties = {each["name"]: each["value"] for each in listed["properties"]}
            environment = dict(each.split("=", 1) for each in properties.get("ENVIRONMENT", []))
            command = commands[listed["name"]]
            paths = [os.path.realpath(each) for each in [*command, *environment.values()] if each.startswith("/")]
            targets = tuple(sorted({os.path.relpath(each, self.build) for each in paths} & built))
            inputs = self.inputs(targets) if targets and listed["name"] != "lint" else []
            if any(each.startswith(PRODUCT) for each in inputs):
                # Of an executable with several tests the others' sources say nothing of this one.
                own = [each for each in inputs if (not each.startswith(PRODUCT) or each == "app/main.cpp") and
                       (not pathlib.Path(each).stem.startswith("tst_") or pathlib.Path(each).stem == listed["name"])]
                tests.append(types.SimpleNamespace(
                    name=listed["name"], command=command, environment=environment, limit=properties.get("TIMEOUT", 300),
                    targets=targets, folders={os.path.dirname(each) for each in inputs}, sources=own,
                    reached=self.reached({pathlib.Path(each).stem for each in own})))
        return tests

    @functools.lru_cache(maxsize=None)
    def inputs(self, targets):
        """The files of the tree that these are made of."""
        lines = run("ninja", "-C", self.build, "-t", "inputs", *targets).replace("'", "").splitlines()
        # What is compiled together is included by one file.
        for together in [line for line in lines if "/Unity/" in line and line.endswith(".cxx")]:
            lines += re.findall('^#include "(.*)"', (self.build / together).read_text(), re.MULTILINE)
        inside = (os.path.relpath(line, self.path) for line in lines if line.startswith(f"{self.path}/"))
        return [each for each in inside if not each.startswith("build/")]

    @functools.cached_property
    def mentions(self):
        """Of each source's name (without its suffix) the names of others that are mentioned in it."""
        files = [file for suffix in ("cpp", "h", "qml") for file in self.path.glob(f"[!b]*/**/*.{suffix}")]
        names, found = {file.stem for file in files}, {}
        for file in files:
            text = re.sub("//.*", "", file.read_text())
            found.setdefault(file.stem, set()).update(names & set(re.findall(r"\b[A-Z]\w+", text)))
        return found

    def reached(self, names):
        """The names of the sources that these lead to, from what they mention to what is mentioned there."""
        found, waiting = set(), set(names)
        while waiting:
            found |= waiting
            waiting = {each for name in waiting for each in self.mentions.get(name, ())} - found
        return found

    def rank(self, test, file):
        """How likely the test fails for a change of the file, the likeliest 0; None if it cannot."""
        name, folder = pathlib.Path(file).stem, os.path.dirname(file)
        if folder not in test.folders or name not in test.reached:
            return None
        base = re.sub("(View)?Model$|View$", "", name)
        own = {pathlib.Path(source).stem for source in test.sources if "/tst_" in source}
        if test.name in (f"tst_{name}", f"tst_{base}", f"tst_{base}View"):
            return 0
        if any(name in self.mentions[each] for each in own):
            return 1
        if own:
            folders = {pathlib.Path(source).parts[1] for source in test.sources if "/tst_" in source}
            return 2 if file.split("/")[0] in folders else 4 if folders.isdisjoint({"look", "pictures"}) else 3
        return {"check": 5, "story": 6}.get(test.name.split("-")[0], 7)

    def covering(self, files, ranks):
        """The tests of these ranks for any of the files, the likeliest first and of these the quickest."""
        found = []
        for test in self.tests:
            rank = min((rank for rank in (self.rank(test, file) for file in files) if rank in ranks), default=None)
            if rank is not None and self.sound.get(test.name, True):
                found.append((rank, self.times.known.get(test.name, 10), test))
        return [test for _, _, test in sorted(found, key=lambda each: each[:2])]

    def show(self, contents):
        """Makes these contents, by file, the tree's one difference to the working tree."""
        for file in {*contents, *self.shown}:
            wanted = contents.get(file) or source_of(file)
            if not file.endswith(".qml") and (self.path / file).read_text() != wanted:
                (self.path / file).write_text(wanted)
        self.shown = contents
        self.environment = self.show_layouts({file: text for file, text in contents.items() if file.endswith(".qml")})

    def show_layouts(self, contents):
        """Layouts are not built, but shown instead of those that are built in. Returns what the tests need for that."""
        if not contents:
            return {}
        self.ninja("libmutated_layouts.so")
        rcc = re.search(r"\S+/rcc(?= )", (self.build / "build.ninja").read_text()).group()
        place, resources = self.path / "build/layouts", ""
        shutil.rmtree(place, ignore_errors=True)
        place.mkdir()
        for built_in in self.build.rglob("*_raw_qml_*.qrc"):
            listed = built_in.read_text()
            for file, text in contents.items():
                if f">{self.path / file}<" in listed:
                    (place / os.path.basename(file)).write_text(text)
                    listed = listed.replace(f">{self.path / file}<", f">{place / os.path.basename(file)}<")
            resources += re.sub("</?RCC>", "", listed)
        (place / "all.qrc").write_text(f"<RCC>{resources}</RCC>")
        run(rcc, "--binary", "-o", place / "all.rcc", place / "all.qrc")
        return {"LD_PRELOAD": str(self.build / "libmutated_layouts.so"), "MUTATED_LAYOUTS": str(place / "all.rcc")}

    def build_for(self, tests):
        self.ninja(*{target for test in tests for target in test.targets})

    def failure(self, test, limit=None):
        """What the test complains about first, or "" if it passes. A Qt Test is ended there."""
        began, said = time.monotonic(), ""
        limit = limit or self.times.limit(test)
        with tempfile.TemporaryDirectory(prefix="mutate-", ignore_cleanup_errors=True) as scratch:
            child = subprocess.Popen(
                test.command, cwd=self.build, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                errors="replace", start_new_session=True,
                env={**os.environ, "TMPDIR": scratch, **test.environment, **self.environment})
            timer = threading.Timer(limit, end, [child])
            timer.start()
            for line in child.stdout:
                if line.startswith("FAIL!"):
                    said = line.strip()
                    end(child)
            status = child.wait()
            timer.cancel()
            end(child)
        seconds = time.monotonic() - began
        if status == 0:
            self.times.note(test, seconds)
            return ""
        return said or ("it hangs" if seconds >= limit else f"status {status}")

    def is_sound(self, test):
        """Whether the test passes twice without a change."""
        if test.name not in self.sound:
            shown = self.shown
            self.show({})
            self.build_for([test])
            failures = [self.failure(test, test.limit) for _ in range(2)]
            self.sound[test.name] = not any(failures)
            if any(failures):
                print(f"left out {test.name}: it {'fails' if all(failures) else 'is flaky'} without a change", flush=True)
            self.show(shown)
            self.build_for([test])
        return self.sound[test.name]

    def failed_alone(self, contents):
        """The likeliest tests one by one, for the change of one file. Returns by file the first that fails and what it
        says."""
        self.show(contents)
        for test in self.covering(contents, LIKELY):
            self.build_for([test])
            if (said := self.failure(test)) and self.is_sound(test):
                return {file: (test.name, said) for file in contents}
        return {}

    def failed_together(self, contents):
        """The other tests, for changes of several files at once, since most pass for all of them. Those that fail are run
        for each change alone. Returns by file the first that fails and what it says."""
        found, tests = {}, self.covering(contents, OTHERS)
        while tests and len(found) < len(contents):
            left = {file: text for file, text in contents.items() if file not in found}
            group, tests = tests[:2 * AT_ONCE], tests[2 * AT_ONCE:]
            self.show(left)
            self.build_for(group)
            with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
                failures = list(pool.map(self.failure, group))
            for test in [test for test, said in zip(group, failures) if said and self.is_sound(test)]:
                for file in left:
                    if file not in found and self.rank(test, file) in OTHERS:
                        self.show({file: left[file]})
                        self.build_for([test])
                        if said := self.failure(test):
                            found[file] = test.name, said
            tests = [test for test in tests if any(self.rank(test, file) in OTHERS for file in left if file not in found)]
        return found


def end(child):
    """Ends a test with everything that it has started."""
    with contextlib.suppress(ProcessLookupError):
        os.killpg(child.pid, signal.SIGKILL)
