"""A phone with Sway, the compositor that shares its library with those of other phone shells. It shows one window on the
whole screen, which can be turned, and it has a clipboard and a keyboard, but no fingers."""

import json
import os
import subprocess

from shell import ShellCustomer, run

CONFIGURATION = """output HEADLESS-1 mode {0}x{1} scale {2}
default_border none
focus_follows_mouse no
"""


class SwayCustomer(ShellCustomer):
    PROGRAMS = ("sway", "swaymsg", "grim", "wl-copy", "wl-paste", "wtype")

    def shell(self):
        configuration = self.home / "sway"
        configuration.write_text(CONFIGURATION.format(self.size[0] * self.scale, self.size[1] * self.scale, self.scale))
        # Sway refuses to be run by root.
        nobody = ("unshare", "--user", "--map-user=1000") if os.getuid() == 0 else ()
        return (*nobody, "sway", "--config", str(configuration))

    def _start_buses(self):
        super()._start_buses()
        # An app misses the keys of a keyboard that comes just before them: this one is there all the time, and silent.
        self._spawn("wtype", "-s", "1000000")

    def shell_environment(self):
        os.environ["SWAYSOCK"] = str(self.home / "swaysock")
        return {"WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1",
                "SWAYSOCK": os.environ["SWAYSOCK"]}

    def message(self, *words):
        """What Sway says to a command; with "-t", to a question."""
        return json.loads(run("swaymsg", "--raw", *words))

    def output(self, *words):
        self.message("output", "HEADLESS-1", *words)

    def turn(self, width, height):
        """Gives the screen another size, as turning the phone does."""
        self.output("mode", f"{width}x{height}")
        self.wait_window(width, height)

    def view(self):
        """How Sway has the app's window."""
        def search(node):
            if node.get("pid") == self.app.pid:
                return node
            return next(filter(None, map(search, node["nodes"] + node["floating_nodes"])), None)
        return search(self.message("-t", "get_tree"))

    def keys(self, *names):
        for name in names:
            *held, key = name.split("+")
            run("wtype", *(word for each in held for word in ("-M", each)), "-k", key)

    def write(self, text):
        run("wtype", text)

    def shot(self):
        return run("grim", "-t", "ppm", "-")

    def picture(self, path):
        run("grim", str(path))

    def copied(self):
        """Empty where there is nothing."""
        return subprocess.run(["wl-paste", "--no-newline"], check=False, capture_output=True, text=True).stdout

    def copy(self, text):
        subprocess.run(["wl-copy"], input=text.encode(), check=True)
