"""A customer's phone with a shell for phones, a Wayland compositor of its own. What is derived from it starts one."""

import os
import subprocess
import time

from customer import EMAIL, SPLASH, Customer
from phone import Gone

class ShellCustomer(Customer):
    """The app's window fills the screen, so what is in the window is at the same place on the screen."""

    # Those that the shell needs, by the names of their executables.
    PROGRAMS = ()
    # The first name that Sway tries, which cannot be told another one.
    SOCKET = "wayland-1"

    def __init__(self, width=360, height=720, scale=1):
        super().__init__(width, height)
        self.scale = scale

    def _start_display(self):
        """The shell needs the buses."""

    def _start_buses(self):
        super()._start_buses()
        # The app is the only one that is asked what it shows.
        environment = {name: value for name, value in os.environ.items() if name != "QT_LINUX_ACCESSIBILITY_ALWAYS_ON"}
        with open(self.home / "shell.log", "w") as log:
            self._spawn(*self.shell(), env={**environment, **self.shell_environment()}, stdout=log, stderr=log)
        self.wait_for((self.home / self.SOCKET).exists, "the shell")
        os.environ.update(QT_QPA_PLATFORM="wayland", WAYLAND_DISPLAY=self.SOCKET)

    def open_at_login(self, app):
        self.open(app)
        # The button is out of view where the window is low.
        self.find(EMAIL)
        self.wait_gone(SPLASH)

    def activate(self):
        """A shell does this with each new window."""
        self.wait_for(lambda: self.frame().get_state_set().contains(self.atspi.StateType.ACTIVE), "an active window")

    def frame(self):
        return self._application().get_child_at_index(0)

    def window(self):
        """The width and height of the app's window, as the app has it."""
        box = self.frame().get_component_iface().get_extents(self.atspi.CoordType.SCREEN)
        return box.width, box.height

    def wait_window(self, width, height):
        try:
            self.wait_for(lambda: self.window() == (width, height), f"a window of {width} x {height}")
        except Gone as gone:
            raise Gone(f"{gone}; it has {self.window()}") from None

    def is_in_view(self, name):
        """Whether all of it is in the window."""
        width, height = self.window()
        for element in self.elements():
            if element.name == name:
                box = element.box()
                if box.x >= 0 and box.y >= 0 and box.x + box.width <= width and box.y + box.height <= height:
                    return True
        return False

    def shot(self):
        """What is on the screen, in the shell's own format."""
        raise NotImplementedError

    def wait_still(self, still=0.3, limit=3):
        until, since, before = time.monotonic() + limit, time.monotonic(), b""
        while time.monotonic() < until:
            now = self.shot()
            if now != before:
                since, before = time.monotonic(), now
            elif time.monotonic() - since > still:
                return
            time.sleep(0.04)

    def end(self):
        """The exit status of the app, which has been asked to close."""
        status = self.app.wait(30)
        self.app = None
        return status


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, **options).stdout
