"""A hand that holds keys too long, clicks twice, and goes from the keyboard to the pointer and back."""

import contextlib
import json
import os
import subprocess

from phone import Phone
from scripted import ScriptedServer, reply
from stage import open_at_login, story

EMAIL, PASSWORD, LINK = "Correo Electrónico", "Contraseña", "¿Olvidaste tu contraseña?"
ALERT, ALERT_FIELD = "Recuperar Contraseña", "Ingresa tu correo registrado"


@contextlib.contextmanager
def customer(stage, height=1300):
    """A customer at the sign-in, which only ana@x passes. Forms are refused, so that they keep what was typed."""
    def script(request):
        if request.line.startswith("POST /api_login.php") and b'"ana@x"' in request.body:
            return reply('{"status":"success","id":"42","nombre":"Ana"}')
        if request.line.startswith("POST"):
            return reply('{"status":"error","message":"Otra vez"}')
        return reply('{"paquetes":[{"tracking":"T1"}]}')

    server = ScriptedServer(18473, script)
    with contextlib.closing(server), Phone(height=height) as phone:
        os.environ["HOME"] = str(phone.home)
        open_at_login(phone, stage.scripted_app)
        phone.activate()
        yield phone, server
        assert phone.standard_error() == "", phone.standard_error()


def enter_dashboard(phone):
    phone.type(EMAIL, "ana@x")
    phone.type(PASSWORD, "b")
    phone.press("Iniciar Sesión")
    phone.find("1 Paquetes")


def focus(phone, name):
    phone.find(name).focus()
    phone.wait_focus(name)


def check_held(phone, server, name):
    """However long a key is down, one request is sent. The one after shows that no further one is on its way."""
    for key in ("Return", "KP_Enter", "space"):
        before = len(server.posts())
        focus(phone, name)
        phone.hold(key)
        phone.wait_for(lambda: len(server.posts()) > before, f"the request of «{name}» for {key}")
        phone.press(name)
        phone.wait_for(lambda: len(server.posts()) > before + 1, f"the second request of «{name}»")
        sent = len(server.posts()) - before - 1
        assert sent == 1, f"{key} held on «{name}» sends {sent} requests"


@story
def held_key_on_button(stage):
    with customer(stage) as (phone, server):
        focus(phone, EMAIL)
        phone.hold("a")
        # The server repeats what is held.
        phone.wait_for(lambda: len(phone.find(EMAIL).text()) > 4, "a letter that is repeated")
        phone.type(PASSWORD, "b")
        check_held(phone, server, "Iniciar Sesión")
        enter_dashboard(phone)
        phone.press("Cotizar")
        phone.find("Cotizar Importación")
        phone.wait_gone("Bienvenido")
        check_held(phone, server, "Enviar Cotización")
        phone.keys("Escape")
        phone.find("Bienvenido")
        phone.wait_gone("Atrás")
        phone.press("Perfil")
        phone.wait_gone("Bienvenido")
        check_held(phone, server, "Guardar Cambios")


@story
def held_key_on_what_goes(stage):
    with customer(stage) as (phone, server):
        focus(phone, LINK)
        phone.hold("Return")
        phone.find(ALERT, "dialog")
        # Keys come one after another: whatever the held one has done has been done before this letter.
        phone.write("x")
        phone.wait_text(ALERT_FIELD, "x")
        assert not server.posts(), "the key that has opened the alert has sent it too"
        phone.hold("Return")
        phone.wait_gone(ALERT)
        phone.wait_focus(LINK)
        phone.keys("Tab")
        phone.wait_focus("Iniciar Sesión")
        assert not phone.shows(ALERT), "the key that has sent the alert has opened it again"
        assert len(server.posts()) == 1, len(server.posts())

        phone.type(EMAIL, "ana@x")
        phone.type(PASSWORD, "b")
        focus(phone, "Iniciar Sesión")
        phone.hold("Return")
        phone.find("1 Paquetes")
        focus(phone, "Número de tracking...")
        phone.write("x")
        phone.wait_text("Número de tracking...", "x")
        assert phone.shows("Bienvenido") and len(server.posts()) == 2, phone.describe()


