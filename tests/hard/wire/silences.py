"""What takes its time: servers that fall silent, which end a call as absent when the limit on silence is reached, not before
and not much later; and slow ones, which do not."""

import collections
import time

import faults
from bench import CALLS, LATE, MOST_MEMORY
from faults import EITHER, whole

# The limit on silence here, in ms.
LIMIT = 1000

# `start` begins the call; the server sees it at `path` and as `line`.
Try = collections.namedtuple("Try", "fault path line start")


def together(tally, bench, tries):
    """All of them at once."""
    server = bench.server
    server.forget()
    for fault, path, *_ in tries:
        play = lambda connection, fault=fault: fault.play(connection, b"{}")
        if fault.when == "door":
            server.door = play
        else:
            server.script(path, play, fault.when)
    bench.forget_peak()
    deliveries = [one.start() for one in tries]
    longest, over = 0, False
    until = time.monotonic() + LIMIT / 1000 + 100
    while not over and time.monotonic() < until:
        # Afterwards the exchanges go, and their connections with them: one more sign of life.
        over = bench.complete(*deliveries, seconds=0.05)
        asked = time.monotonic()
        bench.complete(bench.send())
        longest = max(longest, time.monotonic() - asked)
    memory = bench.peak()
    tally.note("the client answers while servers are silent or without end", longest * 1000 < LATE, f"after {longest:.1f} s")
    tally.note("memory while servers are silent or without end", memory < MOST_MEMORY, f"{memory:.0f} MiB")
    lines = server.lines()
    for one, delivery in zip(tries, deliveries):
        wrong = delivery.wrong() or judge(one, delivery.replies[0], lines[one.line])
        tally.note(one.fault.name, not wrong, f"{one.line}: {wrong}")
    server.forget()
    tally.note("the client is of use after silences", bench.works(CALLS[0]))


def judge(one, reply, came):
    if reply.body is not None:
        return f"got {reply.body}"
    if one.line.startswith("POST") and came not in one.fault.posts:
        return f"{came} requests came"
    in_time = reply.took <= LIMIT + LATE and (reply.took >= LIMIT or one.fault.gets == EITHER)
    return None if in_time else f"ended after {reply.took} ms"


def all_silences(tally, bench):
    def tries(all_faults):
        for number, fault in enumerate(all_faults):
            for method, text in (("POST", "text"), ("GET", "")):
                if text or not fault.padding:
                    path = f"/{method}{number}"
                    yield Try(fault, path, f"{method} {path}", lambda path=path, text=text, fault=fault: bench.send(
                        url=bench.base + path[1:], text=text, padding=fault.padding, silence=LIMIT))

    for is_door in (True, False):
        together(tally, bench, list(tries(f for f in faults.silences() if (f.when == "door") == is_door)))
    together(tally, bench, list(tries(faults.endless_heads(65536))))
    # One that never ends keeps the platform's thread, for which nobody must wait.
    together(tally, bench, list(tries(faults.endless_heads()[2:3])))
    upload_goes_on(tally, bench)


def upload_goes_on(tally, bench):
    """An upload that takes longer than the limit without ever being silent for that long."""
    # Slower than what the system takes at once.
    bench.server.script("/slow", lambda connection: (connection.sip(8_000_000), connection.send(whole(b"{}"))), "head")
    delivery = bench.send(url=bench.base + "slow", text="photo", padding=24_000_000, silence=LIMIT)
    bench.complete(delivery)
    wrong = delivery.wrong()
    good = not wrong and delivery.json() == {} and delivery.replies[0].took > LIMIT * 1.1
    tally.note("an upload that goes on for longer than the limit", good, wrong or str(delivery.replies[0]))
