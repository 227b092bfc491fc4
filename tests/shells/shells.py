"""Stories of customers with phones, told through the real app under the compositors of phone shells.

usage: shells.py STORY APP SCRIPTED_APP SERVICE RELEASE_APP

MAROVENDA_FINGER is the program of finger.cpp. Where a shell is missing the story is skipped, unless MAROVENDA_NEEDS_SHELLS
is set.
"""

import glob
import os
import pathlib
import shutil
import sys

HERE = pathlib.Path(__file__).parent
sys.path[:0] = [str(HERE), str(HERE.parent / "e2e")]
import stories
from desktop import DesktopCustomer
from phoc import PhocCustomer
from plasma import PlasmaCustomer

SKIPPED = 77
# What makes Qt use the desktop's portal.
THEME = "/usr/lib/*/qt6/plugins/platformthemes/libqxdgdesktopportal.so"


def missing():
    programs = (*PlasmaCustomer.PROGRAMS, *PhocCustomer.PROGRAMS, *DesktopCustomer.PROGRAMS,
                os.environ.get("MAROVENDA_FINGER") or "marovenda-finger")
    plugins = () if glob.glob(THEME) else (pathlib.Path(THEME).name,)
    return [*(program for program in programs if not shutil.which(program)), *plugins]


if __name__ == "__main__":
    if lacking := missing():
        print(f"{' '.join(lacking)}: not found; packaging/install-packages shells installs phone shells, then configure again")
        sys.exit(1 if os.environ.get("MAROVENDA_NEEDS_SHELLS") else SKIPPED)
    stories.main(HERE)
