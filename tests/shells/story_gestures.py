"""What fingers do besides tapping."""

from customer import DASHBOARD, EMAIL, NUMBER, REGISTER
from plasma import PlasmaCustomer
from stage import ANA, story

CUSTOMER = ("ana@x", "b")


@story
def swiping_back(stage):
    with stage.scripted(kind=PlasmaCustomer) as (phone, server):
        phone.press(REGISTER)
        phone.find("Crear Cuenta")
        # A finger that goes back on its way, or begins elsewhere, leaves the screen where it is.
        phone.wait_still()
        phone.gesture("down 0 3 300", *(command for x in (40, 80, 120, 80, 40, 20)
                                        for command in ("wait 30", f"move 0 {x} 300")), "wait 200", "up 0")
        phone.swipe((100, 300), (340, 300))
        phone.wait_still()
        assert phone.shows("Crear Cuenta") and not phone.shows(REGISTER), phone.describe()
        phone.swipe_back()
        phone.find(REGISTER)
        phone.wait_gone("Crear Cuenta")
        phone.sign_in(CUSTOMER, "1 Paquetes")
        for entrance in ("1 Paquetes", "Casillero", "Cotizar"):
            phone.enter(entrance)
            phone.wait_still()
            phone.swipe_back()
            phone.find(DASHBOARD)
            phone.wait_gone(phone.back)
        # There is nothing behind the dashboard.
        phone.swipe_back()
        phone.wait_still()
        assert phone.shows(DASHBOARD), phone.describe()


@story
def flicked_list(stage):
    with stage.customer(kind=PlasmaCustomer) as phone:
        phone.sign_in(ANA, "230 Paquetes")
        phone.enter("230 Paquetes")
        phone.wait_still()

        def rows():
            return [int(e.name.split("MRV-")[1][:6]) for e in phone.elements() if e.role == "list item"]

        phone.swipe((180, 650), (180, 80), took=60)
        phone.wait_still(limit=10)
        # A finger alone moves it by 570, seven rows.
        assert max(rows()) < 100230 - 10, rows()
        for _ in range(4):
            phone.swipe((180, 650), (180, 80), took=60)
        phone.wait_still(limit=10)
        before = max(rows())
        assert before < 100230 - 50, rows()
        # A finger stops what is flicked.
        phone.swipe((180, 80), (180, 650), took=60)
        phone.gesture("down 0 180 300", "wait 100", "up 0")
        phone.wait_still()
        stopped = rows()
        assert before < max(stopped) < before + 50, (before, stopped)
        phone.wait_still(still=1)
        assert rows() == stopped, (stopped, rows())
        assert not phone.shows(DASHBOARD), "the finger that stops a list presses what is under it"


@story
def long_press(stage):
    with stage.scripted(kind=PlasmaCustomer) as (phone, server):
        def hold(name):
            phone.reach(name)
            phone.tap_at(*phone.middle(name), held=1200)
            phone.wait_still()

        before = len(server.posts())
        hold("Iniciar Sesión")
        assert len(server.posts()) <= before + 1, len(server.posts())
        phone.type(EMAIL, "ana")
        hold(EMAIL)
        phone.wait_text(EMAIL, "ana")
        phone.wait_focus(EMAIL)
        phone.sign_in(CUSTOMER, "1 Paquetes")
        phone.enter("1 Paquetes")
        hold("Tracking: T1, Libros, RECIBIDO")
        assert phone.shows("Mis Paquetes"), phone.describe()
        phone.leave()
        before = len(server.posts())
        phone.enter("Perfil")
        hold("Guardar Cambios")
        assert len(server.posts()) <= before + 1, len(server.posts())
        phone.leave()
        assert phone.opened() == [], phone.opened()


@story
def second_finger(stage):
    with stage.scripted(kind=PlasmaCustomer) as (phone, server):
        phone.sign_in(CUSTOMER, "1 Paquetes")
        phone.reach("Casillero")
        phone.wait_still()
        # Two tiles at once: one screen at most comes in, and going back once leads to the dashboard.
        (x0, y0), (x1, y1) = phone.middle("Cotizar"), phone.middle("Autos")
        phone.gesture(f"down 0 {x0} {y0}", f"down 1 {x1} {y1}", "wait 60", "up 0", "up 1")
        phone.wait_gone(DASHBOARD)
        phone.wait_still()
        phone.swipe_back()
        phone.find(DASHBOARD)
        phone.wait_still()
        assert not phone.shows("Atrás"), phone.describe()
        # Two fingers apart do not zoom, and what is under them is not pressed.
        phone.gesture("down 0 150 400", "down 1 210 440",
                      *(command for i in range(1, 12) for command in
                        ("wait 12", f"move 0 {150 - 8 * i} {400 - 20 * i}", f"move 1 {210 + 8 * i} {440 + 20 * i}")),
                      "up 0", "up 1")
        phone.wait_still()
        assert not phone.shows("Atrás") and phone.opened() == [], phone.describe()
        # A second finger on a button while the first one takes the screen away sends nothing twice.
        phone.enter("Perfil")
        phone.wait_still()
        before = len(server.posts())
        x, y = phone.middle("Guardar Cambios")
        phone.gesture("down 0 3 300", "wait 30", "move 0 40 300", "wait 30", "move 0 120 300", f"down 1 {x} {y}", "wait 60",
                      "up 1", "wait 30", "move 0 220 300", "wait 30", "move 0 300 300", "up 0")
        phone.find(DASHBOARD)
        phone.wait_gone("Atrás")
        assert len(server.posts()) <= before + 1, len(server.posts())
        phone.reach(NUMBER)
        phone.open_keyboard(NUMBER)
