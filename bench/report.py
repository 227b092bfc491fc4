"""Runs the measurements and prints a table that compares each result with its target.

Writes docs/performance.md with its pictures if it does not run with --quick or --only.
"""

import argparse
import contextlib
import datetime
import pathlib
import sys

import browser
import growth
import held
import slow
import timeline
from machine import MEGABYTE, Machine, description, end, median
from rows import Bench, decided
from server import Server

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
TRIED = pathlib.Path(__file__).resolve().parent / "tried.md"
RUNS = 5

PARTS = {part.__name__: part for part in (
    Bench.starts, Bench.memory, Bench.decoding, Bench.lists, Bench.scrolling, Bench.profile, Bench.walks, Bench.idle,
    slow.slow_disk, slow.slow_processor, Bench.service, Bench.size)}


def table(rows):
    lines = ["| what | against | target | measured | spread | |", "|---|---|---|---|---|---|"]
    lines += [f"| {r.what} | {r.against} | {r.target} | {r.shown} | {r.spread} | {'pass' if r.good else '**falls short**'} |"
              for r in rows]
    return "\n".join(lines)


def measured(bench, names, times):
    """Runs these parts so often, and yields the row of each median run."""
    for name in names:
        for runs in zip(*(list(PARTS[name](bench)) for _ in range(times)), strict=True):
            row = decided(runs)
            spread = f"; {row.spread}" if row.spread else ""
            print(f"{row.what}; {row.target} {row.against}: {row.shown}{spread} {'pass' if row.good else 'FALLS SHORT'}",
                  file=sys.stderr, flush=True)
            yield row


def compared(bench):
    """Compares the app with a page in a browser: the time to the first content, and the memory with 200 packages."""
    shown, held = zip(*(browser.measure(bench.machine, 200) for _ in range(3)))
    start = median([bench.machine.first_frame([bench.app], bench.machine.home("empty")).milliseconds for _ in range(9)])
    home = bench.customer(200)
    process = bench.machine.start("bench_app", bench.server.address(200), "stay", "dashboard", 200, home=home)
    memory = browser.proportional([process.pid])
    end(process)
    return (f"| | first content | memory with 200 packages |\n|---|---|---|\n"
            f"| the app | {start:.0f} ms | {memory / MEGABYTE:.0f} MB |\n"
            f"| the page in Chromium | {median(shown):.0f} ms | {median(held) / MEGABYTE:.0f} MB |\n")


def shapes(bench):
    """Measures the first frame of a window with 200 rounded shapes, for each way to draw them."""
    names = {"texture": "as the app draws them", "shape": "as Shape items", "canvas": "as Canvas items"}
    taken = {way: [] for way in names}
    program = bench.build / "bin" / "bench_window"
    for _ in range(7):
        for way, values in taken.items():
            command = [program, "qrc:/Marovenda/Bench/Shapes.qml", way]
            values.append(bench.machine.first_frame(command, bench.machine.home("empty")).milliseconds)
    return "| 200 shapes | first frame |\n|---|---|\n" + "".join(
        f"| {name} | {median(taken[way]):.0f} ms |\n" for way, name in names.items())


def drawn_growth(bench):
    curves = growth.measure(bench)
    exponents = "".join(f"| {name} | {' | '.join(f'{value:.3g}' for value in values)} | {growth.exponent(values):.2f} |\n"
                        for name, values in curves.items())
    text = f"""| packages | {' | '.join(f'{size:,}' for size in growth.SIZES)} | exponent |
|---|{'---|' * len(growth.SIZES)}---|
{exponents}"""
    return text, growth.plot(curves)


def drawn_start(bench):
    phases = timeline.measure(bench)
    return timeline.table(phases), timeline.plot(phases)


# What follows the table: each returns its text, and a picture where FILES names one.
SECTIONS = {"timeline": drawn_start, "held": held.table, "compared": compared, "shapes": shapes, "growth": drawn_growth}
FILES = {"timeline": "performance-start.svg", "growth": "performance.svg"}


