"""Takes the app on a tour from outside, as a customer would go, with a picture and a line for each step.

usage: tour.py APP DIRECTORY  (the demo service must be running)
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from phone import Gone, Phone


def main():
    executable, directory = sys.argv[1], pathlib.Path(sys.argv[2])
    directory.mkdir(parents=True, exist_ok=True)
    for old in directory.glob("*.png"):
        old.unlink()
    with Phone() as phone:
        count = 0

        def step(name, what, wait=3):
            nonlocal count
            count += 1
            phone.wait_still(limit=wait)
            phone.picture(directory / f"{count:02}-{name}.png")
            heard = "; ".join(e.name for e in phone.elements() if e.name)
            print(f"{count:2}. {what}\n    {heard}", flush=True)

        phone.open(executable)
        phone.find("Desarrollado por Corvandel")
        step("inicio", "The app starts with its splash.", wait=1.4)

        phone.find("Iniciar Sesión")
        phone.wait_gone("Desarrollado por Corvandel")
        step("ingreso", "Nobody is signed in: the sign-in follows.")

        phone.press("¿Olvidaste tu contraseña?")
        phone.find("Recuperar Contraseña")
        step("recuperar", "The link under the password asks where to send the recovery.")
        phone.press("Cancelar")
        phone.wait_gone("Recuperar Contraseña")

        phone.type("Correo Electrónico", "ana@marovenda.example")
        phone.type("Contraseña", "Casillero#1")
        step("datos", "Ana types her address and password.")

        phone.press("Iniciar Sesión")
        phone.find("230 Paquetes")
        step("panel", "Her dashboard, with what the service holds for her.")

        phone.scroll_to("Número de tracking...")
        phone.type("Número de tracking...", "MRV-100230")
        phone.press("Buscar")
        phone.wait_for(phone.opened, "the tracking page")
        step("rastreo", f"She looks a number up; the browser is sent to {phone.opened()[-1]}")

        phone.scroll_to("Cerrar sesión")
        phone.press("Cerrar sesión")
        phone.find("Iniciar Sesión")
        step("salida", "She signs out.")
        errors = phone.standard_error()
        if errors:
            print(errors, file=sys.stderr)
        print(f"\n{count} pictures in {directory}")


if __name__ == "__main__":
    try:
        main()
    except Gone as gone:
        sys.exit(f"The tour ended early: {gone}")
