"""Customers whose keyboard composes what it writes: dead keys, and an input method that forgets what it has not finished
as soon as the app looks away. What is on screen counts."""

import contextlib
import json
import os
import sqlite3
import subprocess
import threading

from customer import EMAIL, NAME, PASSWORD, Customer
from scripted import company
from stage import story

# Nothing of it is unfinished when it has been typed.
CUSTOMER = "1@"
# Ways back from a screen, by what is typed before: small letters, which the keyboards of all devices have.
KEYS_BACK = {"escape": lambda phone: phone.keys("Escape"), "izquierda": lambda phone: phone.keys("alt+Left")}


def welcome(request):
    return company(request, CUSTOMER)


def fill_in(phone, email, password, unfinished=""):
    """What is unfinished is at the end of the address."""
    phone.focus(PASSWORD)
    phone.write(password)
    phone.wait_for(lambda: len(phone.find(PASSWORD).text()) == len(password), "the password")
    phone.focus(EMAIL)
    phone.write(email)
    phone.wait_text(EMAIL, email)
    phone.compose(unfinished)


def stored_values(phone):
    with contextlib.closing(sqlite3.connect(phone.home / "data" / "marovenda" / "session.sqlite")) as store:
        return dict(store.execute("SELECT key, value FROM session"))


def sent(phone, server, act, *arguments):
    return json.loads(phone.one_more(server.posts, act, *arguments).body)


def check_address_is_sent(stage, press, **options):
    """However it is pressed, a form's button sends what is unfinished."""
    with stage.scripted(prepare=Customer.start_composer, **options) as (phone, server):
        fill_in(phone, "ana@", "#1", "luc")
        body = sent(phone, server, press, phone, "Iniciar Sesión")
        assert body == {"email": "ana@luc", "password": "#1"}, body
        # It is not there twice, and typing goes on after it.
        phone.find("Otra vez")
        phone.wait_focus(EMAIL)
        phone.compose("ia")
        phone.write(".")
        # On a busy machine, the input method may finish its word later than the keys that follow arrive.
        phone.wait_text(EMAIL, "ana@lucia.")
        phone.keys("Tab", "Tab", "Tab")
        phone.wait_focus("Iniciar Sesión")
        body = sent(phone, server, phone.keys, "Return")
        assert body == {"email": "ana@lucia.", "password": "#1"}, body


def check_name_is_kept(stage, press, ways, then=lambda phone: None, **options):
    """Whichever of the ways leads back from the screen; `then` is called on the dashboard."""
    with stage.scripted(welcome, prepare=Customer.start_composer, **options) as (phone, _):
        fill_in(phone, CUSTOMER, "#1")
        press(phone, "Iniciar Sesión")
        phone.find("Hola, Ana")
        for way, leave in ways.items():
            phone.enter("Perfil")
            phone.focus(NAME)
            phone.keys("ctrl+a", "Delete")
            phone.wait_text(NAME, "")
            phone.compose(way)
            leave(phone)
            phone.find("Bienvenido")
            phone.wait_gone("Atrás")
            phone.find("Hola, " + way)
        then(phone)


@story
def unfinished_address_is_sent(stage):
    check_address_is_sent(stage, Customer.click)


@story
def unfinished_name_is_kept(stage):
    check_name_is_kept(stage, Customer.click, {"atras": lambda phone: phone.click("Atrás"), **KEYS_BACK,
                                               "borde": Customer.swipe_back})


@story
def unfinished_address_is_stored(stage):
    answered = threading.Event()

    def answer(request):
        answered.wait()
        return welcome(request)

    with stage.scripted(answer, prepare=Customer.start_composer) as (phone, server):
        fill_in(phone, CUSTOMER, "#1")
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
    def compose(_):
        subprocess.run(["setxkbmap", "es"], check=True)
        os.environ.update(QT_IM_MODULE="compose", XCOMPOSEFILE="/usr/share/X11/locale/en_US.UTF-8/Compose")

    with stage.scripted(prepare=compose) as (phone, server):
        phone.type(PASSWORD, "b")
        phone.focus(EMAIL)
        phone.keys("l", "u", "c")
        phone.wait_text(EMAIL, "luc")
        phone.keys("dead_acute", "i")
        phone.wait_text(EMAIL, "lucí")
        phone.keys("a")
        phone.wait_text(EMAIL, "lucía")
        phone.keys("dead_acute")
        body = sent(phone, server, phone.click, "Iniciar Sesión")
        assert body["email"] in ("lucía", "lucía´"), body
        phone.find("Otra vez")
        phone.wait_focus(EMAIL)
        # The pending accent, if it still is one, ends with a blank.
        phone.keys("space", "ctrl+a", "a", "n", "a")
        phone.wait_text(EMAIL, "ana")
