"""The desktop's portal: its file chooser is the photo picker, and its settings are followed."""

import base64
import json
import os
import time

from customer import NAME
from desktop import DesktopCustomer
from phone import DEADLINE
from stage import story
from story_photo import make_photos

PHOTO, GREETING = "Cambiar foto", "Hola, Ana"
CUSTOMER = ("ana@x", "b")


@story
def photo_of_the_desktop(stage):
    with stage.scripted(kind=DesktopCustomer) as (phone, server):
        pictures = make_photos(phone)
        phone.sign_in(CUSTOMER, "1 Paquetes")
        phone.enter("Perfil")
        phone.focus(PHOTO)
        phone.wait_still()
        none = phone.photo_colour(PHOTO)

        # Nothing of the app's own grid is there; what is cancelled changes nothing.
        phone.open_chooser()
        assert not phone.shows("Elegir foto"), phone.describe()
        phone.press_in_chooser("Cancel")
        phone.wait_focus(PHOTO)
        phone.wait_still()
        assert phone.photo_colour(PHOTO) == none, phone.photo_colour(PHOTO)

        for name in ("verde", "rojo"):
            phone.open_chooser()
            phone.choose(pictures / f"{name}.png")
            phone.wait_focus(PHOTO)
        phone.wait_red_photo("the chosen photo", PHOTO)
        request = phone.one_more(server.posts, phone.press, "Guardar Cambios")
        sent = base64.b64encode((pictures / "rojo.png").read_bytes()).decode()
        assert sent in json.loads(request.body).values(), request.body


def pictures_of(phone, entrance):
    """How many different pictures of the screen there are from a press until nothing moves any more."""
    entrance = phone.find(entrance)
    before, count, since = phone.shot(), 1, time.monotonic()
    entrance.press()
    while time.monotonic() - since < (DEADLINE if count == 1 else 1):
        now = phone.shot()
        if now != before:
            before, count, since = now, count + 1, time.monotonic()
    return count


def moves(phone):
    """Whether anything is seen between two screens, on the way there or back. A busy machine may miss it."""
    counts = []
    for entrance, inside in (("Perfil", NAME), ("Atrás", GREETING)):
        counts.append(pictures_of(phone, entrance))
        phone.find(inside)
    print(f"{counts} pictures")
    return max(counts) > 2


@story
def less_motion_of_the_desktop(stage):
    """Followed while the app runs. Without motion another screen is there at once."""
    with stage.scripted(kind=DesktopCustomer) as (phone, _):
        phone.sign_in(CUSTOMER, "1 Paquetes")
        phone.wait_still()
        for _ in range(2):
            phone.set("enable-animations", "true")
            phone.wait_for(lambda: moves(phone), "motion")
            phone.set("enable-animations", "false")
            phone.wait_for(lambda: not moves(phone), "the end of motion")
            assert not any(moves(phone) for _ in range(3)), "something moves"


@story
def text_size_of_the_desktop(stage):
    """GNOME's, also while the app runs; Plasma's when it starts, since Qt 6.4 does not tell of a change."""
    def wait_height(height):
        phone.wait_for(lambda: phone.find(GREETING).box().height == height, f"text {height} high")

    with stage.scripted(kind=DesktopCustomer) as (phone, _):
        phone.sign_in(CUSTOMER, "1 Paquetes")
        for factor in (1.0, 1.5, 1.0):
            phone.set("text-scaling-factor", str(factor))
            wait_height(22 * factor)
        os.environ.update(XDG_CURRENT_DESKTOP="KDE", KDE_FULL_SESSION="true", KDE_SESSION_VERSION="5")
        for points in (10, 15, 20):
            phone.close()
            (phone.home / "config" / "kdeglobals").write_text(f"[General]\nfont=Inter,{points},-1,5,50,0,0,0,0,0\n")
            phone.open(stage.scripted_app)
            wait_height(22 * points // 10)
