"""What a hard check counts: for each fault that it provokes, how often it tried and how often the product failed."""

import sys


class Tally:
    def __init__(self):
        self.rows = {}

    def note(self, fault, held, what="failed", tries=1):
        """Notes tries of a fault; what went wrong is told on stderr. Returns `held`."""
        row = self.rows.setdefault(fault, [0, 0])
        row[0] += tries
        if not held:
            row[1] += 1
            print(f"{fault}: {what}", file=sys.stderr, flush=True)
        return held

    def finish(self):
        """Prints a line for each fault and ends the process: with 1 when something failed or nothing was tried."""
        for fault, (tries, failures) in self.rows.items():
            print(f"{fault}\t{tries}\t{failures}")
        sys.exit(0 if self.rows and not any(failures for _, failures in self.rows.values()) else 1)


def memory(process, field):
    """Memory of a process in MiB: what it has in use (VmRSS), or the most that it had (VmHWM)."""
    with open(f"/proc/{process}/status") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(field + ":")) / 1024
