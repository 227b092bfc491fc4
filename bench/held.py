"""Lists the private memory of the app on the dashboard, beside an empty window's."""

import pathlib
import re
import subprocess
import time

from machine import MEGABYTE, end

# What a mapping of smaps belongs to, by its name, and why the app has it. The first pattern that matches counts.
GROUPS = (
    (r"^\[heap\]|^anonymous|^\[anon", "heap and stacks",
     "objects of the QML engine and of the screens, texts, glyphs, the window's picture, a stack for each thread"),
    (r"JSGCHeap", "JavaScript's heap", "the values of the layouts' bindings"),
    (r"libQt6QuickTemplates2", "Qt Quick Templates", "fields and buttons, which bring touch, keyboard and accessibility"),
    (r"libQt6(Quick|Gui|Svg|OpenGL)", "Qt Quick and Qt Gui", "drawing texts and pictures, which an empty window does not"),
    (r"libQt6Network", "Qt Network", "the connection to the service"),
    (r"libQt6", "other parts of Qt", "models, the QML engine"),
    (r"libsqlite", "SQLite", "the store"),
    (r"\.(otf|ttf)|fontconfig|freetype|harfbuzz|cache-", "fonts",
     "the files of the faces on show, and the libraries that find, load and shape them"),
    (r"^(marovenda|bench_)", "the executable", "the app's own code and its compiled layouts"),
    (r"", "other libraries", "decoding of JSON and pictures, the system's own"),
)


def private(pid):
    """Returns the private bytes of a process by group."""
    sizes = dict.fromkeys((label for _, label, _ in GROUPS), 0)
    group = None
    for line in pathlib.Path(f"/proc/{pid}/smaps").read_text().splitlines():
        if header := re.match(r"[0-9a-f]+-[0-9a-f]+ \S+ \S+ \S+ \d+\s*(.*)", line):
            name = header[1].rsplit("/", 1)[-1] or "anonymous"
            group = next(label for pattern, label, _ in GROUPS if re.search(pattern, name))
        elif found := re.match(r"Private_(?:Clean|Dirty):\s+(\d+)", line):
            sizes[group] += 1024 * int(found[1])
    return sizes


def table(bench):
    # One after the other: what two processes share is private to neither.
    process = subprocess.Popen([str(part) for part in bench.empty], stderr=subprocess.DEVNULL,
                               env=bench.machine.environment(bench.machine.home("empty")))
    time.sleep(2)
    window = private(process.pid)
    process.kill()
    process.wait()
    process = bench.machine.start("bench_app", bench.server.address(200), "stay", "dashboard", 200, home=bench.customer(200))
    app = private(process.pid)
    end(process)
    lines = ["| what (MB) | the app | an empty window | more | why |", "|---|---|---|---|---|"]
    for _, label, why in sorted(GROUPS, key=lambda group: window[group[1]] - app[group[1]]):
        mine, theirs = app[label] / MEGABYTE, window[label] / MEGABYTE
        lines.append(f"| {label} | {mine:.1f} | {theirs:.1f} | {mine - theirs:.1f} | {why} |")
    mine, theirs = (sum(held.values()) / MEGABYTE for held in (app, window))
    lines.append(f"| together | {mine:.1f} | {theirs:.1f} | {mine - theirs:.1f} | |")
    return "\n".join(lines) + "\n"
