"""Measures what happens between the start of a program and its window's first frame, and draws it as a timeline."""

import subprocess
import time

from machine import median

# Each phase ends with this moment (start-clock.cpp).
PHASES = {"loaded": "loading libraries", "application": "connecting to the display", "engine": "only instance, QML engine",
          "window": "creating the window", "frame": "drawing the first frame"}
COLOURS = ("#5B8DEF", "#34A853", "#F29900", "#8E44AD", "#0A3D91")
WIDTH, LEFT, RIGHT, TOP, BAR, GAP, LINE = 760, 120, 20, 12, 34, 14, 18


def moments(machine, command, home):
    """Starts a program and returns the milliseconds from its start until each moment."""
    file = machine.home("clock") / "moments"
    file.unlink(missing_ok=True)
    environment = machine.environment(home, LD_PRELOAD=str(machine.programs / "bench_start_clock.so"),
                                      MAROVENDA_START_CLOCK=str(file))
    start = time.monotonic_ns() / 1e6
    process = subprocess.Popen([str(part) for part in command], env=environment, stderr=subprocess.DEVNULL)
    try:
        until = time.monotonic() + 30
        while not file.exists() or "frame " not in file.read_text():
            if time.monotonic() > until:
                raise RuntimeError(f"{command[0]} has not shown a window")
            time.sleep(0.02)
    finally:
        process.kill()
        process.wait()
    lines = (line.rsplit(" ", 1) for line in file.read_text().splitlines())
    return {moment: float(time_) - start for moment, time_ in lines}


def measure(bench, times=15):
    """Returns the median duration of each phase, in ms, for the app and for an empty window."""
    programs = {"the app": [bench.app], "an empty window": bench.empty}
    runs = {name: [] for name in programs}
    for _ in range(times + 2):
        for name, command in programs.items():
            runs[name].append(moments(bench.machine, command, bench.machine.home("empty")))
    ends = {name: [0] + [median([run[moment] for run in taken[2:]]) for moment in PHASES] for name, taken in runs.items()}
    return {name: [b - a for a, b in zip(found, found[1:])] for name, found in ends.items()}


def table(phases):
    lines = ["| phase (ms) | " + " | ".join(phases) + " |", "|---|" + "---|" * len(phases)]
    for index, phase in enumerate(PHASES.values()):
        lines.append(f"| {phase} | " + " | ".join(f"{values[index]:.1f}" for values in phases.values()) + " |")
    lines.append("| together | " + " | ".join(f"{sum(values):.1f}" for values in phases.values()) + " |")
    return "\n".join(lines) + "\n"


def plot(phases):
    """Returns a bar for each program, with its phases from left to right, as SVG."""
    longest = max(map(sum, phases.values()))
    across = (WIDTH - LEFT - RIGHT) / longest
    axis = TOP + len(phases) * (BAR + GAP)
    height = axis + 40 + LINE * ((len(PHASES) + 2) // 3)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" font-family="sans-serif" '
             f'font-size="12"><rect width="{WIDTH}" height="{height}" fill="white"/>']
    for ms in range(0, int(longest) + 1, 10):
        x = LEFT + across * ms
        parts.append(f'<path d="M{x:.1f} {TOP}V{axis}" stroke="#DDD"/>'
                     f'<text x="{x:.1f}" y="{axis + 16}" text-anchor="middle">{ms} ms</text>')
    for row, (name, values) in enumerate(phases.items()):
        y, x = TOP + row * (BAR + GAP), LEFT
        parts.append(f'<text x="{LEFT - 8}" y="{y + BAR / 2 + 4}" text-anchor="end">{name}</text>')
        for value, colour in zip(values, COLOURS):
            parts.append(f'<rect x="{x:.1f}" y="{y}" width="{across * value:.1f}" height="{BAR}" fill="{colour}"/>')
            if across * value > 30:
                parts.append(f'<text x="{x + across * value / 2:.1f}" y="{y + BAR / 2 + 4}" text-anchor="middle" '
                             f'fill="white">{value:.1f}</text>')
            x += across * value
    for index, (phase, colour) in enumerate(zip(PHASES.values(), COLOURS)):
        x, y = LEFT + index % 3 * 200, axis + 40 + LINE * (index // 3)
        parts.append(f'<rect x="{x}" y="{y - 10}" width="12" height="12" fill="{colour}"/>'
                     f'<text x="{x + 18}" y="{y}">{phase}</text>')
    return "\n".join([*parts, "</svg>", ""])
