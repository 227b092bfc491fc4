"""A customer's device, seen from outside: a virtual display, a session bus with its accessibility service, and the app
on it, found and operated only through what a screen reader gets, keys and the pointer.

The accessibility library connects to the bus of the environment at its first use, so it is imported late.
"""

import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

from display import start_display

DEADLINE = float(os.environ.get("MAROVENDA_E2E_DEADLINE", "60"))
# The seconds without a change after which a picture is taken for finished; an emulated app needs more.
STILL = float(os.environ.get("MAROVENDA_E2E_STILL", "0.3"))
# Beginnings of lines that Qt prints by itself: see standard_error.
QT_SAYS = ("qt.accessibility.atspi: Could not find accessible on path", "QSpiApplication::",
           "QUnifiedTimer::stopAnimationDriver: driver is not running")
# A session bus that starts the accessibility service and nothing else by itself. What else is installed on the machine,
# such as a desktop's portal, runs only where a story starts it.
BUS = """<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <servicedir>{}</servicedir>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
ACCESSIBILITY = pathlib.Path("/usr/share/dbus-1/services/org.a11y.Bus.service")


class Gone(Exception):
    """What was waited for did not come."""


def role_of(accessible):
    """Later releases of the accessibility service have a shorter name for a button."""
    role = accessible.get_role_name()
    return "push button" if role == "button" else role


def text_of(text, begin, end):
    """What a text interface says from one place to another; its own class has another function of the same name."""
    from gi.repository import Atspi
    return Atspi.Text.get_text(text, begin, end)


class Element:
    """One thing that is showing: what a screen reader would say of it, and what can be done with it."""

    def __init__(self, accessible, role, name, states):
        self.accessible = accessible
        self.role = role
        self.name = name
        self.states = states

    def __repr__(self):
        return f"{self.role} «{self.name}»"

    def press(self, named="Press"):
        """The action that a screen reader's user would choose."""
        action = self.accessible.get_action_iface()
        names = [action.get_action_name(i) for i in range(action.get_n_actions())]
        action.do_action(names.index(named))

    def focus(self):
        self.accessible.get_component_iface().grab_focus()

    def text(self):
        text = self.accessible.get_text_iface()
        return text_of(text, 0, text.get_character_count()) if text else ""

    def caret(self):
        return self.accessible.get_text_iface().get_caret_offset()

    def set_text(self, text):
        """What a voice control or a braille display's keys do."""
        self.accessible.get_editable_text_iface().set_text_contents(text)

    def insert_text(self, place, text):
        self.accessible.get_editable_text_iface().insert_text(place, text, len(text.encode()))

    def delete_text(self, begin, end):
        self.accessible.get_editable_text_iface().delete_text(begin, end)

    def box(self):
        from gi.repository import Atspi
        return self.accessible.get_component_iface().get_extents(Atspi.CoordType.SCREEN)


