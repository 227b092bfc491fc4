"""The service killed at any moment: what it has acknowledged stays, nothing stands twice, and it starts again."""

import collections
import select
import threading

from program import RECORDS, Program

WRITERS = 8


class Writers:
    """Clients that write until nobody answers; what was acknowledged and what was tried is kept."""

    def __init__(self, program, turn, enough):
        self.program, self.turn, self.enough = program, turn, enough
        self.acknowledged, self.tried = [], []
        self.reached = threading.Event()
        self.threads = [threading.Thread(target=self._write, args=(number,)) for number in range(WRITERS)]
        for thread in self.threads:
            thread.start()

    def _write(self, number):
        count = 0
        while True:
            mark = f"{self.turn}-{number}-{count}"
            count += 1
            self.tried.append(mark)
            if count % 2:
                reply = self.program.post("api_cotizar.php", {**RECORDS["api_cotizar.php"], "descripcion": mark})
            else:
                reply = self.program.post("api_auto.php", {**RECORDS["api_auto.php"], "ubicacion": mark})
            if not reply.good():
                break
            self.acknowledged.append(mark)
            if len(self.acknowledged) >= self.enough:
                self.reached.set()
        self.reached.set()

    def join(self):
        for thread in self.threads:
            thread.join()


def marks(program):
    return collections.Counter(mark for mark, in program.rows(
        "SELECT descripcion FROM quotations WHERE tipo IS NOT NULL AND descripcion LIKE '%-%-%' "
        "UNION ALL SELECT ubicacion FROM vehicle_requests"))


def check_writing(tally, executable, folder, random, kills):
    acknowledged, tried = [], set()
    program = Program(executable, folder / "writing")
    for turn in range(kills):
        program.start()
        writers = Writers(program, turn, random.randrange(1, 120))
        writers.reached.wait()
        program.end(kill=True)
        writers.join()
        acknowledged += writers.acknowledged
        tried.update(writers.tried)
        with program:
            found = marks(program)
            lost = [mark for mark in acknowledged if not found[mark]]
            tally.note("acknowledged writes after a kill", not lost, f"turn {turn}: lost {len(lost)}, as {lost[:5]}",
                       tries=len(writers.acknowledged))
            strange = [mark for mark in found if found[mark] > 1 or mark not in tried]
            answers = program.get("api_paquetes.php?user_id=1").good()
            tally.note("killed while writing", not strange and writers.acknowledged and answers,
                       f"turn {turn}: doubled or never sent {strange[:5]}, answers: {answers}")
    tally.note("nothing to complain about", program.errors() == "", program.errors())


def check_starting(tally, executable, folder, random, kills):
    """Killed while it makes its database: the next start has all of it."""
    for turn in range(kills):
        program = Program(executable, folder / f"starting-{turn}")
        program.launch()
        # The moment of the kill, unless it is ready before.
        select.select([program.process.stdout], [], [], random.random() * 0.25)
        program.end(kill=True)
        with program:
            right = program.count("customers") == 3 and program.count("packages") == 232
            tally.note("killed while starting", right and program.errors() == "", f"turn {turn}: {program.errors()}")


def check(tally, executable, folder, random, long):
    check_writing(tally, executable, folder, random, 150 if long else 6)
    check_starting(tally, executable, folder, random, 300 if long else 12)
