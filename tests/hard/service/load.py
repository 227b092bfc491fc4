"""Many at once: whatever was acknowledged is in the database, once, and nothing else is."""

import collections
import concurrent.futures

from program import RECORDS

CLIENTS = 50


def job(program, client, number):
    """One request, and the mark that its row must bear if it makes one. Returns table, mark, reply."""
    mark = f"{client}-{number}"
    kind = number % 5
    customer = 2 + client % 2
    if kind in (0, 1):
        return "quotations", mark, program.post(
            "api_cotizar.php", {**RECORDS["api_cotizar.php"], "user_id": customer, "descripcion": mark})
    if kind in (2, 3):
        return "vehicles", mark, program.post(
            "api_auto.php", {**RECORDS["api_auto.php"], "user_id": customer, "ubicacion": mark})
    if number % 2:
        return "recoveries", mark, program.post("api_recuperar.php", {"email": mark})
    return None, mark, program.get("api_paquetes.php?user_id=1")


MARKS = {"quotations": "SELECT descripcion FROM quotations WHERE descripcion LIKE '%-%'",
         "vehicles": "SELECT ubicacion FROM vehicle_requests",
         "recoveries": "SELECT email FROM recovery_requests"}


def check(tally, program, _random, long):
    requests = 20_000 if long else 10_000
    each = requests // CLIENTS
    acknowledged = collections.defaultdict(list)
    marks_before = {kind: collections.Counter(mark for mark, in program.rows(query)) for kind, query in MARKS.items()}

    def client(number):
        return [job(program, number, turn) for turn in range(each)]

    with concurrent.futures.ThreadPoolExecutor(CLIENTS) as pool:
        for done in pool.map(client, range(CLIENTS)):
            for kind, mark, reply in done:
                held = reply.good() and reply.sound()
                tally.note(f"{CLIENTS} at once", held, f"{mark}: {reply}")
                if kind and held:
                    acknowledged[kind].append(mark)
    for kind, query in MARKS.items():
        found = collections.Counter(mark for mark, in program.rows(query)) - marks_before[kind]
        wanted = collections.Counter(acknowledged[kind])
        tally.note(f"{kind} kept, each once", found == wanted,
                   f"missing {list(wanted - found)[:5]}, too many {list(found - wanted)[:5]}", tries=len(wanted))
    tally.note("still there afterwards", program.alive())
    tally.note("nothing to complain about", program.errors() == "", program.errors())
