"""Keeps a customer's device while its packages change. Signs in with the former version and chooses a photo; the version that
follows must still be signed in, with the photo.

usage: upgrade.py APP FORMER LATER  (the demo service must be running)

Prints "install VERSION" when that version is to be installed, and continues after a line on standard input.
"""

import subprocess
import sys

from customer import DASHBOARD, Customer
from phone import Gone

ANA = ("ana@marovenda.example", "Casillero#1")


def install(version):
    print(f"install {version}", flush=True)
    if not sys.stdin.readline():
        raise Gone(f"{version} was not installed")


def say(what):
    print(what, flush=True)


class Device(Customer):
    def expect_version(self, app, version):
        said = subprocess.run([app, "--version"], check=True, capture_output=True, text=True).stdout.split()[-1]
        say(f"{app} --version says {said}, of package {version}.")

    def expect_signed_in(self, what):
        self.find("Hola, Ana Lucía Peñalver Ríos")
        self.find("230 Paquetes")
        self.wait_red_photo(f"the photo {what}")
        say(f"Signed in, with the photo, {what}.")


def main():
    app, former, later = sys.argv[1:]
    with Device() as phone:
        pictures = phone.home / "Pictures"
        pictures.mkdir()
        subprocess.run(["convert", "-size", "400x300", "xc:red", str(pictures / "rojo.png")], check=True)
        install(former)
        phone.expect_version(app, former)
        phone.open_at_login(app)
        phone.sign_in(ANA, "230 Paquetes")
        phone.enter("Perfil")
        phone.pick_photo("rojo")
        phone.send({}, "Guardar Cambios", "Perfil actualizado con éxito", "alert")
        phone.leave()
        phone.expect_signed_in("before the upgrade")
        # Updates are installed while the app is open.
        install(later)
        phone.expect_version(app, later)
        phone.enter("Casillero")
        phone.leave()
        phone.expect_signed_in("in the app that was open meanwhile")
        phone.close()
        phone.open(app)
        phone.expect_signed_in("after the upgrade")
        phone.close()
        # Whether the former version can read the later one's store is up to the versions; it must not damage it.
        install(former)
        phone.open(app)
        phone.wait_for(lambda: phone.shows("Iniciar Sesión") or phone.shows(DASHBOARD), "the sign-in or the dashboard")
        say(f"After the downgrade, the customer is signed {'in' if phone.shows(DASHBOARD) else 'out'}.")
        phone.close()
        install(later)
        phone.open(app)
        phone.expect_signed_in("after another upgrade")
        phone.close()
        if errors := phone.standard_error():
            print(errors, file=sys.stderr)


if __name__ == "__main__":
    try:
        main()
    except Gone as gone:
        sys.exit(f"The upgrade ended early: {gone}")
