"""A slow processor: a group of processes that together get an eighth of one processor."""

import contextlib
import os
import pathlib
import subprocess

# In microseconds: the system allows no shorter time in each period.
TIME, PERIOD = 1000, 8000
ROOT = pathlib.Path("/sys/fs/cgroup")
MEMBERS = "cgroup.procs"


def candidates():
    """The folders of the system's control groups in which a group with a quota might be made, and the quota's settings."""
    for line in pathlib.Path("/proc/self/cgroup").read_text().splitlines():
        _, controllers, path = line.split(":", 2)
        if not controllers:
            mount, settings = ROOT, {"cpu.max": f"{TIME} {PERIOD}"}
        elif "cpu" in controllers.split(","):
            mount, settings = ROOT / "cpu", {"cpu.cfs_period_us": PERIOD, "cpu.cfs_quota_us": TIME}
        else:
            continue
        own = pathlib.PurePosixPath(path)
        yield from ((mount / str(folder).lstrip("/"), settings) for folder in (own, *own.parents))


def works(group, settings):
    """Sets a group's quota, and tells whether a process can join it."""
    if not (group / MEMBERS).exists():
        return False  # an ordinary folder
    with contextlib.suppress(OSError):
        for name, value in settings.items():
            (group / name).write_text(str(value))
        return subprocess.run(["sh", "-c", 'echo $$ > "$0"', group / MEMBERS], stderr=subprocess.DEVNULL).returncode == 0
    return False


class SlowProcessor:
    """`members` is the file that takes the ids of the group's processes, or None where no group can be made."""

    def __init__(self):
        self.members = None
        for folder, settings in candidates():
            group = folder / f"marovenda-bench-{os.getpid()}"
            with contextlib.suppress(OSError):
                group.mkdir()
                if works(group, settings):
                    self.members = group / MEMBERS
                    return
                group.rmdir()

    def close(self):
        if self.members:
            with contextlib.suppress(OSError):
                self.members.parent.rmdir()
