"""The rows of the table. Each compares a measurement with a reference measured in the same run."""

import concurrent.futures
import json
import pathlib
import subprocess
import time

from machine import MEGABYTE, account, end, median

FRAME = 1000 / 60
SCREENS = ("login", "registration", "dashboard", "mailbox", "quotation", "vehicle", "profile", "credits", "packages",
           "quotations")


class Row:
    """A measurement: `shown` is its result and `good` tells whether it meets `target`."""

    def __init__(self, what, against, target, shown, good):
        self.what, self.against, self.target, self.shown, self.good = what, against, target, shown, good


def at_most(what, against, value, limit, unit="×", more=""):
    return Row(what, against, f"≤ {limit:g} {unit}", f"{value:.2f} {unit}{more}", value <= limit)


def at_least(what, against, value, limit, more=""):
    return Row(what, against, f"≥ {limit:g} ×", f"{value:.2f} ×{more}", value >= limit)


def make_photo(folder, megabytes):
    """Creates a JPEG of this size that compresses like a camera's: fine grain over soft shapes."""
    path = folder / f"photo{megabytes}.jpg"
    wanted = megabytes * 1_000_000
    width = int(1373 * megabytes ** 0.5) // 4 * 4
    for _ in range(4):
        subprocess.run(["convert", "-seed", "1", "-size", f"{width}x{width * 3 // 4}", "plasma:fractal", "-attenuate", "0.4",
                        "+noise", "gaussian", "-quality", "93", str(path)], check=True)
        size = path.stat().st_size
        if wanted <= size < 1.1 * wanted:
            break
        width = int(width * (1.04 * wanted / size) ** 0.5) // 4 * 4
    return path


