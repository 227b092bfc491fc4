"""A virtual display that nobody else has."""

import os
import subprocess


def start_display(width, height, memory=None):
    """Starts one and returns its process and its name. What it shows is in the file Xvfb_screen0 of the folder `memory`, if
    that is given. Servers that start at the same moment may want the same number;
    the one that loses tries again."""
    shown = ["-fbdir", str(memory)] if memory else []
    for _ in range(10):
        read, write = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", f"{width}x{height}x24", "-nolisten",
                                   "tcp", "-noreset", *shown], pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as announced:
            number = announced.readline().strip()
        if number:
            return server, f":{number}"
        server.wait()
    raise RuntimeError("Xvfb did not start")
