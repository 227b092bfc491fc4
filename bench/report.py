"""Runs the benchmarks and prints a table of each.

usage: report.py FOLDER-OF-EXECUTABLES
"""

import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

RUNS = 21


WINDOWS = {
    "empty": ["qrc:/Empty.qml"],
    "app": ["qrc:/Marovenda/App/MarovendaApp.qml"],
    "texture": ["qrc:/Shapes.qml", "texture"],
    "shape": ["qrc:/Shapes.qml", "shape"],
    "canvas": ["qrc:/Shapes.qml", "canvas"],
}


def first_frames(folder):
    """Milliseconds from the start of the process to its end with the first frame, the windows taking turns."""
    times = {what: [] for what in WINDOWS}
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software",
                       "XDG_DATA_HOME": home, "XDG_CACHE_HOME": home, "XDG_RUNTIME_DIR": home,
                       "DBUS_SESSION_BUS_ADDRESS": "disabled:"}
        for turn in range(RUNS + 2):
            for what, window in WINDOWS.items():
                before = time.perf_counter()
                subprocess.run([folder / "bench_first_frame", *window], check=True, env=environment)
                if turn >= 2:  # the first turns fill the caches
                    times[what].append(1000 * (time.perf_counter() - before))
    return {what: statistics.median(each) for what, each in times.items()}


def dashboard(folder):
    """Microseconds of processor time by (what, number of packages)."""
    done = subprocess.run([folder / "bench_dashboard", "--benchmark_format=json", "--benchmark_repetitions=5",
                           "--benchmark_report_aggregates_only=true"], check=True, capture_output=True, text=True)
    found = {}
    for each in json.loads(done.stdout)["benchmarks"]:
        if each["aggregate_name"] == "median":
            what, packages = each["run_name"].split("/")
            found[what, int(packages)] = each["cpu_time"]
    return found


def main():
    folder = pathlib.Path(sys.argv[1])
    frames = first_frames(folder)
    print(f"Process start to first frame, median of {RUNS}, software rendering, no display:")
    for what, name in (("empty", "empty window"), ("app", "the app"), ("texture", "200 shapes as shared textures"),
                       ("shape", "200 shapes as Shape items"), ("canvas", "200 shapes as Canvas items")):
        print(f"  {name:30} {frames[what]:7.1f} ms  {frames[what] / frames['empty']:6.2f} times the empty window")
    print()
    figures = dashboard(folder)
    print("Reply bytes to DashboardResponse, processor time, median of 5:")
    print(f"  {'packages':>8}  {'record':>12}  {'parsing alone':>13}  {'QJsonDocument':>13}  record/parsing  record/Qt")
    for packages in (3, 1000, 100_000):
        record, alone, qt = (figures[what, packages] for what in ("record", "parsingAlone", "qtDocument"))
        print(f"  {packages:>8}  {record:>9.1f} µs  {alone:>10.1f} µs  {qt:>10.1f} µs  {record / alone:>14.2f}"
              f"  {record / qt:>9.2f}")


if __name__ == "__main__":
    main()
