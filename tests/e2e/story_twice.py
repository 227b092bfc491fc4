"""Stories of an app that is started while it is open."""

import os
import re
import signal
import subprocess

from customer import SPLASH, Customer
from manager import ask_to_close, iconify
from stage import story


def windows():
    """The app's windows on the display by their process, the one on top first. No window manager runs: they are the root
    window's children, in the order in which they cover each other."""
    tree = subprocess.run(["xwininfo", "-root", "-children"], check=True, capture_output=True, text=True).stdout
    found = {}
    for window in re.findall(r'^ +(0x[0-9a-f]+) "Marovenda":', tree, re.MULTILINE):
        told = subprocess.run(["xprop", "-id", window, "_NET_WM_PID"], capture_output=True, text=True).stdout
        shown = subprocess.run(["xwininfo", "-id", window], capture_output=True, text=True).stdout
        if "IsViewable" in shown:
            found[int(told.split()[-1])] = int(window, 16)
    return found


def focus():
    told = subprocess.run(["xdotool", "getwindowfocus"], stdout=subprocess.PIPE, text=True, stderr=subprocess.DEVNULL)
    return int(told.stdout or 0)


def start_again(app, without=(), **environment):
    """What a start of the app says and how it ends."""
    return subprocess.run([app], capture_output=True, text=True, timeout=60,
                          env={k: v for k, v in {**os.environ, **environment}.items() if k not in without})


@story
def started_twice(stage):
    with stage.alone() as phone:
        # Another store has an app of its own, whose window covers the first.
        other = phone._spawn(stage.app, env={**os.environ, "XDG_DATA_HOME": str(phone.home / "other")})
        phone.wait_for(lambda: list(windows())[:1] == [other.pid], "the other store's window")
        for without in ((), ("DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR")):
            subprocess.run(["xdotool", "windowraise", str(windows()[other.pid])], check=True)
            phone.wait_for(lambda: list(windows()) == [other.pid, phone.app.pid], "the cover")
            ended = start_again(stage.app, without)
            assert (ended.returncode, ended.stdout) == (0, ""), ended
            phone.wait_for(lambda: list(windows()) == [phone.app.pid, other.pid], "the first window on top")
            phone.wait_for(lambda: focus() == windows()[phone.app.pid], "the focus in the first window")
        iconify(windows()[phone.app.pid])
        phone.wait_for(lambda: list(windows()) == [other.pid], "the first window's icon")
        ended = start_again(stage.app)
        assert ended.returncode == 0, ended
        phone.wait_for(lambda: list(windows()) == [phone.app.pid, other.pid], "the first window, no longer an icon")
        # Nothing of it began anew.
        assert phone.shows("Iniciar Sesión") and not phone.shows(SPLASH)


@story
def started_beside_one_that_hangs(stage):
    with stage.alone(stage.release_app) as phone:
        phone.app.send_signal(signal.SIGSTOP)
        try:
            for without in ((), ("DBUS_SESSION_BUS_ADDRESS",)):
                ended = start_again(stage.release_app, without)
                assert ended.returncode == 3, ended
                assert len(ended.stderr.splitlines()) == 1 and "does not answer" in ended.stderr, ended
        finally:
            phone.app.send_signal(signal.SIGCONT)
        ended = start_again(stage.release_app)
        assert ended.returncode == 0, ended
        # What one that was killed has left is no obstacle.
        phone.kill()
        phone.open_at_login(stage.release_app)
        ended = start_again(stage.release_app)
        assert ended.returncode == 0, ended


@story
def started_in_the_same_moment(stage):
    with Customer() as phone:
        several = [phone._spawn(stage.release_app) for _ in range(4)]

        def left():
            return [app for app in several if app.poll() is None]
        phone.wait_for(lambda: len(left()) == 1, "the end of all but one")
        phone.app = left()[0]
        assert sorted(app.returncode for app in several if app is not phone.app) == [0, 0, 0]
        phone.find("Iniciar Sesión")
        assert list(windows()) == [phone.app.pid]


@story
def started_while_it_ends(stage):
    with stage.alone(stage.release_app) as phone:
        for _ in range(3):
            ending = phone.app
            ask_to_close(windows()[ending.pid])
            phone.app = phone._spawn(stage.release_app)
            phone.find("Iniciar Sesión")
            assert ending.wait(60) == 0, (ending.returncode, phone.standard_error())
            phone.wait_gone(SPLASH)
