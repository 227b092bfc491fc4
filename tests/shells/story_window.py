"""The window and its shell: it has the size that the shell gives, and it ends when the shell says so."""

from phoc import PhocCustomer
from stage import BRUNO, story
from sway import SwayCustomer


@story
def window_fits(stage):
    with stage.customer(kind=SwayCustomer) as phone:
        phone.wait_window(360, 720)
        # On its side, then half of it, as a keyboard leaves it.
        for size in ((720, 360), (720, 180), (360, 720)):
            phone.turn(*size)
            # No part of it is for a title bar of its own.
            assert phone.view()["window_rect"] == {"x": 0, "y": 0, "width": size[0], "height": size[1]}, phone.view()


@story
def no_title_bar(stage):
    """Where the shell leaves title bars to the apps."""
    with stage.customer(kind=PhocCustomer) as phone:
        phone.wait_window(360, 720)


@story
def closed_by_shell(stage):
    """The build that customers get: of the other one, the exit status tells of memory that Mesa and Wayland keep."""
    with stage.customer(stage.release_app, kind=SwayCustomer) as phone:
        phone.message("kill")
        assert (status := phone.end()) == 0, f"{status}: {phone.standard_error()}"
        phone.open_at_login(stage.release_app)
        phone.sign_in(BRUNO, "2 Paquetes")
        phone.enter("Cotizar")
        phone.message("kill")
        assert (status := phone.end()) == 0, f"{status}: {phone.standard_error()}"
