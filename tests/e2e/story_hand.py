"""A hand that holds keys too long, clicks twice, and goes from the keyboard to the pointer and back. The display's server
repeats held keys, as no test without one does."""

import json
import subprocess

from customer import DASHBOARD, EMAIL, FORGOT, NAME, NUMBER, PASSWORD, RECOVERY, RECOVERY_FIELD, REGISTER
from stage import story

ANA = ("ana@x", "b")


def check_held(phone, server, name):
    """However long a key is down, one request is sent. The one after shows that no further one is on its way."""
    for key in ("Return", "KP_Enter", "space"):
        before = len(server.posts())
        phone.focus(name)
        phone.one_more(server.posts, phone.hold, key)
        phone.one_more(server.posts, phone.press, name)
        sent = len(server.posts()) - before - 1
        assert sent == 1, f"{key} held on «{name}» sends {sent} requests"


@story
def held_key(stage):
    with stage.scripted(height=1300) as (phone, server):
        phone.focus(EMAIL)
        phone.hold("a")
        # The server repeats what is held.
        phone.wait_for(lambda: len(phone.find(EMAIL).text()) > 4, "a letter that is repeated")
        phone.type(PASSWORD, "b")
        check_held(phone, server, "Iniciar Sesión")

        # Not even what goes under the key is pressed again where it comes back.
        before = len(server.posts())
        phone.focus(FORGOT)
        phone.hold("Return")
        phone.find(RECOVERY, "dialog")
        # Keys come one after another: whatever the held one has done has been done before this letter.
        phone.write("x")
        phone.wait_text(RECOVERY_FIELD, "x")
        assert len(server.posts()) == before, "the key that has opened the alert has sent it too"
        phone.hold("Return")
        phone.wait_gone(RECOVERY)
        phone.wait_focus(FORGOT)
        phone.keys("Tab")
        phone.wait_focus("Iniciar Sesión")
        assert not phone.shows(RECOVERY), "the key that has sent the alert has opened it again"
        assert len(server.posts()) == before + 1, len(server.posts())

        phone.type(EMAIL, "ana@x")
        phone.focus("Iniciar Sesión")
        phone.hold("Return")
        phone.find("1 Paquetes")
        phone.type(NUMBER, "x")
        phone.wait_text(NUMBER, "x")
        assert phone.shows(DASHBOARD) and phone.opened() == [], phone.describe()
        assert len(server.posts()) == before + 2, len(server.posts())

        for tile, button in (("Cotizar", "Enviar Cotización"), ("Perfil", "Guardar Cambios")):
            phone.enter(tile)
            check_held(phone, server, button)
            phone.leave("Escape")


