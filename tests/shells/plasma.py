"""A phone with Plasma Mobile's compositor, KWin, its on-screen keyboard, Maliit, and a person's fingers."""

import os
import pathlib
import shutil
import subprocess

from shell import SOCKET, ShellCustomer

KEYBOARD = "/usr/bin/maliit-keyboard"
# Windows fill the screen and have no frame, as on a phone.
RULES = """[General]
count=1
rules=1

[1]
Description=phone
wmclassmatch=0
types=1
maximizehoriz=true
maximizehorizrule=2
maximizevert=true
maximizevertrule=2
noborder=true
noborderrule=2
"""


class PlasmaCustomer(ShellCustomer):
    PROGRAMS = ("kwin_wayland", "maliit-keyboard")

    def shell(self):
        # The package's file may raise its priority, which is refused where nobody may; a copy of it does not try.
        compositor = self.home / "bin" / "kwin_wayland"
        shutil.copyfile(shutil.which("kwin_wayland"), compositor)
        compositor.chmod(0o755)
        config = self.home / "config"
        config.mkdir(exist_ok=True)
        (config / "kwinrulesrc").write_text(RULES)
        return (str(compositor), "--virtual", "--width", str(self.size[0]), "--height", str(self.size[1]),
                "--scale", str(self.scale), "--socket", SOCKET, "--no-lockscreen", "--no-global-shortcuts",
                "--no-kactivities", "--inputmethod", KEYBOARD)

    def shell_environment(self):
        # The keyboard's settings stay in memory.
        return {"KWIN_WAYLAND_NO_PERMISSION_CHECKS": "1", "KWIN_SCREENSHOT_NO_PERMISSION_CHECKS": "1",
                "GSETTINGS_BACKEND": "memory"}

    def _start_buses(self):
        super()._start_buses()
        from gi.repository import Gio
        self.gio = Gio
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.wait_for(lambda: self.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                                 "NameHasOwner", self.glib.Variant("(s)", ("org.kde.KWin",)), None, 0, -1,
                                                 None).unpack()[0], "KWin on the bus")
        self.fingers = self._spawn(os.environ["MAROVENDA_FINGER"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        # KWin drops the first touch of a new device.
        self.gesture("down 0 0 0", "up 0")

    # Fingers

    def gesture(self, *commands):
        """Returns once KWin has had all of it."""
        self.fingers.stdin.write("".join(f"{command}\n" for command in (*commands, "done")))
        self.fingers.stdin.flush()
        if not self.fingers.stdout.readline():
            raise RuntimeError("the fingers ended")

    def middle(self, name, role=None):
        box = self.find(name, role).box()
        return box.x + box.width // 2, box.y + box.height // 2

    def tap(self, name, role=None):
        self.wait_still()
        self.tap_at(*self.middle(name, role))

    def tap_at(self, x, y, held=60):
        self.gesture(f"down 0 {x} {y}", f"wait {held}", "up 0")

    def swipe(self, begin, end, took=200, rest=0, finger=0):
        """A finger that goes from one place to another in so many milliseconds, and rests there before it is lifted."""
        steps = max(4, took // 12)
        places = [(begin[0] + (end[0] - begin[0]) * i / steps, begin[1] + (end[1] - begin[1]) * i / steps)
                  for i in range(1, steps + 1)]
        self.gesture(f"down {finger} {begin[0]} {begin[1]}",
                     *(command for x, y in places for command in (f"wait {took // steps}", f"move {finger} {x} {y}")),
                     f"wait {rest}", f"up {finger}")

    # What KWin says

    def get(self, path, interface, name):
        return self.bus.call_sync("org.kde.KWin", path, "org.freedesktop.DBus.Properties", "Get",
                                  self.glib.Variant("(ss)", (interface, name)), None, 0, -1, None).unpack()[0]

    def keyboard_is_open(self):
        return self.get("/VirtualKeyboard", "org.kde.kwin.VirtualKeyboard", "visible")

    def shot(self):
        return self.image()[1]

    def image(self):
        """The properties of a picture of the screen, and its bytes."""
        read, write = os.pipe()
        files = self.gio.UnixFDList.new_from_array([write])
        options = {"native-resolution": self.glib.Variant("b", True)}
        answer, _ = self.bus.call_with_unix_fd_list_sync(
            "org.kde.KWin", "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2", "CaptureActiveScreen",
            self.glib.Variant("(a{sv}h)", (options, 0)), None, 0, -1, files, None)
        del files
        with os.fdopen(read, "rb") as pipe:
            return answer.unpack()[0], pipe.read()

    def picture(self, path):
        about, data = self.image()
        subprocess.run(["convert", "-size", f"{about['width']}x{about['height']}", "-depth", "8", "bgra:-", "-alpha", "off",
                        str(path)], input=data, check=True)
