"""Measures how time and memory grow with the number of packages, and plots them."""

import math

from machine import MEGABYTE

SIZES = (10, 100, 1000, 10_000, 100_000, 400_000)
COLOURS = ("#0A7CFF", "#34A853", "#F29900", "#8E44AD")
WIDTH, HEIGHT, LEFT, BOTTOM, TOP, RIGHT = 640, 400, 60, 46, 16, 180


def measure(bench):
    """Returns the curves by name, with a value for each size, in ms or MB."""
    curves = {"decoding (ms)": [], "home after its reply (ms)": [], "list after its reply (ms)": [], "list's memory (MB)": []}
    decoded = bench.decoded("record/")
    for size in SIZES:
        taken = bench.opened(size, 1 if size > 10_000 else 3)
        curves["decoding (ms)"].append(decoded["record", size])
        curves["home after its reply (ms)"].append(taken["home"])
        curves["list after its reply (ms)"].append(taken["shown"])
        curves["list's memory (MB)"].append(max(taken["held"], 0) / MEGABYTE)
    return curves


def exponent(values):
    """Returns the exponent of the power law that fits best from 1,000 packages on (least squares of the logarithms)."""
    points = [(math.log(size), math.log(value)) for size, value in zip(SIZES, values) if size >= 1000 and value > 0]
    x, y = (sum(each) / len(points) for each in zip(*points))
    return sum((a - x) * (b - y) for a, b in points) / sum((a - x) ** 2 for a, _ in points)


def plot(curves):
    """Returns a plot with logarithmic scales, as SVG."""
    highest = math.ceil(math.log10(max(max(values) for values in curves.values())))
    lowest = -3
    across = (WIDTH - LEFT - RIGHT) / math.log10(SIZES[-1] / SIZES[0])
    up = (HEIGHT - TOP - BOTTOM) / (highest - lowest)

    def place(size, value):
        return (LEFT + across * math.log10(size / SIZES[0]),
                HEIGHT - BOTTOM - up * (math.log10(max(value, 10 ** lowest)) - lowest))

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" font-family="sans-serif" '
             f'font-size="12"><rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>']
    for power in range(lowest, highest + 1):
        y = place(SIZES[0], 10 ** power)[1]
        parts.append(f'<path d="M{LEFT} {y:.1f}H{WIDTH - RIGHT}" stroke="#DDD"/>'
                     f'<text x="{LEFT - 6}" y="{y + 4:.1f}" text-anchor="end">{10 ** power:g}</text>')
    for size in SIZES:
        x = place(size, 1)[0]
        parts.append(f'<path d="M{x:.1f} {TOP}V{HEIGHT - BOTTOM}" stroke="#DDD"/>'
                     f'<text x="{x:.1f}" y="{HEIGHT - BOTTOM + 16}" text-anchor="middle">{size:,}</text>')
    parts.append(f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - 8}" text-anchor="middle">packages</text>')
    for index, (name, values) in enumerate(curves.items()):
        line = " ".join(f"{x:.1f},{y:.1f}" for x, y in (place(*point) for point in zip(SIZES, values)))
        y = TOP + 16 + 20 * index
        parts.append(f'<polyline points="{line}" fill="none" stroke="{COLOURS[index]}" stroke-width="2"/>'
                     f'<text x="{WIDTH - RIGHT + 10}" y="{y}" fill="{COLOURS[index]}">{name}</text>')
    return "\n".join([*parts, "</svg>", ""])
