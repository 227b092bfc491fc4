"""The rows of the table. Each compares a measurement with a reference measured in the same run."""

import concurrent.futures
import json
import pathlib
import resource
import subprocess
import time

import browser
from machine import MEGABYTE, Memory, end, median, wait_for

FRAME = 1000 / 60
SCREENS = ("login", "registration", "dashboard", "mailbox", "quotation", "vehicle", "profile", "credits", "packages",
           "quotations")


class Row:
    """A measurement: `shown` is its result, and `good` tells whether it meets `target`. With `always`, each run must meet it."""

    def __init__(self, what, against, target, value, shown, good, always=False):
        self.what, self.against, self.target, self.value = what, against, target, value
        self.shown, self.good, self.always, self.spread = shown, good, always, ""


def at_most(what, against, value, limit, unit="×", more="", always=False):
    return Row(what, against, f"≤ {limit:g} {unit}" + ", each run" * always, value, f"{value:.2f} {unit}{more}",
               value <= limit, always)


def at_least(what, against, value, limit, more=""):
    return Row(what, against, f"≥ {limit:g} ×", value, f"{value:.2f} ×{more}", value >= limit)


def decided(runs):
    """Returns the row of the median run, with the spread of all runs."""
    ordered = sorted(runs, key=lambda row: row.value)
    row = ordered[len(runs) // 2]
    if row.always:
        row.good = all(run.good for run in runs)
    if len(runs) > 1:
        row.spread = f"{ordered[0].value:.2f} to {ordered[-1].value:.2f}"
    return row


def make_photo(folder, megabytes):
    """Creates a JPEG of this size that compresses like a camera's: fine grain over soft shapes. A later run uses it again."""
    path = folder / f"photo{megabytes}.jpg"
    if path.exists():
        return path
    made = folder / f"made{megabytes}.jpg"
    wanted = megabytes * 1_000_000
    width = int(1373 * megabytes ** 0.5) // 4 * 4
    for _ in range(4):
        subprocess.run(["convert", "-seed", "1", "-size", f"{width}x{width * 3 // 4}", "plasma:fractal", "-attenuate", "0.4",
                        "+noise", "gaussian", "-quality", "93", str(made)], check=True)
        size = made.stat().st_size
        if wanted <= size < 1.1 * wanted:
            break
        width = int(width * (1.04 * wanted / size) ** 0.5) // 4 * 4
    return made.rename(path)


class Bench:
    def __init__(self, machine, server, build):
        self.machine, self.server, self.build = machine, server, build
        self.app = build / "bin" / "marovenda"
        self.empty = [build / "bin" / "bench_empty", "qrc:/Marovenda/Empty/Empty.qml"]
        self.left_out = []
        with concurrent.futures.ThreadPoolExecutor() as pool:
            self.photos = dict(zip((10, 12), pool.map(lambda size: make_photo(build, size), (10, 12))))
        self.count = 0

    def customer(self, packages, photo=None):
        """Creates a home folder with a signed-in customer and returns its name."""
        self.count += 1
        name = f"customer{self.count}"
        self.machine.run("bench_app", self.server.address(packages), "store", *([photo] if photo else []), home=name)
        return name

    def scenario(self, packages, *what, home=None, **more):
        """Runs a scenario of bench_app and returns its measurements. `more` are Machine.run's further arguments."""
        home = home or self.customer(packages)
        return json.loads(self.machine.run("bench_app", self.server.address(packages), *what, home=home, **more))

    # Start and memory

    def starts(self):
        times = 7
        empty_home, signed_home = self.machine.home("empty"), self.machine.home(self.customer(0, self.photos[10]))
        kinds = {"window": (self.empty, empty_home), "app": ([self.app], empty_home), "signed in": ([self.app], signed_home)}
        taken = {kind: [] for kind in kinds}
        for turn in range(times + 2):
            for kind, (command, home) in kinds.items():
                ended = self.machine.first_frame(command, home)
                if turn >= 2:  # the first ones fill the caches
                    taken[kind].append(ended.milliseconds)
        window, app, signed = (median(taken[kind]) for kind in kinds)
        yield at_most("process start → first frame of the splash", "an empty Qt Quick window", app / window, 1.1,
                      more=f" ({app:.1f} against {window:.1f} ms)")
        yield at_most("the same with a 10 MB photo and a customer signed in", "an empty store", signed / app, 1.05,
                      more=f" ({signed:.1f} against {app:.1f} ms)")

    def memory(self):
        window = self.machine.first_frame(self.empty, self.machine.home("empty"), 1)
        splash = self.machine.first_frame([self.app], self.machine.home("empty"), 2.2)
        process = self.machine.start("bench_app", self.server.address(200), "stay", "dashboard", 200, home=self.customer(200))
        home = Memory(process.pid)
        end(process)

        def row(what, mine, theirs, limit):
            return at_most(what, "the empty window", mine / theirs, limit,
                           more=f" ({mine / MEGABYTE:.1f} against {theirs / MEGABYTE:.1f} MB)")

        yield row("peak memory at the splash, to its end", splash.memory.peak, window.memory.peak, 1.35)
        yield row("peak memory on the dashboard with 200 packages", home.peak, window.memory.peak, 1.5)
        yield row("private memory there, which closing the app frees", home.private, window.memory.private, 1.5)

    # Decoding and lists

    def decoded(self, which):
        """Returns the milliseconds of the benchmarks of decoding that match, by what is done and the number of packages."""
        done = self.machine.run("bench_decode", "--benchmark_format=json", f"--benchmark_filter={which}")
        names = {each["name"]: each["cpu_time"] / 1000 for each in json.loads(done)["benchmarks"]}
        return {(name.split("/")[0], int(name.split("/")[1])): value for name, value in names.items()}

    def decoding(self):
        decoded = self.decoded("/(1000|100000)$")
        large = {what: decoded[what, 100_000] for what in ("record", "parsingAlone", "qtDocument", "nlohmannDocument")}
        yield at_most("reply bytes → DashboardResponse of 100,000 packages", "parsing alone (simdjson)",
                      large["record"] / large["parsingAlone"], 1.75,
                      more=f" ({large['record']:.1f} against {large['parsingAlone']:.1f} ms)")
        yield at_least("how much faster that is", "QJsonDocument", large["qtDocument"] / large["record"], 3.5)
        yield at_least("how much faster that is", "nlohmann/json", large["nlohmannDocument"] / large["record"], 5.5)
        small = decoded["record", 1000]
        yield at_most("the same of 1,000 packages", "a frame at 60 Hz", small / FRAME, 0.25, more=f" ({small:.2f} ms)")

    @staticmethod
    def since(sent, moment):
        """Returns the milliseconds from the last of the times `sent` before `moment` until `moment`."""
        return moment - max(time for time in sent if time < moment)

    def opened(self, packages, times):
        """Opens a list `times` times and returns the medians."""
        all_ = []
        for _ in range(times):
            taken = self.scenario(packages, "list", packages)
            all_.append({**taken, **{when: self.since(self.server.listings_sent, taken[when]) for when in ("home", "shown")}})
        return {key: median([taken[key] for taken in all_]) for key in all_[0]}

    def lists(self):
        taken = self.opened(100_000, 1)
        yield at_most("reply of 100,000 packages on the wire → rows on screen", "its decoding alone",
                      taken["shown"] / taken["decoding"], 1.5, always=True,
                      more=f" ({taken['shown']:.1f} against {taken['decoding']:.1f} ms)")
        yield at_most("longest stall while it arrives, beyond the decoding", "a frame", taken["stall"] / FRAME, 1,
                      more=f" ({taken['stall']:.1f} ms)")
        held = (taken["held"] - taken["bytes"]) / taken["bytes"]
        yield at_most("memory of that list beyond the reply's bytes", "the reply's bytes", held, 1.5,
                      more=f" ({taken['held'] / MEGABYTE:.1f} MB held, {taken['kept'] / MEGABYTE:.1f} MB kept when it is "
                           f"closed)")

    def scrolling(self):
        most = {}
        for packages in (100, 100_000):
            taken = self.scenario(packages, "scroll", packages, 200, QT_SCALE_FACTOR="2")
            assert taken["ratio"] == 2
            most[packages] = taken["most"]
        long, short = most[100_000], most[100]
        yield at_most("scrolling 100,000 rows, 99th percentile of a frame, ratio 2", "16.7 ms", long / FRAME, 1,
                      more=f" ({long:.1f} ms)")
        yield at_most("the same", "100 rows", long / short, 1.1, more=f" ({long:.1f} against {short:.1f} ms)")

    # Profile

    def profile(self):
        with_photo, without = (self.scenario(0, "type", home=self.customer(0, photo)) for photo in (self.photos[10], None))
        yield at_most("a keystroke in the name with a 10 MB photo, 99th percentile, with its frame", "no photo",
                      with_photo["most"] / without["most"], 1.2,
                      more=f" ({with_photo['most']:.2f} against {without['most']:.2f} ms)")
        yield at_most("the same", "the same field bound to nothing", with_photo["most"] / with_photo["unbound"], 1.2,
                      more=f" ({with_photo['most']:.2f} against {with_photo['unbound']:.2f} ms)")
        taken = self.scenario(0, "pick", self.photos[12])
        yield at_most("picking a 12 MB photo: longest stall", "a frame", taken["picking"] / FRAME, 1,
                      more=f" ({taken['picking']:.1f} ms)")
        yield at_most("pressing save with it: longest stall", "copying its base64 text once",
                      taken["saving"] / taken["copying"], 3,
                      more=f" ({taken['saving']:.1f} against {taken['copying']:.1f} ms)")
        yield at_most("the same", "a frame", taken["saving"] / FRAME, 3)

    # Everywhere

    def walks(self):
        worked, taken = processor_time(lambda: self.scenario(3, "walk", home=self.nobody()))
        home = self.since(self.server.forms_sent, taken.pop("home"))
        slowest = max(taken, key=taken.get)
        yield at_most("sign-in reply → first frame of the dashboard", "a frame", home / FRAME, 2, more=f" ({home:.1f} ms)")
        yield at_most("push of a screen → its first frame, the slowest", "a frame", taken[slowest] / FRAME, 2,
                      more=f" ({slowest}, {taken[slowest]:.1f} ms)")
        browsing = browser.tour(self.machine, 3)
        yield at_most("processor time of a tour through all screens, from the start", "a static page in Chromium",
                      worked / browsing, 0.2, more=f" ({worked:.2f} against {browsing:.2f} s)")

    def nobody(self):
        self.count += 1
        self.machine.home(f"nobody{self.count}")
        return f"nobody{self.count}"

    def idle(self):
        seconds = 4
        watched = {"window": subprocess.Popen([str(part) for part in self.empty], stderr=subprocess.DEVNULL,
                                              env=self.machine.environment(self.machine.home("empty")))}
        started = []
        for screen in SCREENS:
            home = self.nobody() if screen in ("login", "registration") else self.customer(3)
            started.append(self.machine.launch("bench_app", self.server.address(3), "stay", screen, 3, home=home))
            watched[screen] = started[-1]
        for process in started:
            wait_for(process)
        time.sleep(1)
        before = {screen: activity(process.pid) for screen, process in watched.items()}
        time.sleep(seconds)
        after = {screen: activity(process.pid) for screen, process in watched.items()}
        for process in started:
            end(process)
        watched["window"].kill()
        watched["window"].wait()
        wakes = {s: (after[s][0] - before[s][0]) / seconds for s in watched}
        worked = {s: (after[s][1] - before[s][1]) / 1e6 for s in watched}
        window = wakes.pop("window")
        worst = max(wakes, key=wakes.get)
        yield at_most("wake-ups a second of an idle screen, the most, beyond the empty window", "the empty window",
                      wakes[worst] - window, 2, "a second",
                      more=f" ({worst}; processor time in {seconds} s: {max(worked[s] for s in SCREENS):.2f} ms at most, "
                           f"{worked['window']:.2f} the window)")

    def service(self):
        seconds = 1
        service = self.machine.start("marovenda-demo-service", "--port", 0, "--database", self.machine.home("demo") / "demo")
        port = service.first.rsplit(":", 1)[1].strip("/")
        path = "/api_paquetes.php?user_id=1"
        size = int(self.machine.run("bench_requests", port, path, 0.2).split()[1])
        constant = self.machine.start("bench_constant", size)
        ours, _, failed = self.machine.run("bench_requests", port, path, seconds).split()
        theirs, _, lost = self.machine.run("bench_requests", constant.first, path, seconds).split()
        assert failed == lost == "0", "a request failed"
        end(service)
        end(constant)
        yield at_least("the demo service: listings a second", f"its HTTP library with a constant of {size:,} bytes",
                       float(ours) / float(theirs), 0.5, more=f" ({float(ours):.0f} a second)")

    def size(self):
        root = self.machine.home("installed")
        subprocess.run(["cmake", "--install", str(self.build), "--component", "app", "--strip", "--prefix", str(root)],
                       check=True, capture_output=True)
        size = sum(f.stat().st_size for f in root.rglob("*") if f.is_file()) / 1e6
        yield at_most("size of the installed app without its libraries", "", size, 2.5, "MB")


def activity(pid):
    """Returns how often the threads of a process went to sleep, and their processor time in nanoseconds."""
    sleeps = worked = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        status = (task / "status").read_text()
        sleeps += int(status.split("voluntary_ctxt_switches:")[1].split()[0])
        worked += int((task / "schedstat").read_text().split()[0])
    return sleeps, worked


def processor_time(work):
    """Does `work`, which starts a program and waits for its end, and returns the program's processor time in seconds and
    what `work` returns."""
    def used():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime

    before = used()
    result = work()
    return used() - before, result
