"""What a customer does with the app, in the words of its screens. All stories and the tour go about it in this way."""

import subprocess

from phone import Phone

EMAIL, PASSWORD, NAME = "Correo Electrónico", "Contraseña", "Nombre Completo"
FORGOT, REGISTER = "¿Olvidaste tu contraseña?", "¿No tienes cuenta? Regístrate aquí"
RECOVERY, RECOVERY_FIELD = "Recuperar Contraseña", "Ingresa tu correo registrado"
NUMBER = "Número de tracking..."
SPLASH, DASHBOARD = "Desarrollado por Corvandel", "Bienvenido"
# What the dashboard leads to, by the last word of each entrance: what it shows, and the control that leads back.
SCREENS = {"Casillero": ("Mi Casillero", "Volver al Panel"),
           "Dev": ("Desarrollo de Software & IT Solutions", "Volver al Panel"),
           "Cotizar": ("Cotizar Importación", "Atrás"), "Autos": ("Importar Vehículo", "Atrás"),
           "Perfil": ("Toca la imagen para cambiar foto", "Atrás"),
           "Paquetes": ("Mis Paquetes", "Atrás"), "todos": ("Mis Paquetes", "Atrás"),
           "Cotizaciones": ("Mis Cotizaciones", "Atrás"), "todas": ("Mis Cotizaciones", "Atrás")}
QUOTATION = {"Peso (Lbs)": "12.5", "Valor Declarado (USD)": "40", "Descripción del contenido": "Silla de playa"}
VEHICLE = {"Marca (Ej: Toyota)": "Toyota", "Modelo (Ej: Corolla)": "Corolla", "Año": "2019",
           "Ubicación o Subasta": "Copart Miami"}


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

    def enter(self, entrance, inside=None, way=None):
        """From the dashboard to another screen, once it has come in."""
        title, self.back = SCREENS[entrance.split()[-1]]
        (way or self.press)(entrance)
        # Some of the titles are on the dashboard too.
        self.wait_gone(DASHBOARD)
        self.find(title)
        self.find(inside or self.back)

    def leave(self, *keys):
        """Back to the dashboard, by the control that the screen has for it or by keys."""
        self.find(self.back)
        self.keys(*keys) if keys else self.press(self.back)
        self.find(DASHBOARD)
        self.wait_gone(self.back)

    def one_more(self, look, act, *arguments):
        """The one thing that an act adds to a list, such as a request that is sent or an address that is opened."""
        before = len(look())
        act(*arguments)
        self.wait_for(lambda: len(look()) > before, f"what {arguments} adds")
        assert len(look()) == before + 1, f"{arguments} adds {len(look()) - before} instead of one"
        return look()[-1]

    def wait_heard(self, text):
        """Until a screen reader was told: the text is an alert's name, and the alert has begun to show."""
        def told():
            alerts = [event for event in self.events if event[1] == "alert"]
            return (any(e[0] == "object:property-change:accessible-name" and e[2] == text for e in alerts)
                    and any(e[0].startswith("object:state-changed:showing") and e[3] == 1 for e in alerts))
        self.wait_for(told, f"the announcement of «{text}»")

    def pick_photo(self, name, look=lambda: None):
        self.send({}, "Cambiar foto", "Elegir foto", "dialog")
        self.find(name, "push button")
        look()
        self.press(name, "push button")
        self.wait_gone("Elegir foto")

    def photo_colour(self, name="Foto de perfil"):
        """The colour in the middle of the element that shows the photo."""
        box, picture = self.find(name).box(), self.home / "screen.png"
        self.picture(picture)
        area = f"1x1+{box.x + box.width // 2}+{box.y + box.height // 2}"
        pixel = subprocess.run(["convert", str(picture), "-crop", area, "-depth", "8", "rgb:-"], check=True,
                               stdout=subprocess.PIPE).stdout
        return tuple(pixel[:3])

    def wait_red_photo(self, what, name="Foto de perfil"):
        def is_red():
            red, green, blue = self.photo_colour(name)
            return red > 200 and green < 60 and blue < 60
        self.wait_for(is_red, what)


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
