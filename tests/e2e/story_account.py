"""Stories of recovery, registration and the profile."""

import os
import subprocess

from phone import Phone
from stage import ANA, BRUNO, open_at_login, sign_in, story


@story
def recovery(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        phone.press("¿Olvidaste tu contraseña?")
        phone.find("Recuperar Contraseña", "dialog")
        assert not phone.shows("Iniciar Sesión"), "the form is heard under the alert"
        assert "focused" in phone.find("Ingresa tu correo registrado").states
        subprocess.run(["xdotool", "type", "--delay", "4", ANA[0]], check=True)
        phone.wait_for(lambda: phone.find("Ingresa tu correo registrado").text() == ANA[0], "the typed address")
        phone.keys("Return")
        phone.find("Si el correo está registrado, recibirás un enlace", "alert")
        phone.wait_gone("Recuperar Contraseña")


@story
def registration(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        phone.press("¿No tienes cuenta? Regístrate aquí")
        phone.press("Registrarme")
        phone.find("Por favor completa todos los campos", "alert")
        phone.type("Nombre Completo", "Eva Moreno ")
        phone.type("Correo Electrónico", ANA[0])
        phone.type("Dirección de Domicilio", "Calle 50")
        phone.type("Ciudad", "Colon")
        phone.type("Contraseña", "clave.1")
        phone.press("Registrarme")
        phone.find("La contraseña debe incluir al menos una mayúscula y un carácter especial", "alert")
        phone.type("Contraseña", "Clave.1")
        phone.press("Registrarme")
        phone.find("Ese correo ya está registrado", "alert")
        phone.type("Correo Electrónico", "eva@marovenda.example")
        phone.press("Registrarme")
        phone.find("Hola, Eva Moreno")
        phone.find("0 Paquetes")
        phone.press("Cerrar sesión")
        sign_in(phone, ("eva@marovenda.example", "Clave.1"))
        phone.find("Hola, Eva Moreno")


def photo_colour(phone):
    """The colour in the middle of the dashboard's photo."""
    box = phone.find("Foto de perfil").box()
    pixel = subprocess.run(["import", "-window", "root", "-crop", f"1x1+{box.x + box.width // 2}+{box.y + box.height // 2}",
                            "-depth", "8", "rgb:-"], check=True, stdout=subprocess.PIPE).stdout
    return tuple(pixel[:3])


def is_red(colour):
    return colour[0] > 200 and colour[1] < 60 and colour[2] < 60


@story
def photo(stage):
    with Phone() as phone:
        os.environ["HOME"] = str(phone.home)
        pictures = phone.home / "Pictures"
        pictures.mkdir()
        for name, colour in (("rojo", "red"), ("verde", "lime")):
            subprocess.run(["convert", "-size", "400x300", f"xc:{colour}", str(pictures / f"{name}.png")], check=True)

        def pick(name):
            phone.press("Cambiar foto")
            phone.find("Elegir foto", "dialog")
            phone.press(name, "push button")
            phone.wait_gone("Elegir foto")

        with stage.service():
            open_at_login(phone, stage.app)
            sign_in(phone, ANA)
            phone.find("230 Paquetes")
            phone.press("Perfil")
            pick("rojo")
            phone.press("Guardar Cambios")
            phone.find("Perfil actualizado con éxito", "alert")
            phone.press("Atrás")
            phone.find("Bienvenido")
            phone.wait_for(lambda: is_red(photo_colour(phone)), "the photo on the dashboard")
            phone.close()
            phone.open(stage.app)
            phone.find("230 Paquetes")
            phone.wait_for(lambda: is_red(photo_colour(phone)), "the photo after a restart")
        # Without the service nothing is saved, and the old photo stays.
        phone.press("Perfil")
        pick("verde")
        phone.press("Guardar Cambios")
        phone.find("Error al actualizar", "alert")
        phone.press("Atrás")
        phone.find("Bienvenido")
        phone.wait_for(lambda: is_red(photo_colour(phone)), "the old photo")
        with stage.service():
            # It is carried over to the next customer of this device.
            phone.press("Cerrar sesión")
            sign_in(phone, BRUNO)
            phone.find("2 Paquetes")
            phone.wait_for(lambda: is_red(photo_colour(phone)), "the photo of the one before")
        assert phone.standard_error() == "", phone.standard_error()
