"""What is copied in one app is pasted in another."""

from customer import EMAIL, PASSWORD
from stage import story
from sway import SwayCustomer


@story
def copied_and_pasted(stage):
    with stage.customer(kind=SwayCustomer) as phone:
        phone.activate()
        phone.type(EMAIL, "ana@x")
        phone.keys("ctrl+a", "ctrl+c")
        phone.wait_for(lambda: phone.copied() == "ana@x", "the copied address")

        for text in ("lucía@ñandú.example", "🚢 dos"):
            phone.copy(text)
            phone.keys("ctrl+a", "ctrl+v")
            phone.wait_text(EMAIL, text)

        # A password is pasted, and never copied.
        phone.copy("Clave#1")
        phone.focus(PASSWORD)
        phone.keys("ctrl+v")
        phone.wait_text(PASSWORD, 7 * "•")
        phone.copy("otra")
        phone.keys("ctrl+a", "ctrl+c", "ctrl+x")
        phone.write("z")
        phone.wait_for(lambda: phone.find(PASSWORD).text() in ("•", 8 * "•"), "the letter")
        assert phone.copied() == "otra", phone.copied()
