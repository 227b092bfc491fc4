"""The rows of a slow disk and of a slow processor."""

from machine import median
from rows import FRAME, at_most

DELAY = 50  # ms that each synchronisation of a file takes longer
# How long the quota alone interrupts a process, in ms: the system notices after a tick of 4 ms that the quota is used up.
PAUSE = 32


def slow_disk(bench):
    machine = bench.machine
    library = str(machine.programs / "bench_slow_disk.so")
    disks = {delay: {"LD_PRELOAD": library, "MAROVENDA_DISK_DELAY": str(delay)} for delay in (0, DELAY)}
    starts, written = {delay: [] for delay in disks}, {}
    for _ in range(9):
        for delay, environment in disks.items():
            home = machine.home(bench.nobody())
            starts[delay].append(machine.first_frame([bench.app], home, **environment).milliseconds)
    for delay, environment in disks.items():
        written[delay] = bench.scenario(3, "write", bench.photos[12], home=bench.nobody(), **environment)
        written[delay]["home"] = median([bench.since(bench.server.forms_sent, home) for home in written[delay]["homes"]])

    def row(what, slow, fast, limit):
        return at_most(f"with {DELAY} ms more for each synchronisation of a file: {what}", "no delay", slow / fast, limit,
                       more=f" ({slow:.1f} against {fast:.1f} ms)")

    slow, fast = written[DELAY], written[0]
    yield row("process start → first frame", median(starts[DELAY]), median(starts[0]), 1.05)
    yield row("sign-in reply → first frame of the dashboard", slow["home"], fast["home"], 1.1)
    yield row("longest stall while a 12 MB photo is saved", slow["saving"], fast["saving"], 1.1)
    yield at_most("the same: longest stall while somebody types 20 characters with pauses", "a frame",
                  slow["typing"] / FRAME, 1, more=f" ({slow['typing']:.1f} ms; {fast['typing']:.1f} without delay)")


def slow_processor(bench):
    machine = bench.machine
    if not machine.slow.members:
        bench.left_out.append("The rows of a slow processor are left out: no control group with a quota can be made here "
                              "(bench/processor.py).")
        return
    frames = {"window": [], "app": []}
    for _ in range(5):
        frames["window"].append(machine.first_frame(bench.empty, machine.home("empty"), slow=True).milliseconds)
        frames["app"].append(machine.first_frame([bench.app], machine.home("empty"), slow=True).milliseconds)
    window, app = median(frames["window"]), median(frames["app"])
    yield at_most("with an eighth of a processor: process start → first frame", "an empty Qt Quick window", app / window, 1.3,
                  more=f" ({app:.0f} against {window:.0f} ms)")

    fast, slow = (bench.scenario(None, "tour", bench.photos[12], home=bench.nobody(), slow=slow) for slow in (False, True))
    homes = [median([bench.since(bench.server.forms_sent, home) for home in taken["homes"]]) for taken in (fast, slow)]
    yield at_most("the same: sign-in reply → first frame of the dashboard", "the empty window's first frame",
                  homes[1] / window, 0.5, more=f" ({homes[1]:.1f} ms; {homes[0]:.1f} at full speed)")

    plain = bench.scenario(None, "plain", slow["rowHeight"], home="empty", slow=True)
    ours, theirs = (taken["dropped"] / taken["due"] for taken in (slow["scrolled"], plain))
    # A hundredth, which nobody sees, is the least that counts.
    yield at_most("the same: frames dropped while 10,000 rows scroll", "a plain ListView with as much text",
                  max(ours, 0.01) / max(theirs, 0.01), 1.2,
                  more=f" ({ours:.0%} against {theirs:.0%}; work for a frame at full speed: {fast['scrolled']['work']:.1f} ms)")

    times = {step: slow["stalls"][step] / max(stall, PAUSE / 10) for step, stall in fast["stalls"].items()}
    worst = max(times, key=times.get)
    yield at_most("the same: longest stall of a step, the worst step", "the same step at full speed", times[worst], 10,
                  more=f" ({worst}: {slow['stalls'][worst]:.0f} against {fast['stalls'][worst]:.1f} ms; the longest of all "
                       f"{max(slow['stalls'].values()):.0f} ms)")
