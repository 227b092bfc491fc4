"""Runs all measurements and prints a table that compares each result with its target.

usage: report.py BUILD [--quick]

Without --quick it also writes docs/performance.md and docs/performance.svg.
"""

import argparse
import contextlib
import datetime
import pathlib
import sys

import browser
import growth
from machine import MEGABYTE, Machine, description, end, median
from rows import Bench
from server import Server

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"


def table(rows):
    lines = ["| what | against | target | measured | |", "|---|---|---|---|---|"]
    lines += [f"| {r.what} | {r.against} | {r.target} | {r.shown} | {'pass' if r.good else '**falls short**'} |" for r in rows]
    return "\n".join(lines)


def compared(bench, times):
    """Compares the app with a page in a browser: the time to the first content, and the memory with 200 packages."""
    shown, held = zip(*(browser.measure(bench.machine, 200) for _ in range(times)))
    home = bench.customer(200)
    process = bench.machine.start("bench_app", bench.server.address(200), "stay", "dashboard", 200, home=home)
    memory = browser.proportional([process.pid])
    end(process)
    return (f"| | first content | memory with 200 packages |\n|---|---|---|\n"
            f"| the app | {bench.notes['start']:.0f} ms | {memory / MEGABYTE:.0f} MB |\n"
            f"| the page in Chromium | {median(shown):.0f} ms | {median(held) / MEGABYTE:.0f} MB |\n")


def shapes(bench, times):
    """Measures the first frame of a window with 200 rounded shapes, for each way to draw them."""
    names = {"texture": "as the app draws them", "shape": "as Shape items", "canvas": "as Canvas items"}
    taken = {way: [] for way in names}
    program = bench.build / "bin" / "bench_window"
    for _ in range(times):
        for way, values in taken.items():
            command = [program, "qrc:/Marovenda/Bench/Shapes.qml", way]
            values.append(bench.machine.first_frame(command, bench.machine.home("empty")).milliseconds)
    return "| 200 shapes | first frame |\n|---|---|\n" + "".join(
        f"| {name} | {median(taken[way]):.0f} ms |\n" for way, name in names.items())


def page(rows, comparison, drawn, curves):
    exponents = "".join(f"| {name} | {' | '.join(f'{value:.3g}' for value in values)} | {growth.exponent(values):.2f} |\n"
                        for name, values in curves.items())
    return f"""# Performance

Written by `bench/run` on {datetime.date.today():%-d %B %Y}; run it again to update this page. Measured on {description()}. Each
result is compared with a reference measured in the same run; times are medians.

{table(rows)}

Qt's rendering log of the release executable gives the time of first frames. Stalls, frames and keystrokes are the duration of
the longest event, or of all events, on the app's main thread (`bench/TimedApplication.h`). A reply is on the wire when the
server has passed its last byte to the system. The list scrolls 100 points a frame, at ten places from its top to its end; the
jumps between these places do not count. Memory is the peak of the process, including its libraries. The time of a listing of
the demo service includes the connection. The rows on `DashboardResponse` measure decoding into memory that the process already
has; where decoding is the reference of another row, the memory is new.

## Compared with a browser

The reference is the same home screen as a small static page on this machine, in headless Chromium with a new profile. The page
requests nothing else and runs one line of script. The app's first content is its splash, which by design precedes the packages
for 2.5 seconds. Memory is the sum of all processes, with shared memory counted once. A browser that is already running opens a
page sooner; a page with a framework opens later.

{comparison}
## Shapes

The app draws rounded corners as textures that equal shapes share. Canvas items are still empty in their first frame.

{drawn}
## How cost grows

| packages | {' | '.join(f'{size:,}' for size in growth.SIZES)} | exponent |
|---|{'---|' * len(growth.SIZES)}---|
{exponents}
The exponent is that of the power law that fits best from 1,000 packages on.

![Cost over the number of packages](performance.svg)
"""


def main():
    arguments = argparse.ArgumentParser(usage=__doc__)
    arguments.add_argument("build", type=pathlib.Path)
    arguments.add_argument("--quick", action="store_true")
    options = arguments.parse_args()
    build = options.build.resolve()
    with contextlib.closing(Machine(build / "bin")) as machine:
        bench = Bench(machine, Server(), build, options.quick)
        rows = []
        for row in bench.all():
            rows.append(row)
            print(f"{row.what}; {row.target} {row.against}: {row.shown} {'pass' if row.good else 'FALLS SHORT'}",
                  file=sys.stderr, flush=True)
        print(table(rows))
        if not options.quick:
            curves = growth.measure(bench)
            comparison, drawn = compared(bench, 3), shapes(bench, 7)
            print("\n" + comparison + "\n" + drawn)
            (DOCS / "performance.svg").write_text(growth.plot(curves))
            (DOCS / "performance.md").write_text(page(rows, comparison, drawn, curves))
    print(f"\n{sum(row.good for row in rows)} of {len(rows)} at their target")


if __name__ == "__main__":
    main()
