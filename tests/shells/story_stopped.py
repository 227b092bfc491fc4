"""A shell stops apps that are out of sight, and lets them go on later."""

import signal
import threading
import time

from customer import EMAIL, PASSWORD
from scripted import company
from stage import story
from sway import SwayCustomer


@story
def stopped_while_it_waits(stage):
    asked, answered = threading.Event(), threading.Event()

    def answer(request):
        if request.method == "POST":
            asked.set()
            answered.wait()
        return company(request)

    with stage.scripted(answer, kind=SwayCustomer) as (phone, server):
        def stop(*, answer_meanwhile):
            phone.wait_for(asked.is_set, "the request")
            phone.app.send_signal(signal.SIGSTOP)
            if answer_meanwhile:
                answered.set()
            time.sleep(3)
            phone.app.send_signal(signal.SIGCONT)
            if not answer_meanwhile:
                time.sleep(1)
            answered.set()

        # Refused first; the answer comes once the app has gone on.
        phone.type(EMAIL, "eva@x")
        phone.type(PASSWORD, "b")
        phone.press("Iniciar Sesión")
        stop(answer_meanwhile=False)
        phone.find("Otra vez")
        asked.clear()
        answered.clear()
        # Then the answer comes while the app is stopped.
        phone.type(EMAIL, "ana@x")
        phone.press("Iniciar Sesión")
        stop(answer_meanwhile=True)
        phone.find("1 Paquetes")
        assert len(server.posts()) == 2, len(server.posts())
