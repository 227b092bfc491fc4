"""Takes the app on a tour from outside, as a customer would go, with a picture and a line for each step.

usage: tour.py APP DIRECTORY  (the demo service must be running)
"""

import os
import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from phone import Gone, Phone


class Tour:
    def __init__(self, phone, directory):
        self.phone, self.directory, self.count = phone, directory, 0

    def step(self, name, what, wait=3):
        """Says what has been done and what is on screen now, and takes a picture of it."""
        self.count += 1
        self.phone.wait_still(limit=wait)
        self.phone.picture(self.directory / f"{self.count:02}-{name}.png")
        heard = "; ".join(e.name.replace("\n", ", ") for e in self.phone.elements() if e.name)
        print(f"{self.count:2}. {what}\n    {heard}", flush=True)

    def back(self):
        """To the dashboard, by the control that the screen has for it."""
        self.phone.press("Volver al Panel" if self.phone.shows("Volver al Panel") else "Atrás")
        self.phone.find("Bienvenido")

    def sign_in(self, executable):
        phone = self.phone
        phone.open(executable)
        phone.find("Desarrollado por Corvandel")
        self.step("inicio", "The app starts with its splash.", wait=1.6)
        phone.find("Iniciar Sesión")
        phone.wait_gone("Desarrollado por Corvandel")
        self.step("ingreso", "Nobody is signed in: the sign-in follows.")

        phone.press("¿Olvidaste tu contraseña?")
        phone.find("Recuperar Contraseña")
        self.step("recuperar", "The link under the password asks where to send the recovery.")
        phone.press("Cancelar")
        phone.wait_gone("Recuperar Contraseña")

        phone.press("¿No tienes cuenta? Regístrate aquí")
        phone.find("Crear Cuenta")
        self.step("registro", "Who is new registers here.")
        phone.press("Atrás")

        phone.type("Correo Electrónico", "ana@marovenda.example")
        phone.type("Contraseña", "Casillero#1")
        self.step("datos", "Ana types her address and password.")
        phone.press("Iniciar Sesión")
        phone.find("230 Paquetes")
        self.step("panel", "Her dashboard, with what the service holds for her.")

    def quotation(self):
        phone = self.phone
        phone.press("Cotizar")
        phone.press("Marítimo")
        phone.type("Peso (Lbs)", "12.5")
        phone.type("Valor Declarado (USD)", "40")
        phone.type("Descripción del contenido", "Silla de playa")
        phone.press("Enviar Cotización")
        phone.find("Enviado con éxito")
        self.step("cotizar", "She asks for a quotation by sea.")
        self.back()
        phone.scroll_to("Ver todas")
        phone.press("Ver todas")
        phone.find("Silla de playa, PENDIENTE, Origen: Miami, USA")
        self.step("cotizaciones", "It is the first of her quotations now.")
        self.back()
        phone.scroll_to("Cerrar sesión")

    def profile(self):
        phone = self.phone
        phone.press("Perfil")
        phone.find("Guardar Cambios")
        self.step("perfil", "Her profile.")
        phone.press("Cambiar foto")
        phone.find("playa", "push button")
        self.step("foto", "She changes her photo: the pictures of her device.")
        phone.press("playa", "push button")
        phone.wait_gone("Elegir foto")
        phone.press("Guardar Cambios")
        phone.find("Perfil actualizado con éxito")
        self.step("guardado", "Her profile is saved, with the photo.")
        self.back()

    def other_screens(self):
        phone = self.phone
        for tile, name, inside, what in (
                ("Casillero", "casillero", "Mi Casillero", "Her mailbox, with the name to address parcels to."),
                ("Autos", "autos", "Importar Vehículo", "A vehicle can be asked for here."),
                ("Dev", "dev", "Desarrollo de Software & IT Solutions", "Who made the app."),
                ("230 Paquetes", "paquetes", "Mis Paquetes", "All of her packages.")):
            phone.press(tile)
            phone.find(inside)
            phone.wait_gone("Bienvenido")
            self.step(name, what)
            self.back()

    def tracking_and_goodbye(self):
        phone = self.phone
        phone.scroll_to("Número de tracking...")
        phone.type("Número de tracking...", "MRV-100230")
        phone.press("Buscar")
        phone.wait_for(phone.opened, "the tracking page")
        self.step("rastreo", f"She looks a number up; the browser is sent to {phone.opened()[-1]}")
        phone.scroll_to("Cerrar sesión")
        self.step("foto-panel", "Her photo is on the dashboard.")
        phone.press("Cerrar sesión")
        phone.find("Iniciar Sesión")
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
    with Phone() as phone:
        os.environ["HOME"] = str(phone.home)
        make_pictures(phone.home / "Pictures")
        tour = Tour(phone, directory)
        tour.sign_in(executable)
        tour.quotation()
        tour.profile()
        tour.other_screens()
        tour.tracking_and_goodbye()
        if errors := phone.standard_error():
            print(errors, file=sys.stderr)
        print(f"\n{tour.count} pictures in {directory}")


if __name__ == "__main__":
    try:
        main()
    except Gone as gone:
        sys.exit(f"The tour ended early: {gone}")
