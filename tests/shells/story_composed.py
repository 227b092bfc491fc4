"""Unfinished text of an input method is part of a field under Wayland too."""

from customer import NUMBER, Customer
from stage import story
from story_composing import KEYS_BACK, check_address_is_sent, check_name_is_kept
from sway import SwayCustomer


def look_up(phone):
    phone.focus(NUMBER)
    phone.compose("luc")
    assert phone.one_more(phone.opened, phone.press, "Buscar") == "https://track.example/luc", phone.opened()


@story
def unfinished_address(stage):
    check_address_is_sent(stage, Customer.press, kind=SwayCustomer)


@story
def unfinished_name_and_number(stage):
    # All of the dashboard is in view.
    check_name_is_kept(stage, Customer.press, {"atras": lambda phone: phone.press("Atrás"), **KEYS_BACK}, look_up,
                       kind=SwayCustomer, height=1600)
