"""Runs a test on a virtual display with a Qt Quick backend at a device pixel ratio.

usage: on_display.py software|opengl RATIO TEST [ARGUMENT...]
"""

import os
import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "e2e"))
from display import start_display


def main():
    backend, ratio, *command = sys.argv[1:]
    display, name = start_display(1500, 1500)
    try:
        environment = {**os.environ, "DISPLAY": name, "QT_QPA_PLATFORM": "xcb", "QT_SCALE_FACTOR": ratio,
                       "QT_QUICK_BACKEND": "software" if backend == "software" else "", "QSG_RHI_BACKEND": "opengl",
                       "LIBGL_ALWAYS_SOFTWARE": "1", "MAROVENDA_BACKEND": backend, "MAROVENDA_RATIO": ratio}
        sys.exit(subprocess.run(command, env=environment).returncode)
    finally:
        display.terminate()
        display.wait()


if __name__ == "__main__":
    main()