class Bench:
    def __init__(self, machine, server, build, quick):
        self.machine, self.server, self.build, self.quick = machine, server, build, quick
        self.app = build / "bin" / "marovenda"
        self.empty = [build / "bin" / "bench_empty", "qrc:/Marovenda/Empty/Empty.qml"]
        self.notes = {}
        photos = machine.home("photos")
        with concurrent.futures.ThreadPoolExecutor() as pool:
            self.photos = dict(zip((10, 12), pool.map(lambda size: make_photo(photos, size), (10, 12))))
        self.count = 0

    def customer(self, packages, photo=None):
        """Creates a home folder with a signed-in customer and returns its name."""
        self.count += 1
        name = f"customer{self.count}"
        self.machine.run("bench_app", self.server.address(packages), "store", *([photo] if photo else []), home=name)
        return name

    def scenario(self, packages, *what, home=None, **more):
        home = home or self.customer(packages)
        return json.loads(self.machine.run("bench_app", self.server.address(packages), *what, home=home, **more))

    # Start and memory

    def starts(self):
        times = 5 if self.quick else 20
        empty_home, signed_home = self.machine.home("empty"), self.machine.home(self.customer(0, self.photos[10]))
        kinds = {"window": (self.empty, empty_home), "app": ([self.app], empty_home), "signed in": ([self.app], signed_home)}
        taken = {kind: [] for kind in kinds}
        for turn in range(times + 2):
            for kind, (command, home) in kinds.items():
                ended = self.machine.first_frame(command, home)
                if turn >= 2:  # the first ones fill the caches
                    taken[kind].append(ended.milliseconds)
        window, app, signed = (median(taken[kind]) for kind in kinds)
        self.notes["start"] = app
        yield at_most("process start → first frame of the splash", "an empty Qt Quick window", app / window, 1.3,
                      more=f" ({app:.1f} against {window:.1f} ms)")
        yield at_most("the same with a 10 MB photo and a customer signed in", "an empty store", signed / app, 1.05,
                      more=f" ({signed:.1f} against {app:.1f} ms)")

    def memory(self):
        times = 1 if self.quick else 3
        window = median([self.machine.first_frame(self.empty, self.machine.home("empty"), 1).memory for _ in range(times)])
        splash = median([self.machine.first_frame([self.app], self.machine.home("empty"), 2.2).memory
                         for _ in range(times)])
        home = self.customer(200)
        held = []
        for _ in range(times):
            process = self.machine.start("bench_app", self.server.address(200), "stay", "dashboard", 200, home=home)
            held.append(account(process.pid, "VmHWM"))
            end(process)
        window_mb, splash_mb, home_mb = (value / MEGABYTE for value in (window, splash, median(held)))
        yield at_most("peak memory at the splash, to its end", "the empty window", splash_mb / window_mb, 1.35,
                      more=f" ({splash_mb:.1f} against {window_mb:.1f} MB)")
        yield at_most("peak memory on the dashboard with 200 packages", "the empty window", home_mb / window_mb, 1.5,
                      more=f" ({home_mb:.1f} MB)")

    # Decoding and lists

    def decoding(self):
        filtered = "/(1000|100000)$" if self.quick else "."
        done = self.machine.run("bench_decode", "--benchmark_format=json", f"--benchmark_filter={filtered}",
                                f"--benchmark_repetitions={1 if self.quick else 3}")
        found = {}
        for each in json.loads(done)["benchmarks"]:
            if each["run_type"] == "iteration":
                what, packages = each["run_name"].split("/")
                found.setdefault((what, int(packages)), []).append(each["cpu_time"] / 1000)
        self.decoded = {key: median(values) for key, values in found.items()}
        large = {what: self.decoded[what, 100_000] for what in ("record", "parsingAlone", "qtDocument", "nlohmannDocument")}
        yield at_most("reply bytes → DashboardResponse of 100,000 packages", "parsing alone (simdjson)",
                      large["record"] / large["parsingAlone"], 3.5,
                      more=f" ({large['record']:.1f} against {large['parsingAlone']:.1f} ms)")
        yield at_least("how much faster that is", "QJsonDocument", large["qtDocument"] / large["record"], 3.5)
        yield at_least("how much faster that is", "nlohmann/json", large["nlohmannDocument"] / large["record"], 5.5)
        small = self.decoded["record", 1000]
        yield at_most("the same of 1,000 packages", "a frame at 60 Hz", small / FRAME, 0.25, more=f" ({small:.2f} ms)")

    def since_sent(self, moment):
        """Returns the milliseconds from the last reply before `moment` until `moment`."""
        return moment - max(sent for sent in self.server.sent if sent < moment)

    def opened(self, packages, times):
        """Opens a list `times` times and returns the medians."""
        all_ = []
        for _ in range(times):
            taken = self.scenario(packages, "list", packages)
            all_.append({**taken, **{when: self.since_sent(taken[when]) for when in ("home", "shown")}})
        return {key: median([taken[key] for taken in all_]) for key in all_[0]}

    def lists(self):
        taken = self.opened(100_000, 1 if self.quick else 3)
        yield at_most("reply of 100,000 packages on the wire → rows on screen", "its decoding alone",
                      taken["shown"] / taken["decoding"], 1.5,
                      more=f" ({taken['shown']:.1f} against {taken['decoding']:.1f} ms)")
        yield at_most("longest stall while it arrives, beyond the decoding", "a frame", taken["stall"] / FRAME, 1,
                      more=f" ({taken['stall']:.1f} ms)")
        held = (taken["held"] - taken["bytes"]) / taken["bytes"]
        yield at_most("memory of that list beyond the reply's bytes", "the reply's bytes", held, 1.5,
                      more=f" ({taken['held'] / MEGABYTE:.1f} MB held, {taken['kept'] / MEGABYTE:.1f} MB kept when it is "
                           f"closed)")

    def scrolling(self):
        frames, times = (200, 1) if self.quick else (600, 3)
        most = {packages: [] for packages in (100, 100_000)}
        for _ in range(times):
            for packages in most:
                taken = self.scenario(packages, "scroll", packages, frames, QT_SCALE_FACTOR="2")
                assert taken["ratio"] == 2
                most[packages].append(taken["most"])
        long, short = median(most[100_000]), median(most[100])
        yield at_most("scrolling 100,000 rows, 99th percentile of a frame, ratio 2", "16.7 ms", long / FRAME, 1,
                      more=f" ({long:.1f} ms)")
        yield at_most("the same", "100 rows", long / short, 1.1, more=f" ({long:.1f} against {short:.1f} ms)")

    # Profile

    def profile(self):
        times = 1 if self.quick else 3
        most = {photo: [] for photo in (None, self.photos[10])}
        for _ in range(times):
            for photo, values in most.items():
                values.append(self.scenario(0, "type", home=self.customer(0, photo))["most"])
        with_photo, without = median(most[self.photos[10]]), median(most[None])
        yield at_most("a keystroke in the name with a 10 MB photo, 99th percentile, with its frame", "no photo",
                      with_photo / without, 1.2, more=f" ({with_photo:.2f} against {without:.2f} ms)")
        yield at_most("the same", "1 ms", with_photo, 1, "ms")
        all_ = [self.scenario(0, "pick", self.photos[12]) for _ in range(times)]
        taken = {key: median([one[key] for one in all_]) for key in ("picking", "saving", "copying")}
        yield at_most("picking a 12 MB photo: longest stall", "a frame", taken["picking"] / FRAME, 1,
                      more=f" ({taken['picking']:.1f} ms)")
        yield at_most("pressing save with it: longest stall", "copying its base64 text once",
                      taken["saving"] / taken["copying"], 3,
                      more=f" ({taken['saving']:.1f} against {taken['copying']:.1f} ms)")
        yield at_most("the same", "a frame", taken["saving"] / FRAME, 3)

    # Everywhere

    def walks(self):
        times = 1 if self.quick else 2
        homes, pushes = [], {}
        for _ in range(times):
            taken = self.scenario(3, "walk", 1 if self.quick else 2, home=self.nobody())
            homes.append(self.since_sent(taken.pop("home")))
            for screen, value in taken.items():
                pushes.setdefault(screen, []).append(value)
        home = median(homes)
        slowest = max(pushes, key=lambda screen: median(pushes[screen]))
        push = median(pushes[slowest])
        yield at_most("sign-in reply → first frame of the dashboard", "a frame", home / FRAME, 2, more=f" ({home:.1f} ms)")
        yield at_most(f"push of a screen → its first frame, the slowest ({slowest})", "a frame", push / FRAME, 2,
                      more=f" ({push:.1f} ms)")

    def nobody(self):
        self.count += 1
        self.machine.home(f"nobody{self.count}")
        return f"nobody{self.count}"

    def idle(self):
        seconds = 2 if self.quick else 10
        watched = {"window": subprocess.Popen([str(part) for part in self.empty], stderr=subprocess.DEVNULL,
                                              env=self.machine.environment(self.machine.home("empty")))}
        started = []
        for screen in SCREENS:
            home = self.nobody() if screen in ("login", "registration") else self.customer(3)
            started.append(self.machine.start("bench_app", self.server.address(3), "stay", screen, 3, home=home))
            watched[screen] = started[-1]
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
        yield at_most(f"wake-ups a second of an idle screen, the most ({worst}), beyond the empty window", "the empty window",
                      wakes[worst] - window, 2, "a second",
                      more=f" (processor time in {seconds} s: {max(worked[s] for s in SCREENS):.2f} ms at most, "
                           f"{worked['window']:.2f} the window)")

    def service(self):
        seconds = 1 if self.quick else 5
        service = self.machine.start("marovenda-demo-service", "--port", 0, "--database", self.machine.home("demo") / "demo")
        port = service.first.rsplit(":", 1)[1].strip("/")
        path = "/api_paquetes.php?user_id=1"
        size = int(self.machine.run("bench_requests", port, path, 0.2).split()[1])
        constant = self.machine.start("bench_constant", size)
        ratios, rates = [], []
        for _ in range(1 if self.quick else 3):
            ours, _, failed = self.machine.run("bench_requests", port, path, seconds).split()
            theirs, _, lost = self.machine.run("bench_requests", constant.first, path, seconds).split()
            assert failed == lost == "0", "a request failed"
            ratios.append(float(ours) / float(theirs))
            rates.append(float(ours))
        end(service)
        end(constant)
        yield at_least("the demo service: listings a second", f"its HTTP library with a constant of {size:,} bytes",
                       median(ratios), 0.5, more=f" ({median(rates):.0f} a second)")

    def size(self):
        root = self.machine.home("installed")
        subprocess.run(["cmake", "--install", str(self.build), "--component", "app", "--strip", "--prefix", str(root)],
                       check=True, capture_output=True)
        size = sum(f.stat().st_size for f in root.rglob("*") if f.is_file()) / 1e6
        yield at_most("size of the installed app without its libraries", "", size, 2.5, "MB")

    def all(self):
        for part in (self.starts, self.memory, self.decoding, self.lists, self.scrolling, self.profile, self.walks, self.idle,
                     self.service, self.size):
            yield from part()


def activity(pid):
    """Returns how often the threads of a process went to sleep, and their processor time in nanoseconds."""
    sleeps = worked = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        status = (task / "status").read_text()
        sleeps += int(status.split("voluntary_ctxt_switches:")[1].split()[0])
        worked += int((task / "schedstat").read_text().split()[0])
    return sleeps, worked
