"""Namespaces of one's own, where they are granted."""

import os
import subprocess
import sys


def apart(*namespaces):
    """What a command is put behind to run in namespaces of its own ("--net", "--mount"); None where that is refused. As
    nobody in particular, else as root, since in a changed root the kernel refuses the former."""
    for unshare in (["unshare", "--user", "--map-root-user"], ["unshare"]):
        if subprocess.run([*unshare, *namespaces, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
            return [*unshare, *namespaces]
    return None


def enter_own_network():
    """Starts this program again with a network of its own, so that ports and addresses are its alone; says whether it
    runs in one."""
    if os.environ.get("MAROVENDA_OWN_NETWORK"):
        return True
    if own := apart("--net"):
        os.environ["MAROVENDA_OWN_NETWORK"] = "1"
        os.execvp(own[0], [*own, "sh", "-c", 'ip link set lo up && exec "$@"', "sh", sys.executable, *sys.argv])
    return False
