"""The profile's photo, from the device's pictures to the dashboard and the next start."""

import subprocess

from customer import Customer
from stage import ANA, BRUNO, story


def make_photos(phone):
    """Returns the folder that they are in."""
    pictures = phone.home / "Pictures"
    pictures.mkdir()
    for name, colour in (("rojo", "red"), ("verde", "lime")):
        subprocess.run(["convert", "-size", "400x300", f"xc:{colour}", str(pictures / f"{name}.png")], check=True)
    return pictures


@story
def photo(stage):
    with Customer() as phone:
        make_photos(phone)
        with stage.service():
            phone.open_at_login(stage.app)
            phone.sign_in(ANA, "230 Paquetes")
            phone.enter("Perfil")
            phone.pick_photo("rojo")
            phone.send({}, "Guardar Cambios", "Perfil actualizado con éxito", "alert")
            phone.leave()
            phone.wait_red_photo("the photo on the dashboard")
            phone.close()
            phone.open(stage.app)
            phone.find("230 Paquetes")
            phone.wait_red_photo("the photo after a restart")
        # Without the service nothing is saved, and the old photo stays.
        phone.enter("Perfil")
        phone.pick_photo("verde")
        phone.send({}, "Guardar Cambios", "Error al actualizar", "alert")
        phone.leave()
        phone.wait_red_photo("the old photo")
        with stage.service():
            # It is carried over to the next customer of this device.
            phone.press("Cerrar sesión")
            phone.sign_in(BRUNO, "2 Paquetes")
            phone.wait_red_photo("the photo of the one before")
        assert phone.standard_error() == "", phone.standard_error()
