"""A virtual display that nobody else has."""

import os
import subprocess


def start_display(width, height):
    """Starts one and returns its process and its name. Servers that start at the same moment may want the same number;
    the one that loses tries again."""
    for _ in range(10):
        read, write = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", f"{width}x{height}x24", "-nolisten",
                                   "tcp", "-noreset"], pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as announced:
            number = announced.readline().strip()
        if number:
            return server, f":{number}"
        server.wait()
    raise RuntimeError("Xvfb did not start")