@story
def second_click(stage):
    with stage.scripted() as (phone, server):
        phone.type(EMAIL, "ana")
        for count in (1, 2):
            phone.click(FORGOT)
            phone.wait_focus(RECOVERY_FIELD)
            phone.write("otra@x")
            phone.click_twice("Enviar")
            phone.wait_gone(RECOVERY)
            phone.wait_for(lambda: len(server.posts()) >= count, "the recovery")
            phone.wait_focus(EMAIL)
            phone.write("x")
            phone.wait_text(EMAIL, "ana" + count * "x")
            assert len(server.posts()) == count, "a click twice sends twice"

        # Enough photos that one of them is over each of what is below.
        pictures = phone.home / "Pictures"
        pictures.mkdir()
        subprocess.run(["convert", "-size", "60x60", "xc:red", "-duplicate", "17", str(pictures / "%d.png")], check=True)
        phone.sign_in(ANA, "1 Paquetes")
        phone.enter("Perfil")
        phone.type(NAME, "Ana")
        before = len(server.posts())
        phone.wait_still()
        below = {name: phone.find(name).box() for name in (NAME, "Cambiar foto", "Guardar Cambios")}
        for count, (name, box) in enumerate(below.items(), 1):
            phone.click("Cambiar foto")
            phone.find("17", "push button")
            phone.wait_still()
            # Near its beginning, which is another place in a text than where the caret is.
            subprocess.run(["xdotool", "mousemove", str(box.x + 20), str(box.y + box.height // 2), "click", "--repeat", "2",
                            "--delay", "1", "1"], check=True)
            phone.wait_gone("Elegir foto")
            phone.wait_focus(NAME)
            phone.write("x")
            phone.wait_text(NAME, "Ana" + count * "x")
            assert not phone.shows("Elegir foto"), "the second click has opened the photos again"
            assert len(server.posts()) == before, f"the second click has gone through to «{name}»"


@story
def click_leaves_the_focus(stage):
    with stage.scripted(height=1300) as (phone, server):
        def check(field, button, look=server.posts):
            """After a click, which changes what `look` gives, the focus and the caret are where they were."""
            phone.type(field, "abc")
            phone.keys("Home", "Right")
            phone.wait_for(lambda: phone.find(field).caret() == 1, "the caret")
            before = look()
            phone.click(button)
            phone.wait_for(lambda: look() != before, f"what {button} does")
            phone.wait_focus(field)
            phone.write("x")
            phone.wait_text(field, "axbc")

        phone.type(PASSWORD, "b")
        check(EMAIL, "Iniciar Sesión")
        phone.send({}, REGISTER, "Crear Cuenta")
        phone.wait_gone("Iniciar Sesión")
        check("Ciudad", "Registrarme", lambda: phone.shows("Por favor completa todos los campos"))
        phone.keys("Escape")
        phone.find("Iniciar Sesión")
        phone.wait_gone("Crear Cuenta")
        phone.sign_in(ANA, "1 Paquetes")
        check(NUMBER, "Buscar", phone.opened)
        for tile, field, button in (("Autos", "Año", "Solicitar Importación"), ("Perfil", NAME, "Guardar Cambios"),
                                    ("Cotizar", "Descripción del contenido", "Enviar Cotización")):
            phone.enter(tile)
            check(field, button)
            if tile != "Cotizar":
                phone.leave("Escape")
        for mode in ("Marítimo", "Aéreo"):
            check("Peso (Lbs)", mode, lambda: "checked" in phone.find(mode).states)


@story
def focus_comes_back(stage):
    with stage.scripted(height=1300) as (phone, _):
        def close(way, dialog=RECOVERY, inside=RECOVERY_FIELD, back=FORGOT):
            phone.find(dialog, "dialog")
            phone.wait_focus(inside)
            phone.click(way) if way == "Cancelar" else phone.keys(way)
            phone.wait_gone(dialog)
            phone.wait_focus(back)

        # What a key has opened gives the focus back to what the key was on.
        phone.type(EMAIL, "ana")
        phone.keys("Tab", "Tab")
        phone.wait_focus(FORGOT)
        for key, way in (("Return", "Escape"), ("space", "Cancelar"), ("space", "Return")):
            phone.keys(key)
            close(way)
        # What the pointer has opened, to where the typing was.
        phone.focus(EMAIL)
        phone.keys("End")
        for typed, way in (("anax", "Escape"), ("anaxx", "Cancelar")):
            phone.click(FORGOT)
            close(way, back=EMAIL)
            phone.write("x")
            phone.wait_text(EMAIL, typed)
        phone.sign_in(ANA, "1 Paquetes")
        phone.type(NUMBER, "T2")
        phone.enter("Cotizar", way=phone.click)
        phone.leave("Escape")
        phone.wait_focus(NUMBER)
        phone.enter("Perfil")
        for way in ("Escape", "Cancelar"):
            phone.focus("Cambiar foto")
            phone.keys("Return")
            close(way, "Elegir foto", "Elegir foto", "Cambiar foto")
        phone.type(NAME, "Ana")
        phone.click("Cambiar foto")
        close("Escape", "Elegir foto", "Elegir foto", NAME)


@story
def password_from_assistive_technology(stage):
    with stage.scripted() as (phone, server):
        # Of the two kinds of field only this one offers it: Qt's own fields do not
        # (https://doc.qt.io/qt-6/qaccessibleeditabletextinterface.html).
        phone.type(EMAIL, "ana@y")
        password = phone.find(PASSWORD)
        password.set_text("Clave")
        phone.wait_text(PASSWORD, 5 * "•")
        password.insert_text(5, "#77")
        password.delete_text(6, 7)
        phone.wait_text(PASSWORD, 7 * "•")
        body = json.loads(phone.one_more(server.posts, phone.press, "Iniciar Sesión").body)
        assert body == {"email": "ana@y", "password": "Clave#7"}, body
