"""Takes the app on a tour from outside, as a customer would go, with a picture and a line for each step.

usage: tour.py APP DIRECTORY  (the demo service must be running, or another one with its customer ana@marovenda.example)
"""

import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from customer import FORGOT, NUMBER, QUOTATION, RECOVERY, REGISTER, SPLASH, Customer
from phone import Gone


class Tour(Customer):
    def __init__(self, directory):
        super().__init__()
        self.directory, self.count = directory, 0

    def take(self, executable):
        make_pictures(self.home / "Pictures")
        self.arrive(executable)
        self.quotation()
        self.profile()
        self.other_screens()
        self.tracking_and_goodbye()

    def step(self, name, what, **wait):
        """Says what has been done and what is on screen now, and takes a picture of it."""
        self.count += 1
        self.wait_still(**wait)
        self.picture(self.directory / f"{self.count:02}-{name}.png")
        heard = "; ".join(e.name.replace("\n", ", ") for e in self.elements() if e.name)
        print(f"{self.count:2}. {what}\n    {heard}", flush=True)

    def arrive(self, executable):
        # The splash does not wait until a screen reader hears of it, which takes an emulated app longer than the splash.
        # Without its logo, the middle of the splash has some dozen colours.
        self.start(executable)
        self.wait_for(lambda: self.colours(160) > 100, "the splash's logo")
        self.step("inicio", "The app starts with its splash.", limit=1)
        self.find("Iniciar Sesión")
        self.wait_gone(SPLASH)
        self.step("ingreso", "Nobody is signed in: the sign-in follows.")
        self.send({}, FORGOT, RECOVERY)
        self.step("recuperar", "The link under the password asks where to send the recovery.")
        self.press("Cancelar")
        self.wait_gone(RECOVERY)
        self.send({}, REGISTER, "Crear Cuenta")
        self.step("registro", "Who is new registers here.")
        self.send({}, "Atrás", "Iniciar Sesión")
        self.sign_in(("ana@marovenda.example", "Casillero#1"), "230 Paquetes",
                     look=lambda: self.step("datos", "Ana types her address and password."))
        self.step("panel", "Her dashboard, with what the service holds for her.")

    def quotation(self):
        self.enter("Cotizar")
        self.press("Marítimo")
        self.send(QUOTATION, "Enviar Cotización", "Enviado con éxito")
        self.step("cotizar", "She asks for a quotation by sea.")
        self.leave()
        self.scroll_to("Ver todas")
        self.enter("Ver todas", "Silla de playa, PENDIENTE, Origen: Miami, USA")
        self.step("cotizaciones", "It is the first of her quotations now.")
        self.leave()
        self.scroll_to("Cerrar sesión", up=True)

    def profile(self):
        self.enter("Perfil")
        self.step("perfil", "Her profile.")
        self.pick_photo("playa", look=lambda: self.step("foto", "She changes her photo: the pictures of her device."))
        self.send({}, "Guardar Cambios", "Perfil actualizado con éxito")
        self.step("guardado", "Her profile is saved, with the photo.")
        self.leave()

    def other_screens(self):
        for tile, name, what in (("Casillero", "casillero", "Her mailbox, with the name to address parcels to."),
                                 ("Autos", "autos", "A vehicle can be asked for here."),
                                 ("Dev", "dev", "Who made the app."), ("230 Paquetes", "paquetes", "All of her packages.")):
            self.enter(tile)
            self.step(name, what)
            self.leave()

    def tracking_and_goodbye(self):
        self.scroll_to(NUMBER)
        self.type(NUMBER, "MRV-100230")
        self.press("Buscar")
        self.wait_for(self.opened, "the tracking page")
        self.step("rastreo", f"She looks a number up; the browser is sent to {self.opened()[-1]}")
        self.scroll_to("Cerrar sesión", up=True)
        # The upper edge may still cut the photo.
        self.turn_wheel("4")
        self.step("foto-panel", "Her photo is on the dashboard.")
        self.send({}, "Cerrar sesión", "Iniciar Sesión")
        self.step("salida", "She signs out.")


def make_pictures(folder):
    """Some pictures on the device to choose from."""
    folder.mkdir()
    for name, sky, ground in (("playa", "skyblue", "sandybrown"), ("campo", "lightcyan", "olivedrab"),
                              ("noche", "midnightblue", "darkslategray"), ("flores", "mistyrose", "hotpink")):
        subprocess.run(["convert", "-size", "600x400", f"gradient:{sky}-{ground}", str(folder / f"{name}.jpg")], check=True)


def main():
    executable, directory = sys.argv[1], pathlib.Path(sys.argv[2])
    directory.mkdir(parents=True, exist_ok=True)
    for old in directory.glob("*.png"):
        old.unlink()
    with Tour(directory) as tour:
        tour.take(executable)
        if errors := tour.standard_error():
            print(errors, file=sys.stderr)
        print(f"\n{tour.count} pictures in {directory}")


if __name__ == "__main__":
    try:
        main()
    except Gone as gone:
        sys.exit(f"The tour ended early: {gone}")
