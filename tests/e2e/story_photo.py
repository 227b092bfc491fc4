"""The profile's photo, from the device's pictures to the dashboard and the next start."""

import subprocess

from customer import Customer
from stage import ANA, BRUNO, story


def photo_colour(phone):
    """The colour in the middle of the dashboard's photo."""
    box = phone.find("Foto de perfil").box()
    pixel = subprocess.run(["import", "-window", "root", "-crop", f"1x1+{box.x + box.width // 2}+{box.y + box.height // 2}",
                            "-depth", "8", "rgb:-"], check=True, stdout=subprocess.PIPE).stdout
    return tuple(pixel[:3])


def wait_red(phone, what):
    def is_red():
        red, green, blue = photo_colour(phone)
        return red > 200 and green < 60 and blue < 60
    phone.wait_for(is_red, what)


@story
def photo(stage):
    with Customer() as phone:
        pictures = phone.home / "Pictures"
        pictures.mkdir()
        for name, colour in (("rojo", "red"), ("verde", "lime")):
            subprocess.run(["convert", "-size", "400x300", f"xc:{colour}", str(pictures / f"{name}.png")], check=True)
        with stage.service():
            phone.open_at_login(stage.app)
            phone.sign_in(ANA, "230 Paquetes")
            phone.enter("Perfil")
            phone.pick_photo("rojo")
            phone.send({}, "Guardar Cambios", "Perfil actualizado con éxito", "alert")
            phone.leave()
            wait_red(phone, "the photo on the dashboard")
            phone.close()
            phone.open(stage.app)
            phone.find("230 Paquetes")
            wait_red(phone, "the photo after a restart")
        # Without the service nothing is saved, and the old photo stays.
        phone.enter("Perfil")
        phone.pick_photo("verde")
        phone.send({}, "Guardar Cambios", "Error al actualizar", "alert")
        phone.leave()
        wait_red(phone, "the old photo")
        with stage.service():
            # It is carried over to the next customer of this device.
            phone.press("Cerrar sesión")
            phone.sign_in(BRUNO, "2 Paquetes")
            wait_red(phone, "the photo of the one before")
        assert phone.standard_error() == "", phone.standard_error()