def page(rows, left_out, texts):
    tried = f"## What was tried and not kept\n\n{TRIED.read_text()}\n" if TRIED.exists() else ""
    return f"""# Performance

Written by `bench/run` on {datetime.date.today():%-d %B %Y}; run it again to update this page. Measured on {description()}. Each
result is compared with a reference measured in the same run. The table shows the median of {RUNS} runs, and beside it the lowest
and the highest result.

{table(rows)}
{left_out}
Qt's rendering log of the release executable gives the time of first frames. Stalls, frames and keystrokes are the duration of
the longest event, or of all events, on the app's main thread (`bench/TimedApplication.h`). A reply is on the wire when the
server has passed its last byte to the system. The list scrolls 100 points a frame, at ten places from its top to its end; the
jumps between these places do not count. Memory is the peak of the process, including its libraries; private memory leaves out
what other processes share. The time of a listing of the demo service includes the connection. The rows on `DashboardResponse`
measure decoding into memory that the process already has; where decoding is the reference of another row, the memory is new.

A slow disk is a library that makes `fsync` and `fdatasync` take {slow.DELAY} ms longer (`tests/support/slow-disk.cpp`). A slow
processor is a control group whose processes get 1 ms of processor time in every 8 ms (`bench/processor.py`); the display is not
in the group. There a list of 10,000 rows scrolls by 3,000 points a second for four seconds, and a frame is dropped if it is
missing from the 60 that are due each second. The quota alone interrupts a process for up to {slow.PAUSE} ms, so a stall at full
speed counts as at least a tenth of that. The stalls of a slow processor are those of a tour: start, sign-in, lists, a form,
typing, and a photo of 12 MB (`bench/tours.cpp`). The keystrokes go by turns to the field of the profile and to the same field
below it, which is bound to nothing. The page whose processor time is compared shows as many screens for as long; they slide in
as the app's do.

## The start

![What the app does until its first frame](performance-start.svg)

{texts["timeline"]}
A library that stands between the program and Qt notes the moments (`bench/start-clock.cpp`). The times are medians.

## Private memory on the dashboard

{texts["held"]}
It is what closing the app would free. Libraries and fonts count if no other process on the machine of the measurement uses them;
on a desktop or a phone with other Qt programs they are shared.

{tried}## Compared with a browser

The reference is the same home screen as a small static page on this machine, in headless Chromium with a new profile. The page
requests nothing else and runs one line of script. The app's first content is its splash, which by design precedes the packages
for 2.5 seconds. Memory is the sum of all processes, with shared memory counted once. A browser that is already running opens a
page sooner; a page with a framework opens later.

{texts["compared"]}
## Shapes

The app draws rounded corners as textures that equal shapes share. Canvas items are still empty in their first frame.

{texts["shapes"]}
## How cost grows

{texts["growth"]}
The exponent is that of the power law that fits best from 1,000 packages on.

![Cost over the number of packages](performance.svg)
"""


def options():
    parser = argparse.ArgumentParser(description=__doc__, prog="bench/run")
    parser.add_argument("build", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("--quick", action="store_true", help=f"one run instead of {RUNS}")
    parser.add_argument("--only", type=lambda names: names.split(","), metavar="NAME,...",
                        help="only these parts, of: " + ", ".join([*PARTS, *SECTIONS]))
    chosen = parser.parse_args()
    for name in chosen.only or []:
        if name not in PARTS and name not in SECTIONS:
            parser.error(f"There is no part {name}; see --help.")
    return chosen


def main():
    chosen = options()
    build = chosen.build.resolve()
    whole = not chosen.only and not chosen.quick
    parts = [name for name in PARTS if not chosen.only or name in chosen.only]
    sections = [name for name in SECTIONS if whole or name in (chosen.only or [])]
    # Without the whole, the pictures are for looking at.
    folder = DOCS if whole else build
    with contextlib.closing(Machine(build / "bin")) as machine:
        bench = Bench(machine, Server(), build)
        rows = list(measured(bench, parts, 1 if chosen.quick else RUNS))
        left_out = "".join(f"\n{line}\n" for line in dict.fromkeys(bench.left_out))
        if rows:
            print(table(rows))
        print(left_out, end="")
        texts = {}
        for name in sections:
            made = SECTIONS[name](bench)
            texts[name], picture = made if name in FILES else (made, None)
            print("\n" + texts[name])
            if picture:
                (folder / FILES[name]).write_text(picture)
                print(f"{folder / FILES[name]}")
        if whole:
            (DOCS / "performance.md").write_text(page(rows, left_out, texts))
    if rows:
        print(f"\n{sum(row.good for row in rows)} of {len(rows)} at their target")


if __name__ == "__main__":
    main()
