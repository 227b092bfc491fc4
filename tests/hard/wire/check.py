"""Every fault of a connection, on every call of the client.

usage: check.py CLIENT quick|long      MAROVENDA_ONLY=PART tries only the faults whose names hold that
"""

import os
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
import faults
import silences
from bench import CALLS, Bench, Trial
from tally import Tally


def try_all(trial, all_faults, long):
    """Each fault on every call, or on one POST after another and the GET."""
    for turn, fault in enumerate(all_faults):
        for number, call in enumerate(CALLS):
            # The GET has nothing to upload.
            if not fault.padding if not call.is_post else long or number == turn % (len(CALLS) - 1):
                trial.run(fault, number)


def main():
    program, form = sys.argv[1:]
    long = form == "long"
    only = os.environ.get("MAROVENDA_ONLY", "")
    tally = Tally()
    with Bench(program) as bench:
        trial = Trial(tally, bench)
        server = bench.server
        fixed = [*faults.connections(), *faults.lengths(), *faults.chunks(), *faults.compressed(), *faults.sizes(),
                 *faults.heads(), *faults.statuses(), *faults.redirects(server.port, server.elsewhere.getsockname()[1])]
        try_all(trial, [fault for fault in fixed if only in fault.name], long)
        for number, call in enumerate(CALLS):
            if long or number in (0, len(CALLS) - 1):
                for fault in faults.endings(call.bytes("try 1"), 1 if long else 23):
                    if only in fault.name:
                        trial.run(fault, number)
        trial.finish()
        if not only:
            silences.all_silences(tally, bench)
    tally.finish()


if __name__ == "__main__":
    main()
