"""The whole app with the keyboard alone."""

import subprocess

from phone import Phone
from stage import BRUNO, open_at_login, story


class Keyboard:
    """A customer who has nothing but keys."""

    def __init__(self, phone):
        self.phone = phone

    def focused(self):
        return [e.name for e in self.phone.elements() if "focused" in e.states]

    def step(self, key="Tab"):
        """One Tab on, until the focus has moved."""
        before = self.focused()
        self.phone.keys(key)
        self.phone.wait_for(lambda: self.focused() not in ([], before), f"focus to leave {before}")
        return self.focused()[-1]

    def walk_to(self, name):
        seen = []
        while self.focused()[-1:] != [name]:
            seen.append(self.step())
            assert seen.count(seen[-1]) < 3, f"{name} cannot be reached by Tab: {seen}"

    def type(self, name, text):
        self.walk_to(name)
        self.phone.keys("ctrl+a")
        subprocess.run(["xdotool", "type", "--delay", "4", text], check=True)

    def press(self, name, key="Return"):
        self.walk_to(name)
        self.phone.keys(key)

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
        reading = [e.name for e in self.phone.elements()
                   if "focusable" in e.states and e.role not in ("label", "heading")
                   and (e.role != "radio button" or "checked" in e.states)]
        begin = stops.index(start)
        assert stops[begin:] + stops[:begin] == reading, f"Tab goes {stops}, the screen reads {reading}"


@story
def keyboard_in_order(stage):
    with stage.service(), Phone(height=1300) as phone:
        open_at_login(phone, stage.app)
        keyboard = Keyboard(phone)
        keyboard.check_order("Correo Electrónico")
        keyboard.press("¿No tienes cuenta? Regístrate aquí")
        phone.find("Crear Cuenta")
        phone.wait_gone("¿No tienes cuenta? Regístrate aquí")
        keyboard.check_order("Atrás")
        phone.keys("alt+Left")
        phone.find("Iniciar Sesión")
        keyboard.type("Correo Electrónico", BRUNO[0])
        keyboard.type("Contraseña", BRUNO[1])
        keyboard.press("Iniciar Sesión", "space")
        phone.find("2 Paquetes")
        keyboard.check_order("Cerrar sesión")
        for tile in ("Cotizar", "Autos", "Perfil"):
            keyboard.press(tile)
            phone.wait_gone("Bienvenido")
            keyboard.check_order("Atrás")
            phone.keys("Escape")
            phone.find("Bienvenido")
            phone.wait_gone("Atrás")


@story
def keyboard_alone(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        keyboard = Keyboard(phone)

        keyboard.press("¿Olvidaste tu contraseña?", "space")
        phone.find("Recuperar Contraseña")
        phone.keys("Escape")
        phone.wait_gone("Recuperar Contraseña")

        keyboard.press("¿No tienes cuenta? Regístrate aquí")
        phone.find("Crear Cuenta")
        for field, text in (("Nombre Completo", "Eva Moreno"), ("Correo Electrónico", "eva@marovenda.example"),
                            ("Dirección de Domicilio", "Calle 50"), ("Ciudad", "Colon"), ("Contraseña", "Clave.1")):
            keyboard.type(field, text)
        keyboard.press("Registrarme")
        phone.find("Hola, Eva Moreno")
        keyboard.press("Cerrar sesión", "space")

        phone.find("Iniciar Sesión")
        keyboard.type("Correo Electrónico", BRUNO[0])
        keyboard.type("Contraseña", BRUNO[1])
        keyboard.press("Iniciar Sesión")
        phone.find("2 Paquetes")

        keyboard.press("Cotizar")
        keyboard.walk_to("Aéreo")
        phone.keys("Right")
        phone.wait_for(lambda: "checked" in phone.find("Marítimo").states, "the choice")
        keyboard.type("Peso (Lbs)", "12.5")
        keyboard.type("Valor Declarado (USD)", "40")
        keyboard.type("Descripción del contenido", "Silla de playa")
        keyboard.press("Enviar Cotización", "space")
        phone.find("Enviado con éxito")
        phone.keys("alt+Left")
        phone.find("2 Cotizaciones")

        keyboard.press("Autos")
        for field, text in (("Marca (Ej: Toyota)", "Toyota"), ("Modelo (Ej: Corolla)", "Corolla"), ("Año", "2019"),
                            ("Ubicación o Subasta", "Copart Miami")):
            keyboard.type(field, text)
        keyboard.press("Solicitar Importación")
        phone.find("Solicitud enviada")
        phone.keys("Escape")
        phone.find("Bienvenido")

        keyboard.press("Perfil")
        keyboard.press("Cambiar foto")
        phone.find("Elegir foto", "dialog")
        phone.keys("Escape")
        phone.wait_gone("Elegir foto")
        keyboard.type("Nombre Completo", "Bruno D")
        keyboard.press("Guardar Cambios")
        phone.find("Perfil actualizado con éxito")
        keyboard.press("Atrás")
        phone.find("Hola, Bruno D")

        for entrance, title in (("2 Paquetes", "Mis Paquetes"), ("Ver todas", "Mis Cotizaciones")):
            keyboard.press(entrance)
            phone.wait_gone("Bienvenido")
            keyboard.walk_to(title)
            phone.keys("Down")
            phone.wait_for(lambda: any(e.role == "list item" for e in phone.elements()), "rows")
            phone.keys("Escape")
            phone.find("Bienvenido")

        keyboard.press("Dev")
        phone.find("Desarrollo de Software & IT Solutions")
        keyboard.press("🌐 Sitio Web: corvandel.example")
        phone.wait_for(phone.opened, "the web site")
        keyboard.press("Volver al Panel")
        phone.find("Bienvenido")
        keyboard.type("Número de tracking...", "MRV-1")
        keyboard.press("Buscar")
        phone.wait_for(lambda: len(phone.opened()) == 2, "the tracking page")
        keyboard.press("Cerrar sesión")
        phone.find("Iniciar Sesión")
        assert phone.standard_error() == "", phone.standard_error()