class Phone:
    """Use as a context: the display and the buses end with it, and so does the app."""

    def __init__(self, width=390, height=844):
        self.size = (width, height)
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="marovenda-e2e-"))
        self.children = []
        self.app = None
        self.events = []

    def __enter__(self):
        try:
            self._set_environment()
            self._start_display()
            self._start_buses()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.close()
        for child in reversed(self.children):
            child.terminate()
            child.wait()
        shutil.rmtree(self.home, ignore_errors=True)

    def _spawn(self, *command, **options):
        child = subprocess.Popen(command, **options)
        self.children.append(child)
        return child

    def _set_environment(self):
        os.environ.update(XDG_RUNTIME_DIR=str(self.home), QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                          XDG_DATA_HOME=str(self.home / "data"), XDG_CONFIG_HOME=str(self.home / "config"),
                          XDG_CACHE_HOME=str(self.home / "cache"), LC_ALL="C.UTF-8", NO_AT_BRIDGE="0",
                          HOME=str(self.home), TMPDIR=str(self.home / "tmp"))
        for name in ("WAYLAND_DISPLAY", "DISPLAY", "XDG_CURRENT_DESKTOP", "http_proxy", "https_proxy", "HTTP_PROXY",
                     "HTTPS_PROXY"):
            os.environ.pop(name, None)
        self.home.chmod(0o700)
        (self.home / "tmp").mkdir()
        # The system's opener, as far as the app can tell: it notes what it is asked to open.
        tools = self.home / "bin"
        tools.mkdir()
        opener = tools / "xdg-open"
        opener.write_text(f'#!/bin/sh\nprintf "%s\\0" "$#" "$@" >>"{self.home}/opened"\n')
        opener.chmod(0o755)
        os.environ["PATH"] = f"{tools}:{os.environ['PATH']}"

    def _start_display(self):
        server, display = start_display(*self.size, self.home)
        self.children.append(server)
        os.environ.update(DISPLAY=display, QT_QPA_PLATFORM="xcb")

    def _start_buses(self):
        services, configuration = self.home / "services", self.home / "bus.conf"
        services.mkdir()
        (services / ACCESSIBILITY.name).symlink_to(ACCESSIBILITY)
        configuration.write_text(BUS.format(services))
        bus = self._spawn("dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address=1",
                          stdout=subprocess.PIPE, text=True, stderr=subprocess.DEVNULL)
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()
        self._spawn("/usr/libexec/at-spi-bus-launcher", "--launch-immediately", stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL)
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib
        self.atspi, self.glib = Atspi, GLib
        # A busy machine answers late; what is missing is told by wait_for.
        Atspi.set_timeout(int(DEADLINE * 1000), int(DEADLINE * 1000))
        self.wait_for(lambda: Atspi.get_desktop(0), "the accessibility service")
        self.listener = Atspi.EventListener.new(self._heard)
        for kind in ("object:state-changed:showing", "object:property-change:accessible-name", "object:announcement",
                     "object:text-changed", "object:property-change:accessible-value"):
            self.listener.register(kind)

    def _heard(self, event):
        try:
            source = event.source
            data = event.any_data if isinstance(event.any_data, str) else ""
            self.events.append((event.type, role_of(source), source.get_name() or "", event.detail1, data))
        except self.glib.Error:
            pass  # its source has gone meanwhile

    def wait_for(self, look, what, deadline=DEADLINE):
        """Looks until there is something to see, letting the bus's messages in between looks."""
        from gi.repository import GLib
        context = GLib.MainContext.default()
        until = time.monotonic() + deadline
        while True:
            began = time.monotonic()
            try:
                found = look()
            except GLib.Error:
                found = None  # an element went away while we looked
            if found:
                return found
            if time.monotonic() > until:
                raise Gone(f"{what} did not come within {deadline:.0f} s; on screen: {self.describe()}")
            if self.app and self.app.poll() is not None:
                raise Gone(f"the app ended with {self.app.returncode} while waiting for {what}")
            # The app answers what is looked at: it needs time for something else too.
            pause = max(40, int(2000 * (time.monotonic() - began)))
            tick = GLib.timeout_add(pause, lambda: False)
            context.iteration(True)
            if context.find_source_by_id(tick):
                GLib.source_remove(tick)

    def start_composer(self):
        """An input method for the apps that are opened from now on."""
        self._spawn("ibus-daemon", "--panel=disable", "--config=disable", "--emoji-extension=disable", "--cache=none",
                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        address = self.home / "config" / "ibus" / "bus"
        self.wait_for(lambda: address.is_dir() and any("IBUS_ADDRESS=" in f.read_text() for f in address.iterdir()),
                      "the input method's bus")
        self.composed = self.home / "composed"
        with open(self.composed, "w") as composed:
            self._spawn("/usr/bin/python3", str(pathlib.Path(__file__).with_name("composer.py")), stdout=composed)
        self.wait_for(lambda: "engine True\n" in self.composed.read_text(), "the input method")
        os.environ["QT_IM_MODULE"] = "ibus"

    # The app

    def start(self, executable):
        """Starts the app without waiting for it."""
        self.errors = self.home / "stderr"
        with open(self.errors, "a") as errors, open(self.home / "stdout", "a") as output:
            self.app = subprocess.Popen([executable], stdout=output, stderr=errors)

    def open(self, executable):
        self.start(executable)
        self.wait_for(self._application, "the app")

    def close(self):
        if self.app and self.app.poll() is None:
            self.app.terminate()
            self.app.wait()
        self.app = None

    def kill(self):
        self.app.send_signal(signal.SIGKILL)
        self.app.wait()
        self.app = None

    def _application(self, process=None):
        process = process or self.app
        desktop = self.atspi.get_desktop(0)
        desktop.clear_cache()
        for i in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(i)
            if child and process and child.get_process_id() == process.pid:
                return child
        return None

    def elements(self, hidden=False, process=None):
        """All that is showing, in reading order; with `hidden`, also what is out of view. Of the app, or of another process."""
        found = []

        def walk(accessible):
            accessible.clear_cache()
            states = accessible.get_state_set()
            role = role_of(accessible)
            if (hidden or states.contains(self.atspi.StateType.SHOWING)) and role not in ("application", "frame", "filler"):
                found.append(Element(accessible, role, accessible.get_name() or "",
                                     {s.value_nick for s in states.get_states()}))
            for i in range(accessible.get_child_count()):
                child = accessible.get_child_at_index(i)
                if child:
                    walk(child)

        application = self._application(process)
        if application:
            walk(application)
        return found

    def describe(self):
        try:
            return ", ".join(map(repr, self.elements())) or "nothing"
        except Exception as error:  # the description belongs to another failure, which must not be hidden
            return f"unknown ({error})"

    def find(self, name, role=None):
        """The element of this name, once it is showing."""
        def look():
            return next((e for e in self.elements() if e.name == name and role in (None, e.role)), None)
        return self.wait_for(look, f"{role or 'element'} «{name}»")

    def shows(self, name):
        return any(e.name == name for e in self.elements())

    def wait_gone(self, name):
        self.wait_for(lambda: not self.shows(name), f"the end of «{name}»")

    # What a customer does

    def scroll_to(self, name, up=False):
        """Turns the wheel over the middle of the screen, down and then up, until this is showing. With `up`, first up."""
        first, then = ("4", "5") if up else ("5", "4")
        for wheel in (first,) * 40 + (then,) * 40:
            if self.shows(name):
                break
            self.turn_wheel(wheel)
        return self.find(name)

    def turn_wheel(self, button):
        """Turns the wheel once over the middle of the screen: up is button 4, down is 5."""
        x, y = self.size[0] // 2, self.size[1] // 2
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", button], check=True)
        self.wait_still()

    def press(self, name, role=None):
        self.find(name, role).press()

    def type(self, name, text):
        """Goes to a field and types on the keyboard."""
        self.focus(name)
        self.replace(name, text)

    def replace(self, name, text):
        """Types another text into the field with the focus. Keys take another way to the app than presses do, so this
        waits until the field has them all."""
        self.keys("ctrl+a")
        if text:
            self.write(text)
        else:
            self.keys("Delete")
        self.wait_for(lambda: self.find(name).text() in (text, "•" * len(text)), f"the typed text in «{name}»")

    def keys(self, *names):
        subprocess.run(["xdotool", "key", "--delay", "4", *names], check=True)

    def write(self, text):
        """Types on the keyboard, wherever the focus is."""
        subprocess.run(["xdotool", "type", "--delay", "4", text], check=True)

    def compose(self, letters):
        """Types letters that stay unfinished, each once the app shows the one before."""
        for count, letter in enumerate(letters, 1):
            before = len(self.composed.read_text())
            self.keys(letter)
            self.wait_for(lambda: letters[:count] in self.composed.read_text()[before:].splitlines(),
                          f"«{letters[:count]}» that is shown and not finished")
        self.wait_still()

    def hold(self, key, seconds=1):
        """Keeps a key down for long enough that the server repeats it, a dozen times."""
        subprocess.run(["xdotool", "keydown", key, "sleep", str(seconds), "keyup", key], check=True)

    def point(self, name, role=None):
        """Moves the pointer over the middle of an element, where that stays."""
        self.wait_still()
        box = self.find(name, role).box()
        subprocess.run(["xdotool", "mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2)], check=True)

    def swipe_back(self):
        """With a finger, from the left edge across the screen. The app sees it in more than one place on the way."""
        y = str(self.size[1] * 2 // 3)
        subprocess.run(["xdotool", "mousemove", "2", y, "mousedown", "1"], check=True)
        for part in (1, 2, 3):
            subprocess.run(["xdotool", "mousemove", str(self.size[0] * part // 4), y], check=True)
            self.wait_still()
        subprocess.run(["xdotool", "mouseup", "1"], check=True)

    def click(self, name, role=None):
        self.point(name, role)
        subprocess.run(["xdotool", "click", "1"], check=True)

    def click_twice(self, name, role=None):
        """So soon after each other that what the first one closes is still on show, on a busy machine too."""
        self.point(name, role)
        subprocess.run(["xdotool", "click", "--repeat", "2", "--delay", "1", "1"], check=True)

    def focused(self):
        """The names of what has the keyboard focus, the innermost last."""
        return [e.name for e in self.elements() if "focused" in e.states]

    def focus(self, name):
        self.find(name).focus()
        self.wait_focus(name)

    def wait_focus(self, name):
        try:
            self.wait_for(lambda: self.focused()[-1:] == [name], f"the focus in «{name}»")
        except Gone as gone:
            raise Gone(f"{gone}; it is in {self.focused()}") from None

    def wait_text(self, name, text):
        try:
            self.wait_for(lambda: self.find(name).text() == text, f"«{text}» in «{name}»")
        except Gone as gone:
            raise Gone(f"{gone}; there is «{self.find(name).text()}»") from None

    def activate(self):
        """What a window manager does with a new window; without one the app never is the active one, and input methods
        stay out of it."""
        subprocess.run(["xdotool", "search", "--onlyvisible", "--all", "--pid", str(self.app.pid), "--name", "^Marovenda$",
                        "windowfocus"], check=True)
        self.wait_for(lambda: self._application().get_child_at_index(0).get_state_set().contains(
            self.atspi.StateType.ACTIVE), "the app's window to be active")

    def calls(self):
        """The arguments of each call of the system's opener."""
        file = self.home / "opened"
        fields = file.read_bytes().decode(errors="surrogateescape").split("\0")[:-1] if file.exists() else []
        calls = []
        while fields:
            count = int(fields[0])
            calls.append(fields[1:1 + count])
            fields = fields[1 + count:]
        return calls

    def opened(self):
        """Every address that the app has handed to the system."""
        return [address for address, in self.calls()]

    def picture(self, path):
        subprocess.run(["import", "-window", "root", str(path)], check=True)

    def colours(self, size):
        """The number of colours in the square of this size in the middle of the display."""
        width, height = self.size
        pixels = memoryview((self.home / "Xvfb_screen0").read_bytes())[-4 * width * height:].cast("I")
        corner = (height - size) // 2 * width + (width - size) // 2
        return len(set().union(*(pixels[row:row + size] for row in range(corner, corner + size * width, width))))

    def is_busy(self):
        """Whether the app computes something, or waits for a processor to do so."""
        threads = pathlib.Path(f"/proc/{self.app.pid}/task").glob("*/stat") if self.app else ()
        try:
            return any(stat.read_text().rsplit(")", 1)[1].split()[0] == "R" for stat in threads)
        except (FileNotFoundError, ProcessLookupError):
            return True  # a thread ended while we looked

    def wait_still(self, still=STILL, limit=10 * STILL):
        """Until the app has had nothing to do and nothing has moved for a moment; what never stands still, the splash, is taken
        as it is then."""
        until, since, before = time.monotonic() + limit, time.monotonic(), b""
        while time.monotonic() < until:
            now = (self.home / "Xvfb_screen0").read_bytes()
            if now != before or self.is_busy():
                since, before = time.monotonic(), now
            elif time.monotonic() - since > still:
                return
            time.sleep(0.02)

    def standard_error(self):
        """What the app has said. Qt tells of a screen reader that asks for what has just gone, of an accessibility service
        that takes more than a tenth of a second for a key, and of its own clock of animations being stopped twice."""
        return "".join(line for line in self.errors.read_text().splitlines(keepends=True) if not line.startswith(QT_SAYS))
