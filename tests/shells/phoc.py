"""A phone with Phoc, the compositor of Phosh, which leaves title bars to the apps."""

from shell import ShellCustomer, run

CONFIGURATION = """[core]
xwayland=false
[output:HEADLESS-1]
mode = {0}x{1}
"""
# As Phosh sets it: each window fills the screen.
SETTINGS = "[sm/puri/phoc]\nauto-maximize=true\n"


class PhocCustomer(ShellCustomer):
    PROGRAMS = ("phoc", "grim")
    SOCKET = "wayland-0"

    def shell(self):
        configuration, settings = self.home / "phoc.ini", self.home / "config" / "glib-2.0" / "settings" / "keyfile"
        configuration.write_text(CONFIGURATION.format(*self.size))
        settings.parent.mkdir(parents=True)
        settings.write_text(SETTINGS)
        return "phoc", "--config", str(configuration)

    def shell_environment(self):
        return {"WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1",
                "GSETTINGS_BACKEND": "keyfile", "XDG_CONFIG_HOME": str(self.home / "config")}

    def picture(self, path):
        run("grim", str(path))

    def shot(self):
        return run("grim", "-t", "ppm", "-")