@story
def second_click(stage):
    with customer(stage, height=844) as (phone, server):
        pictures = phone.home / "Pictures"
        pictures.mkdir()
        subprocess.run(["convert", "-size", "60x60", "xc:red", str(pictures / "0.png")], check=True)
        for i in range(1, 18):
            (pictures / f"{i}.png").write_bytes((pictures / "0.png").read_bytes())

        phone.type(EMAIL, "ana")
        for count in (1, 2):
            phone.click(LINK)
            phone.wait_focus(ALERT_FIELD)
            phone.type(ALERT_FIELD, "otra@x")
            phone.click_twice("Enviar")
            phone.wait_gone(ALERT)
            phone.wait_for(lambda: len(server.posts()) >= count, "the recovery")
            phone.wait_focus(EMAIL)
            phone.write("x")
            phone.wait_text(EMAIL, "ana" + count * "x")
            assert len(server.posts()) == count, "a click twice sends twice"
        enter_dashboard(phone)
        phone.press("Perfil")
        phone.wait_gone("Bienvenido")
        phone.type("Nombre Completo", "Ana")
        before = len(server.posts())
        phone.wait_still()
        below = {name: phone.find(name).box() for name in ("Nombre Completo", "Cambiar foto", "Guardar Cambios")}
        for count, (name, box) in enumerate(below.items(), 1):
            phone.click("Cambiar foto")
            phone.find("Elegir foto", "dialog")
            phone.wait_for(lambda: phone.shows("17"), "the photos")
            phone.wait_still()
            # Near its beginning, which is another place in a text than where the caret is.
            subprocess.run(["xdotool", "mousemove", str(box.x + 20), str(box.y + box.height // 2), "click", "--repeat", "2",
                            "--delay", "1", "1"], check=True)
            phone.wait_gone("Elegir foto")
            phone.wait_focus("Nombre Completo")
            phone.write("x")
            phone.wait_text("Nombre Completo", "Ana" + count * "x")
            assert not phone.shows("Elegir foto"), "the second click has opened the photos again"
            assert len(server.posts()) == before, f"the second click has gone through to «{name}»"


def check_typing_goes_on(phone, field, click, happened):
    """After a click elsewhere the focus and the caret are where they were."""
    phone.type(field, "abc")
    phone.keys("Home", "Right")
    phone.wait_for(lambda: phone.find(field).caret() == 1, "the caret")
    click()
    phone.wait_for(happened, "what the click does")
    phone.wait_focus(field)
    phone.write("x")
    hidden = "password text" in phone.find(field).role
    phone.wait_text(field, "••••" if hidden else "axbc")


@story
def click_leaves_the_focus(stage):
    with customer(stage) as (phone, server):
        def check_form(field, button):
            before = len(server.posts())
            check_typing_goes_on(phone, field, lambda: phone.click(button), lambda: len(server.posts()) > before)

        def go(tile):
            phone.press(tile)
            phone.wait_gone("Bienvenido")

        def go_back():
            phone.keys("Escape")
            phone.find("Bienvenido")
            phone.wait_gone("Atrás")

        phone.type(PASSWORD, "b")
        check_form(EMAIL, "Iniciar Sesión")
        phone.press("¿No tienes cuenta? Regístrate aquí")
        phone.find("Crear Cuenta")
        phone.wait_gone("Iniciar Sesión")
        check_typing_goes_on(phone, "Ciudad", lambda: phone.click("Registrarme"),
                             lambda: phone.shows("Por favor completa todos los campos"))
        phone.keys("Escape")
        phone.find("Iniciar Sesión")
        phone.wait_gone("Crear Cuenta")
        enter_dashboard(phone)
        number = "Número de tracking..."
        check_typing_goes_on(phone, number, lambda: phone.click("Buscar"), lambda: len(phone.opened()) == 1)
        go("Cotizar")
        check_form("Descripción del contenido", "Enviar Cotización")
        for mode in ("Marítimo", "Aéreo"):
            check_typing_goes_on(phone, "Peso (Lbs)", lambda: phone.click(mode),
                                 lambda: "checked" in phone.find(mode).states)
        go_back()
        go("Autos")
        check_form("Año", "Solicitar Importación")
        go_back()
        go("Perfil")
        check_form("Nombre Completo", "Guardar Cambios")


@story
def focus_comes_back(stage):
    with customer(stage) as (phone, _):
        def open_by_key(opener, shown, key):
            focus(phone, opener)
            phone.keys(key)
            phone.find(shown, "dialog")

        # What a key has opened gives the focus back to what the key was on.
        phone.type(EMAIL, "ana")
        phone.keys("Tab", "Tab")
        phone.wait_focus(LINK)
        phone.keys("Return")
        for close in (lambda: phone.keys("Escape"), lambda: phone.click("Cancelar"), lambda: phone.keys("Return")):
            phone.wait_focus(ALERT_FIELD)
            close()
            phone.wait_gone(ALERT)
            phone.wait_focus(LINK)
            phone.keys("space")
        phone.keys("Escape")
        phone.wait_gone(ALERT)
        # What the pointer has opened, to where the typing was.
        phone.type(EMAIL, "ana")
        for count, close in enumerate((lambda: phone.keys("Escape"), lambda: phone.click("Cancelar")), 1):
            phone.click(LINK)
            phone.wait_focus(ALERT_FIELD)
            close()
            phone.wait_gone(ALERT)
            phone.wait_focus(EMAIL)
            phone.write("x")
            phone.wait_text(EMAIL, "ana" + count * "x")
        enter_dashboard(phone)
        phone.type("Número de tracking...", "T2")
        phone.click("Cotizar")
        phone.wait_gone("Bienvenido")
        phone.keys("Escape")
        phone.find("Bienvenido")
        phone.wait_gone("Atrás")
        phone.wait_focus("Número de tracking...")
        phone.press("Perfil")
        phone.wait_gone("Bienvenido")
        for close in (lambda: phone.keys("Escape"), lambda: phone.click("Cancelar")):
            open_by_key("Cambiar foto", "Elegir foto", "Return")
            close()
            phone.wait_gone("Elegir foto")
            phone.wait_focus("Cambiar foto")
        phone.type("Nombre Completo", "Ana")
        phone.click("Cambiar foto")
        phone.find("Elegir foto", "dialog")
        phone.keys("Escape")
        phone.wait_gone("Elegir foto")
        phone.wait_focus("Nombre Completo")


@story
def password_from_assistive_technology(stage):
    with customer(stage) as (phone, server):
        # Of the two kinds of field only this one offers it: Qt's own fields do not
        # (https://doc.qt.io/qt-6/qaccessibleeditabletextinterface.html).
        phone.type(EMAIL, "ana@y")
        password = phone.find(PASSWORD)
        password.set_text("Clave")
        phone.wait_for(lambda: len(phone.find(PASSWORD).text()) == 5, "the password")
        password.insert_text(5, "#77")
        password.delete_text(6, 7)
        phone.wait_for(lambda: len(phone.find(PASSWORD).text()) == 7, "the password")
        phone.press("Iniciar Sesión")
        phone.wait_for(server.posts, "the request")
        body = json.loads(server.posts()[0].body)
        assert body == {"email": "ana@y", "password": "Clave#7"}, body


@story
def nothing_is_cut(stage):
    """Qt's own fields hold 32,767 characters, and lose the end of what is longer."""
    with customer(stage) as (phone, server):
        phone.type(EMAIL, "ana@y")
        phone.find(PASSWORD).set_text("x" * 40000)
        focus(phone, PASSWORD)
        phone.keys("End")
        phone.write("y")
        phone.press("Iniciar Sesión")
        phone.wait_for(server.posts, "the request")
        password = json.loads(server.posts()[0].body)["password"]
        assert len(password) == 40001 and password.endswith("xy"), len(password)
