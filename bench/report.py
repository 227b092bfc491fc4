"""Measures, and prints one table with each figure against its target.

usage: report.py BUILD [--quick]

Without --quick it also writes docs/performance.md and the plot beside it.
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
    """The app and a browser's page, each from its start to its first content, and their memory with 200 packages."""
    shown, held = zip(*(browser.measure(bench.machine, 200) for _ in range(times)))
    home = bench.customer(200)
    process = bench.machine.start("bench_app", bench.server.address(200), "stay", "dashboard", 200, home=home)
    memory = browser.proportional([process.pid])
    end(process)
    return (f"| | first content | memory with 200 packages |\n|---|---|---|\n"
            f"| the app | {bench.notes['start']:.0f} ms | {memory / MEGABYTE:.0f} MB |\n"
            f"| the page in Chromium | {median(shown):.0f} ms | {median(held) / MEGABYTE:.0f} MB |\n")


def shapes(bench, times):
    """A window with 200 rounded shapes up to its first frame, by the way to draw them."""
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

Written by `bench/run` on {datetime.date.today():%-d %B %Y}; run it again to renew this page. Measured on {description()}. Each
figure stands against something else measured in the same run; times are medians.

{table(rows)}

First frames are what Qt's own rendering log tells, of the release executable. Stalls, frames and keystrokes are the time of
the longest event, or of all events, of the app's main thread, with a clock around its event loop (`bench/TimedApplication.h`).
A reply counts as on the wire once the server's last byte has been handed to the system. Scrolling goes 100 points a frame,
at ten places from the list's top to its end; the jumps between the places are left out. Memory is what the process holds
at most, libraries included. A listing of the demo service counts with its connection. What decoding
alone takes is warm in the table's rows on `DashboardResponse`, and into fresh memory where the app's is compared with it.

## Beside a browser

The same home screen with the same rows as a small static page in headless Chromium, with a profile of its own, from this
machine. The page asks for nothing and runs one line of script; the app's first content is its splash, which it shows for
2.5 seconds by design before the packages. Memory is that of all processes, what they share counted once. A browser that is
already running opens a page sooner; a page with a framework opens later.

{comparison}
## Shapes

Why corners are textures that all shapes alike share. Canvas items are still empty in their first frame.

{drawn}
## How cost grows

| packages | {' | '.join(f'{size:,}' for size in growth.SIZES)} | exponent |
|---|{'---|' * len(growth.SIZES)}---|
{exponents}
The exponent is that of the power that fits best from 1,000 packages on.

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
