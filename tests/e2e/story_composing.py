"""Customers whose keyboard composes what it writes: dead keys, and an input method that forgets what it has not finished
as soon as the app looks away. What is on screen counts."""

import contextlib
import json
import os
import sqlite3
import subprocess
import threading

from phone import Phone
from scripted import ScriptedServer, reply
from stage import open_at_login, story

EMAIL, PASSWORD, NAME = "Correo Electrónico", "Contraseña", "Nombre Completo"
WELCOME = reply('{"status":"success","id":"42","nombre":"Ana"}')


@contextlib.contextmanager
def customer(stage, answer):
    """A customer at the sign-in, whose input method is running; `answer` is what each POST gets."""
    server = ScriptedServer(18473, lambda request: answer(request) if request.line.startswith("POST")
                            else reply('{"paquetes":[]}'))
    with contextlib.closing(server), Phone() as phone:
        phone.start_composer()
        open_at_login(phone, stage.scripted_app)
        phone.activate()
        yield phone, server
        assert phone.standard_error() == "", phone.standard_error()


def go_to(phone, field):
    phone.find(field).focus()
    phone.wait_focus(field)


def fill_in(phone, email, password, unfinished=""):
    """What is unfinished is at the end of the address."""
    go_to(phone, PASSWORD)
    phone.write(password)
    phone.wait_for(lambda: len(phone.find(PASSWORD).text()) == len(password), "the password")
    go_to(phone, EMAIL)
    phone.write(email)
    phone.wait_text(EMAIL, email)
    phone.compose(unfinished)


def stored_values(phone):
    with contextlib.closing(sqlite3.connect(phone.home / "data" / "marovenda" / "session.sqlite")) as store:
        return dict(store.execute("SELECT key, value FROM session"))


def sent(server, count):
    return json.loads(server.posts()[count - 1].body)


@story
def unfinished_address_is_sent(stage):
    refusal = reply('{"status":"error","message":"Otra vez"}')
    with customer(stage, lambda _: refusal) as (phone, server):
        fill_in(phone, "ana@", "#1", "Luc")
        phone.click("Iniciar Sesión")
        phone.wait_for(lambda: len(server.posts()) == 1, "the request")
        assert sent(server, 1) == {"email": "ana@Luc", "password": "#1"}, sent(server, 1)
        # It is not there twice, and typing goes on after it.
        phone.find("Otra vez")
        phone.wait_focus(EMAIL)
        phone.compose("ia")
        phone.write(".")
        phone.keys("Tab", "Tab", "Tab")
        phone.wait_focus("Iniciar Sesión")
        phone.keys("Return")
        phone.wait_for(lambda: len(server.posts()) == 2, "the second request")
        assert sent(server, 2) == {"email": "ana@Lucia.", "password": "#1"}, sent(server, 2)


@story
def unfinished_name_is_kept(stage):
    with customer(stage, lambda _: WELCOME) as (phone, _):
        fill_in(phone, "1@", "#1")
        phone.click("Iniciar Sesión")
        phone.find("Hola, Ana")
        for way, leave in (("Atras", lambda: phone.click("Atrás")), ("Escape", lambda: phone.keys("Escape")),
                           ("Izquierda", lambda: phone.keys("alt+Left")), ("Borde", phone.swipe_back)):
            phone.press("Perfil")
            phone.wait_gone("Bienvenido")
            go_to(phone, NAME)
            phone.keys("ctrl+a", "Delete")
            phone.wait_text(NAME, "")
            phone.compose(way)
            leave()
            phone.find("Bienvenido")
            phone.wait_gone("Atrás")
            phone.find("Hola, " + way)


@story
def unfinished_address_is_stored(stage):
    answered = threading.Event()

    def answer(_):
        answered.wait()
        return WELCOME

    with customer(stage, answer) as (phone, server):
        fill_in(phone, "1@", "#1")
        phone.click("Iniciar Sesión")
        phone.wait_for(server.posts, "the request")
        phone.wait_focus(EMAIL)
        phone.compose("Luc")
        answered.set()
        phone.find("Hola, Ana")
        phone.close()
        stored = stored_values(phone)
        assert stored["user_email"] == b"1@Luc", stored


@story
def dead_key_in_the_middle(stage):
    server = ScriptedServer(18473, lambda request: reply('{"status":"error","message":"Otra vez"}'))
    with contextlib.closing(server), Phone() as phone:
        subprocess.run(["setxkbmap", "es"], check=True)
        os.environ.update(QT_IM_MODULE="compose", XCOMPOSEFILE="/usr/share/X11/locale/en_US.UTF-8/Compose")
        open_at_login(phone, stage.scripted_app)
        phone.activate()
        phone.type(PASSWORD, "b")
        go_to(phone, EMAIL)
        phone.keys("l", "u", "c", "dead_acute", "i", "a")
        phone.wait_text(EMAIL, "lucía")
        phone.keys("dead_acute")
        phone.click("Iniciar Sesión")
        phone.wait_for(server.posts, "the request")
        body = json.loads(server.posts()[0].body)
        assert body["email"] in ("lucía", "lucía´"), body
        phone.find("Otra vez")
        phone.wait_focus(EMAIL)
        # The pending accent, if it still is one, ends with a blank.
        phone.keys("space", "ctrl+a", "a", "n", "a")
        phone.wait_text(EMAIL, "ana")
        assert phone.standard_error() == "", phone.standard_error()
