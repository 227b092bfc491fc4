"""A hand that holds keys too long and clicks twice. The display's server repeats held keys, as no test without one does."""

from customer import EMAIL, FORGOT, NUMBER, PASSWORD, RECOVERY, RECOVERY_FIELD
from stage import story


def check_held(phone, server, name):
    """However long a key is down, one request is sent. The one after shows that no further one is on its way."""
    for key in ("Return", "KP_Enter", "space"):
        before = len(server.posts())
        phone.focus(name)
        phone.hold(key)
        phone.wait_for(lambda: len(server.posts()) > before, f"the request of «{name}» for {key}")
        phone.press(name)
        phone.wait_for(lambda: len(server.posts()) > before + 1, f"the second request of «{name}»")
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
        assert len(server.posts()) == before + 2 and phone.opened() == [], phone.describe()


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
