"""Takes pictures of a form in the shell of a phone, with and without the on-screen keyboard of one that has it.

usage: pictures.py kwin|sway WIDTH HEIGHT APP SERVICE FILE

MAROVENDA_FINGER is the program of finger.cpp. FILE is without its ending; the one with the keyboard is FILE-keyboard.
"""

import pathlib
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
sys.path[:0] = [str(HERE), str(HERE.parent / "e2e")]
from plasma import PlasmaCustomer
from stage import BRUNO, Stage, in_own_network
from sway import SwayCustomer

FIELD, TEXT = "Descripción del contenido", "Silla de playa"
KINDS = {"kwin": PlasmaCustomer, "sway": SwayCustomer}


def take(phone, file):
    """The file is small: the screens have few colours."""
    picture = phone.home / "picture.png"
    phone.picture(picture)
    subprocess.run(["convert", str(picture), "-strip", "+dither", "-colors", "128", f"png8:{file}.png"], check=True)


def main():
    shell, *numbers, app, service, file = sys.argv[1:]
    size = tuple(map(int, numbers))
    lock = in_own_network()
    # Sway has no fingers to swipe to what is out of view on its side, but it turns.
    begin = (360, 720) if shell == "sway" else size
    with Stage(app, app, service, app).customer(kind=KINDS[shell], width=begin[0], height=begin[1]) as phone:
        phone.activate()
        phone.sign_in(BRUNO, "2 Paquetes")
        phone.enter("Cotizar")
        if size != begin:
            phone.turn(*size)
        phone.wait_still()
        take(phone, file)
        if shell == "kwin":
            phone.open_keyboard(FIELD)
            # After a letter the caret is seen for a moment.
            phone.write(TEXT)
            phone.wait_text(FIELD, TEXT)
            phone.wait_still(still=0.15)
            take(phone, f"{file}-keyboard")
    del lock


if __name__ == "__main__":
    main()
