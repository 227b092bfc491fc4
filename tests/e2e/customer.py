"""What a customer does with the app, in the words of its screens. All stories and the tour go about it in this way."""

from phone import Phone

EMAIL, PASSWORD, NAME = "Correo Electrónico", "Contraseña", "Nombre Completo"
FORGOT, REGISTER = "¿Olvidaste tu contraseña?", "¿No tienes cuenta? Regístrate aquí"
RECOVERY, RECOVERY_FIELD = "Recuperar Contraseña", "Ingresa tu correo registrado"
NUMBER = "Número de tracking..."
SPLASH, DASHBOARD = "Desarrollado por Corvandel", "Bienvenido"
BACKS = ("Atrás", "Volver al Panel")


class Customer(Phone):
    """With a screen reader's presses and a keyboard; what is derived from it has other ways to press and to type."""

    def open_at_login(self, app):
        self.open(app)
        self.find("Iniciar Sesión")
        self.wait_gone(SPLASH)

    def send(self, fields, button, message, role=None, look=lambda: None):
        """Types into fields, presses a button, and finds what the screen says then; `look` is called before the press."""
        for field, text in fields.items():
            self.type(field, text)
        look()
        self.press(button)
        return self.find(message, role)

    def sign_in(self, customer, then, role=None, look=lambda: None):
        return self.send({EMAIL: customer[0], PASSWORD: customer[1]}, "Iniciar Sesión", then, role, look)

    def enter(self, entrance, inside=None):
        """From the dashboard to another screen, once it has come in."""
        self.press(entrance)
        self.wait_gone(DASHBOARD)
        if inside:
            self.find(inside)

    def leave(self, *keys):
        """Back to the dashboard, by the control that the screen has for it or by keys."""
        back = self.wait_for(lambda: next((name for name in BACKS if self.shows(name)), None), "a way back")
        self.keys(*keys) if keys else self.press(back)
        self.find(DASHBOARD)
        self.wait_gone(back)

    def pick_photo(self, name, look=lambda: None):
        self.send({}, "Cambiar foto", "Elegir foto", "dialog")
        self.find(name, "push button")
        look()
        self.press(name, "push button")
        self.wait_gone("Elegir foto")


class KeyboardCustomer(Customer):
    """With nothing but keys, which reach what is out of view too."""

    def step(self, key="Tab"):
        """One Tab on, until the focus has moved."""
        before = self.focused()
        self.keys(key)
        self.wait_for(lambda: self.focused() not in ([], before), f"focus to leave {before}")
        return self.focused()[-1]

    def walk_to(self, name):
        seen = []
        while self.focused()[-1:] != [name]:
            seen.append(self.step())
            assert seen.count(seen[-1]) < 3, f"{name} cannot be reached by Tab: {seen}"

    def type(self, name, text):
        self.walk_to(name)
        self.replace(name, text)

    def press(self, name, role=None, key="Return"):
        self.walk_to(name)
        self.keys(key)

    def circle(self):
        """Every stop of the Tab key, once around; the same backwards, with Shift. Nothing traps, nothing is left out."""
        first = self.step()
        stops = [first]
        while (stop := self.step()) != first:
            assert stop not in stops, f"{stop} comes twice: {stops}"
            stops.append(stop)
        back = [first]
        while (stop := self.step("shift+Tab")) != first:
            back.append(stop)
        assert back[1:] == stops[:0:-1], f"{stops} forward, {back} backward"
        return stops

    def check_order(self, start):
        """The stops follow the reading order and miss nothing that can be operated, from wherever the circle begins."""
        stops = self.circle()
        reading = [e.name for e in self.elements()
                   if "focusable" in e.states and e.role not in ("label", "heading")
                   and (e.role != "radio button" or "checked" in e.states)]
        begin = stops.index(start)
        assert stops[begin:] + stops[:begin] == reading, f"Tab goes {stops}, the screen reads {reading}"
