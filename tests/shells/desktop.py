"""A phone whose shell has a desktop's portal, which shows GTK's dialogs and tells apps of GNOME's settings."""

import os
import subprocess

from sway import SwayCustomer

BACKEND, PORTAL = "/usr/libexec/xdg-desktop-portal-gtk", "/usr/libexec/xdg-desktop-portal"
INTERFACE = "org.gnome.desktop.interface"


class DesktopCustomer(SwayCustomer):
    PROGRAMS = (*SwayCustomer.PROGRAMS, BACKEND, PORTAL, "gsettings")

    def _set_environment(self):
        super()._set_environment()
        os.environ.pop("QT_QPA_PLATFORMTHEME", None)
        # The settings are in a file of the private home.
        os.environ.update(XDG_CURRENT_DESKTOP="GNOME", GSETTINGS_BACKEND="keyfile")

    def _start_buses(self):
        super()._start_buses()
        with open(self.home / "portal.log", "w") as log:
            self.chooser = self._serve("org.freedesktop.impl.portal.desktop.gtk", BACKEND, log, GDK_BACKEND="wayland")
            self._serve("org.freedesktop.portal.Desktop", PORTAL, log)

    def _serve(self, name, program, log, **environment):
        """Starts what takes a name on the session bus."""
        from gi.repository import Gio
        process = self._spawn(program, env={**os.environ, **environment}, stdout=log, stderr=log)
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.wait_for(lambda: bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                            "NameHasOwner", self.glib.Variant("(s)", (name,)), None, 0, -1,
                                            None).unpack()[0], name)
        return process

    def set(self, key, value):
        """Changes a setting of the desktop."""
        subprocess.run(["gsettings", "set", INTERFACE, key, value], check=True)

    # The desktop's file chooser

    def chooser_elements(self):
        return self.elements(process=self.chooser)

    def find_in_chooser(self, what, is_it):
        return self.wait_for(lambda: next(filter(is_it, self.chooser_elements()), None),
                             f"{what} of the desktop's file chooser")

    def press_in_chooser(self, name):
        self.find_in_chooser(f"«{name}»", lambda e: e.name == name).press("click")
        self.wait_for(lambda: not self.chooser_elements(), "the end of the desktop's file chooser")
        self.activate()

    def open_chooser(self):
        self.keys("Return")
        self.find_in_chooser("the list", lambda e: e.role == "table" and "focused" in e.states)

    def choose(self, path):
        # A slash opens the entry for a path.
        self.write("/")
        entry = self.find_in_chooser("the entry", lambda e: e.role == "text" and "focused" in e.states)
        entry.set_text(str(path))
        self.press_in_chooser("Select")
