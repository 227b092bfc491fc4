"""Runs a test on a virtual display with a Qt Quick backend at a device pixel ratio.

usage: on_display.py software|opengl RATIO TEST [ARGUMENT...]
"""

import os
import subprocess
import sys


def main():
    backend, ratio, *command = sys.argv[1:]
    read, write = os.pipe()
    display = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1500x1500x24", "-nolisten", "tcp",
                                "-noreset"], pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    try:
        with os.fdopen(read) as number:
            name = number.readline().strip()
        environment = {**os.environ, "DISPLAY": f":{name}", "QT_QPA_PLATFORM": "xcb", "QT_SCALE_FACTOR": ratio,
                       "QT_QUICK_BACKEND": "software" if backend == "software" else "", "QSG_RHI_BACKEND": "opengl",
                       "LIBGL_ALWAYS_SOFTWARE": "1", "MAROVENDA_BACKEND": backend, "MAROVENDA_RATIO": ratio}
        sys.exit(subprocess.run(command, env=environment).returncode)
    finally:
        display.terminate()
        display.wait()


if __name__ == "__main__":
    main()
