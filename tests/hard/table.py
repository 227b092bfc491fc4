"""Runs the long forms of the hard checks in the order of the build, as many at a time as there are processors, and prints
their table.

usage: table.py BUILD [GROUP...]
"""

import concurrent.futures
import json
import os
import subprocess
import sys
import time


def checks(build, groups):
    """The hard checks that CTest knows: group, command, environment. One that can be shared by processes comes once for
    each of them."""
    listed = subprocess.run(["ctest", "--test-dir", build, "-L", "^hard$", "--show-only=json-v1"], check=True,
                            capture_output=True, text=True)
    for test in json.loads(listed.stdout)["tests"]:
        group = test["name"].removeprefix("hard-")
        if groups and group not in groups:
            continue
        properties = {p["name"]: p["value"] for p in test["properties"]}
        environment = dict(pair.split("=", 1) for pair in properties.get("ENVIRONMENT", []))
        for _ in range(int(environment.get("MAROVENDA_SHARES", 1))):
            yield group, test["command"], environment


def run(group, command, environment):
    start = time.monotonic()
    done = subprocess.run(command[:-1] + ["long"], env={**os.environ, **environment}, stdout=subprocess.PIPE, text=True)
    print(f"{group}: {time.monotonic() - start:.0f} s, exit status {done.returncode}", file=sys.stderr, flush=True)
    rows = [line.split("\t") for line in done.stdout.splitlines() if line.count("\t") == 2]
    return group, rows, done.returncode


def main():
    found = list(checks(sys.argv[1], sys.argv[2:]))
    if not found:
        sys.exit("There is no such check.")
    start = time.monotonic()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(lambda check: run(*check), found))
    totals = {}
    for group, rows, _ in results:
        for fault, *counts in rows:
            totals[group, fault] = [a + int(b) for a, b in zip(totals.get((group, fault), (0, 0)), counts)]
    table = [("group", "fault", "tries", "failures")]
    table += [(*row, *map(str, counts)) for row, counts in totals.items()]
    widths = [max(len(row[i]) for row in table) for i in range(4)]
    for row in table:
        print(f"{row[0]:{widths[0]}}  {row[1]:{widths[1]}}  {row[2]:>{widths[2]}}  {row[3]:>{widths[3]}}")
    failed = sorted({group for group, rows, status in results if status != 0 or not rows})
    print(f"{len({group for group, _, _ in found})} groups in {(time.monotonic() - start) / 60:.0f} minutes; "
          f"{'failed: ' + ', '.join(failed) if failed else 'no failures'}")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
