"""A phone with Plasma Mobile's compositor, KWin, its on-screen keyboard, Maliit, and a person's fingers."""

import contextlib
import os
import shutil
import subprocess

from phone import DEADLINE, Gone
from shell import ShellCustomer

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

# The keys of a keyboard of the United States, by the number of the first one in each row of linux/input-event-codes.h.
ROWS = {2: "1234567890-=", 16: "qwertyuiop[]", 30: "asdfghjkl;'`", 43: "\\zxcvbnm,./", 57: " "}
SHIFTED = dict(zip('!@#$%^&*()_+{}:"~|<>?', "1234567890-=[];'`\\,./"))
KEYS = {key: first + place for first, row in ROWS.items() for place, key in enumerate(row)}
KEYS.update(Escape=1, BackSpace=14, Tab=15, Return=28, ctrl=29, shift=42, alt=56, Home=102, Left=105, End=107, Delete=111)


# The rows of the on-screen keyboard, by where the first letter is.
LETTERS = {18: "qwertyuiop", 36: "asdfghjkl", 72: "zxcvbnm"}


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
                "--scale", str(self.scale), "--socket", self.SOCKET, "--no-lockscreen", "--no-global-shortcuts",
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

    def reach(self, name, beside=None):
        """Swipes until all of this is in view, towards where it is; what is not there yet, a far row of a list, is below.
        Sideways in a row of which something else is in view."""
        for _ in range(20):
            # A finger that rests before it is lifted leaves nothing moving on.
            self.wait_still(still=0.15)
            if self.is_in_view(name):
                return
            width, height = self.window()
            boxes = [e.box() for e in self.elements(hidden=True) if e.name == name]
            box = next((box for box in boxes if box.width and box.height), None)
            x, y = width // 2, self.middle(beside)[1] if beside else height // 2
            missing = (0, y - height) if not box else (x - box.x - box.width // 2, y - box.y - box.height // 2)
            limit = 0.7 * (width if beside else height)
            way = max(-limit, min(limit, missing[0 if beside else 1]))
            way = (way / 2, 0) if beside else (0, way / 2)
            self.swipe((x - way[0], y - way[1]), (x + way[0], y + way[1]), rest=100)
        raise Gone(f"«{name}» is not reached by swiping; on screen: {self.describe()}")

    def press(self, name, role=None):
        self.reach(name)
        self.tap_at(*self.middle(name, role))

    def focus(self, name):
        self.press(name)
        self.wait_focus(name)

    def swipe_back(self):
        width, height = self.window()
        self.swipe((3, height // 2), (width * 3 // 4, height // 2))

    # The on-screen keyboard

    def open_keyboard(self, field):
        """By a tap on a field."""
        self.reach(field)
        # What has just opened may still give the keyboard back and take it again.
        self.wait_still()
        self.tap(field)
        self.wait_for(lambda: self.keyboard_is_open() and self.window()[1] < self.size[1], "the keyboard")
        self.wait_focus(field)
        self.wait_still()

    def tap_letters(self, letters):
        """On its keys, as they are on an upright phone 360 wide."""
        for letter in letters:
            row, (first, others) = next(each for each in enumerate(LETTERS.items()) if letter in each[1][1])
            self.tap_at(first + 36 * others.index(letter), self.size[1] - 189 + 54 * row)
            self.wait_still()

    def wait_keyboard_gone(self, deadline=DEADLINE):
        self.wait_for(lambda: not self.keyboard_is_open() and self.window() == self.size, "the keyboard's end", deadline)

    def hide_keyboard(self):
        """By the gesture that the keyboard has for it, down from its upper part. On a busy machine it may take a slow
        one for a key that is held; a person tries again, too."""
        # Over a key, both of letters and of numbers.
        x, bottom = 60, self.size[1]
        for _ in range(3):
            self.swipe((x, self.window()[1] + 35), (x, bottom - 10), took=120)
            with contextlib.suppress(Gone):
                self.wait_keyboard_gone(deadline=2)
                return
        self.wait_keyboard_gone()

    # Keys of a keyboard that is plugged in

    def keys(self, *names):
        for name in names:
            codes = [KEYS[part] for part in name.split("+")]
            self.gesture(*(f"key {code}" for code in codes), *(f"release {code}" for code in reversed(codes)))

    def write(self, text):
        for letter in text:
            small = SHIFTED.get(letter, letter.lower())
            self.keys(small if small == letter else f"shift+{small}")

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
