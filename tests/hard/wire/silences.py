"""What takes its time: servers that fall silent, which end a call as absent when the limit on silence is reached, not before
and not much later; and slow ones, which do not."""

import collections
import concurrent.futures
import time

import faults
from bench import CALLS, LATE, MOST_MEMORY, SILENCE, Bench
from faults import EITHER, whole

SHORT = 1000
PROFILE, LISTING = CALLS[3], CALLS[-1]

# `start` begins the call; the server sees it at `path` and as `line`.
Try = collections.namedtuple("Try", "fault path line start")


def together(tally, bench, limit, tries):
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
    until = time.monotonic() + limit / 1000 + 100
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
        wrong = delivery.wrong() or judge(one, delivery.replies[0], limit, lines[one.line])
        tally.note(one.fault.name, not wrong, f"{one.line}: {wrong}")
    server.forget()
    tally.note("the client is of use after silences", bench.works(CALLS[0]))


def judge(one, reply, limit, came):
    if reply.body is not None:
        return f"got {reply.body}"
    if one.line.startswith("POST") and came not in one.fault.posts:
        return f"{came} requests came"
    in_time = reply.took <= limit + LATE and (reply.took >= limit or one.fault.gets == EITHER)
    return None if in_time else f"ended after {reply.took} ms"


def goes_on(tally, bench, name, limit, start, path, body, play):
    """A slow exchange that is never silent for as long as the limit, and takes longer."""
    bench.server.script(path, play, "head")
    delivery = start()
    bench.complete(delivery, seconds=200)
    wrong = delivery.wrong()
    good = not wrong and delivery.json() == body and delivery.replies[0].took > limit * 1.1
    tally.note(name, good, wrong or str(delivery.replies[0]))


def shortened(tally, bench):
    """With a limit of a second."""
    def tries(all_faults):
        for number, fault in enumerate(all_faults):
            for method, text in (("POST", "text"), ("GET", "")):
                if text or not fault.padding:
                    path = f"/{method}{number}"
                    yield Try(fault, path, f"{method} {path}", lambda path=path, text=text, fault=fault: bench.send(
                        url=bench.base + path[1:], text=text, padding=fault.padding, silence=SHORT))

    for is_door in (True, False):
        together(tally, bench, SHORT, list(tries(f for f in faults.silences() if (f.when == "door") == is_door)))
    together(tally, bench, SHORT, list(tries(faults.endless_heads(65536))))
    # One that never ends keeps the platform's thread, for which nobody must wait.
    together(tally, bench, SHORT, list(tries(faults.endless_heads()[2:3])))
    # Slower than what the system takes at once.
    goes_on(tally, bench, "an upload that goes on for longer than the limit", SHORT,
            lambda: bench.send(url=bench.base + "slow", text="photo", padding=24_000_000, silence=SHORT), "/slow", {},
            lambda connection: (connection.sip(8_000_000), connection.send(whole(b"{}"))))


def real(tally, program):
    """With the limit that customers get, each with a client and a server of its own and many of them at a time."""
    def fall_silent(fault, calls):
        with Bench(program) as bench:
            together(tally, bench, SILENCE, [
                Try(fault, call.path, call.line, lambda call=call: bench.start(call, "text", fault.padding))
                for call in calls if call is PROFILE or not fault.padding])

    def slow(name, call, padding, play):
        body = call.bytes("slow")
        with Bench(program) as bench:
            goes_on(tally, bench, name, SILENCE, lambda: bench.start(call, "text", padding), call.path, call.reply("slow"),
                    lambda connection: play(connection, whole(body)))

    with concurrent.futures.ThreadPoolExecutor(20) as pool:
        for done in [pool.submit(fall_silent, fault, CALLS) for fault in faults.silences()]:
            done.result()
        # These keep the processors busy, so that the others' times would not be theirs.
        busy = [pool.submit(fall_silent, fault, [CALLS[turn]]) for turn, fault in enumerate(faults.endless_heads())]
        busy.append(pool.submit(slow, "an upload of 90 seconds at 100 kB a second", PROFILE, 9_000_000,
                                lambda connection, reply: (connection.sip(100_000), connection.send(reply))))
        busy.append(pool.submit(slow, "a byte every ten seconds for 80 seconds", LISTING, 0, lambda connection, reply: (
            connection.send(reply[:-8]), connection.trickle(reply[-8:], 10))))
        for done in busy:
            done.result()
