"""Describes the machine, and starts and measures the benchmarks' programs."""

import collections
import contextlib
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/e2e"))
from display import start_display
from processor import SlowProcessor

Ended = collections.namedtuple("Ended", "milliseconds memory")
MEGABYTE = 1 << 20


def description():
    """Describes the processor, the memory and the system."""
    cpu = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    memory = int(re.search(r"MemTotal: +(\d+)", pathlib.Path("/proc/meminfo").read_text())[1]) / MEGABYTE
    release = re.search(r'PRETTY_NAME="(.*)"', pathlib.Path("/etc/os-release").read_text())[1]
    qt = subprocess.run(["qmake6", "-query", "QT_VERSION"], capture_output=True, text=True).stdout.strip()
    return (f"{cpu[1] if cpu else platform.machine()}, {os.cpu_count()} processors, {memory:.0f} GB of memory, {release}, "
            f"Qt {qt}, software rendering on a virtual display without a graphics processor")


class Memory:
    """The memory of a process in bytes: its peak with libraries, and its own, which is free when the process has ended."""

    def __init__(self, pid):
        status, rollup = (pathlib.Path(f"/proc/{pid}/{name}").read_text() for name in ("status", "smaps_rollup"))
        self.peak = 1024 * int(re.search(r"VmHWM:\s+(\d+)", status)[1])
        self.private = 1024 * sum(map(int, re.findall(r"Private_(?:Clean|Dirty):\s+(\d+)", rollup)))


class Machine:
    """A virtual display, and a home folder for each program."""

    def __init__(self, programs):
        self.programs = pathlib.Path(programs)
        self.homes = pathlib.Path(tempfile.mkdtemp())
        self.display, self.name = start_display(1200, 2000)
        self.slow = SlowProcessor()

    def close(self):
        self.display.kill()
        self.display.wait()
        self.slow.close()
        shutil.rmtree(self.homes, ignore_errors=True)

    def home(self, name):
        folder = self.homes / name
        folder.mkdir(mode=0o700, exist_ok=True)
        return folder

    def environment(self, home, **more):
        return {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(home), "XDG_DATA_HOME": str(home),
                "XDG_CACHE_HOME": str(home), "XDG_CONFIG_HOME": str(home), "XDG_RUNTIME_DIR": str(home),
                "DBUS_SESSION_BUS_ADDRESS": "disabled:", "DISPLAY": self.name, "QT_QPA_PLATFORM": "xcb",
                "QT_QUICK_BACKEND": "software", **more}

    def first_frame(self, command, home, stay=0.0, slow=False, **more):
        """Returns the milliseconds from the start of a process to the end of its window's first frame, according to Qt's
        log, and its memory after `stay` further seconds."""
        environment = self.environment(home, QT_LOGGING_RULES="qt.scenegraph.time.renderloop=true", **more)
        command = self.command(*command, slow=slow)
        start = time.perf_counter()
        process = subprocess.Popen(command, env=environment, stderr=subprocess.PIPE, text=True)
        try:
            if not any("rame rendered" in line for line in process.stderr):
                raise RuntimeError(f"{command[0]} has not shown a window")
            milliseconds = 1000 * (time.perf_counter() - start)
            if stay:
                # Keep reading the log: a full pipe would block the process.
                os.set_blocking(process.stderr.fileno(), False)
                until = time.monotonic() + stay
                while time.monotonic() < until:
                    with contextlib.suppress(TypeError):
                        process.stderr.read()
                    time.sleep(0.05)
            return Ended(milliseconds, Memory(process.pid))
        finally:
            process.kill()
            process.wait()
            process.stderr.close()

    def command(self, program, *arguments, slow=False):
        """Returns the command line of a program; with `slow`, for an eighth of a processor."""
        line = [str(self.programs / program), *map(str, arguments)]
        return ["sh", "-c", 'echo $$ > "$0" && exec "$@"', str(self.slow.members), *line] if slow else line

    def run(self, program, *arguments, home="run", slow=False, **more):
        done = subprocess.run(self.command(program, *arguments, slow=slow), capture_output=True, text=True,
                              env=self.environment(self.home(home), **more))
        if done.returncode != 0:
            raise RuntimeError(f"{program} {arguments}: {done.returncode}\n{done.stdout}{done.stderr}")
        return done.stdout

    def launch(self, program, *arguments, home="run", **more):
        return subprocess.Popen(self.command(program, *arguments), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, text=True, env=self.environment(self.home(home), **more))

    def start(self, program, *arguments, **more):
        """Starts a program and waits for its first line of output."""
        return wait_for(self.launch(program, *arguments, **more))


def wait_for(process):
    process.first = process.stdout.readline().strip()
    if not process.first:
        raise RuntimeError(f"{process.args} has not started")
    return process


def end(process):
    process.kill()
    process.wait()
    process.stdin.close()
    process.stdout.close()


def median(values):
    return statistics.median(values)
