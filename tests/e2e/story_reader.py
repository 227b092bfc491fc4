"""The whole app as a screen reader's user has it: every element of every screen is read out, and every press does what a
tap does."""

import contextlib
import subprocess

from phone import Phone
from scripted import ScriptedServer, reply
from stage import open_at_login, story

SECRET = "Secreto#77"
LISTING = ('{"paquetes":[{"tracking":"T1","descripcion":"Libros","estado":"recibido"}],'
           '"cotizaciones":[{"origen":"Miami","descripcion":"Silla","estado":"pendiente"}]}')


class Walk:
    """One walk: what was read, and the buttons that were tried on the screen at hand."""

    def __init__(self, phone, server):
        self.phone, self.server = phone, server

    def tap(self, name):
        # What has the focus has been brought into view.
        self.phone.find(name).focus()
        # And where something slides or scrolls, it is elsewhere a moment later.
        self.phone.wait_still()
        box = self.phone.find(name).box()
        subprocess.run(["xdotool", "mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2), "click", "1"],
                       check=True)

    def ways(self):
        return (self.phone.press, self.tap)

    def read(self, screen, buttons):
        """Prints every element with its role and name. All have one, none tells the password, and the screen has just
        these buttons, once it has come in."""
        self.phone.wait_still()
        elements = self.phone.elements()
        print(f"{screen}\n    " + "\n    ".join(f"{e.role}: {e.name!r}" for e in elements))
        for element in elements:
            assert element.name, f"a {element.role} of {screen} has no name"
            told = element.name + element.text() + (element.accessible.get_description() or "")
            assert SECRET not in told, f"{element} tells the password"
        found = [e.name for e in elements if e.role in ("push button", "link", "radio button")]
        assert sorted(found) == sorted(buttons), f"{screen} has the buttons {found}, not {buttons}"

    def sends(self, name, path):
        """Pressing and tapping each send one request."""
        for way in self.ways():
            before = len(self.server.posts())
            way(name)
            self.phone.wait_for(lambda: len(self.server.posts()) == before + 1, f"the request of {name}")
            assert self.server.posts()[-1].line.startswith(f"POST /{path}")

    def leads(self, name, to, back):
        """Pressing and tapping each lead there; `back` leads back, by a press and by a tap too."""
        here = name
        for way, way_back in zip(self.ways(), self.ways()):
            way(here)
            self.phone.wait_gone(here)
            self.phone.find(to)
            way_back(back)
            self.phone.find(here)
            self.phone.wait_gone(back)

    def opens(self, name, address):
        """Pressing and tapping each hand an address to the system."""
        for way in self.ways():
            before = len(self.phone.opened())
            way(name)
            self.phone.wait_for(lambda: len(self.phone.opened()) == before + 1, f"what {name} opens")
            assert self.phone.opened()[-1] == address, self.phone.opened()

    def enter(self, name):
        self.phone.press(name)
        self.phone.wait_gone(name)

    def leave(self, back="Atrás"):
        self.phone.press(back)
        self.phone.find("Bienvenido")
        self.phone.wait_gone(back)


@contextlib.contextmanager
def walk(on):
    def script(request):
        if request.line.startswith("GET"):
            return reply(LISTING)
        signing_in = request.line.startswith("POST /api_login.php") and b'"ana@x"' in request.body
        return reply('{"status":"success","id":"42","nombre":"Ana"}' if signing_in else '{"nombreCompleto":"Ana MRV-42"}')

    server = ScriptedServer(18473, script)
    with contextlib.closing(server), Phone(height=1300) as phone:
        open_at_login(phone, on.scripted_app)
        yield Walk(phone, server)
        assert phone.standard_error() == "", phone.standard_error()


def enter_dashboard(walk):
    walk.phone.type("Correo Electrónico", "ana@x")
    walk.phone.type("Contraseña", SECRET)
    walk.phone.press("Iniciar Sesión")
    walk.phone.find("1 Paquetes")


@story
def reader_at_the_door(stage):
    with walk(stage) as customer:
        phone = customer.phone
        phone.type("Correo Electrónico", "otra@x")
        phone.type("Contraseña", SECRET)
        forgot, register = "¿Olvidaste tu contraseña?", "¿No tienes cuenta? Regístrate aquí"
        customer.read("sign-in", [forgot, "Iniciar Sesión", register])
        customer.sends("Iniciar Sesión", "api_login.php")
        customer.leads(forgot, "Recuperar Contraseña", "Cancelar")
        customer.enter(forgot)
        customer.read("recovery", ["Cancelar", "Enviar"])
        for way in customer.ways():
            if not phone.shows("Enviar"):
                customer.enter(forgot)
            phone.type("Ingresa tu correo registrado", "otra@x")
            before = len(customer.server.posts())
            way("Enviar")
            phone.wait_gone("Enviar")
            phone.wait_for(lambda: len(customer.server.posts()) == before + 1, "the recovery")
        customer.leads(register, "Crear Cuenta", "Atrás")
        customer.enter(register)
        for field in ("Nombre Completo", "Correo Electrónico", "Dirección de Domicilio", "Ciudad"):
            phone.type(field, "x")
        phone.type("Contraseña", SECRET)
        customer.read("registration", ["Atrás", "Registrarme"])
        customer.sends("Registrarme", "api_registro.php")


@story
def reader_at_home(stage):
    with walk(stage) as customer:
        phone = customer.phone
        enter_dashboard(customer)
        row = "Tracking: T1, Libros, RECIBIDO"
        customer.read("dashboard", ["Cerrar sesión", "1 Paquetes", "1 Cotizaciones", "Casillero", "Cotizar", "Autos",
                                    "Perfil", "Dev", "Ver todos", row, "Ver todas", "Buscar"])
        customer.opens(row, "https://track.example/T1")
        phone.type("Número de tracking...", "T2")
        customer.opens("Buscar", "https://track.example/T2")
        for name, inside, back in (("Casillero", "Mi Casillero", "Volver al Panel"), ("Dev", "Corvandel", "Volver al Panel"),
                                   ("Cotizar", "Cotizar Importación", "Atrás"), ("Autos", "Importar Vehículo", "Atrás"),
                                   ("Perfil", "Mi Perfil", "Atrás"), ("1 Paquetes", "Mis Paquetes", "Atrás"),
                                   ("1 Cotizaciones", "Mis Cotizaciones", "Atrás"), ("Ver todos", "Mis Paquetes", "Atrás"),
                                   ("Ver todas", "Mis Cotizaciones", "Atrás")):
            customer.leads(name, inside, back)
        for way in customer.ways():
            way("Cerrar sesión")
            phone.find("Iniciar Sesión")
            phone.wait_gone("Cerrar sesión")
            enter_dashboard(customer)


@story
def reader_in_the_services(stage):
    with walk(stage) as customer:
        phone = customer.phone
        enter_dashboard(customer)
        customer.enter("Casillero")
        phone.find("Ana MRV-42")
        customer.read("mailbox", ["Volver al Panel"])
        customer.leave("Volver al Panel")
        customer.enter("Dev")
        site, mail = "🌐 Sitio Web: corvandel.example", "✉️ Correo: hola@corvandel.example"
        customer.read("credits", [site, mail, "Volver al Panel"])
        customer.opens(site, "https://corvandel.example/")
        customer.opens(mail, "mailto:hola@corvandel.example")
        customer.leave("Volver al Panel")
        customer.enter("Cotizar")
        customer.read("quotation", ["Atrás", "Aéreo", "Marítimo", "Enviar Cotización"])
        for way in customer.ways():
            for mode in ("Marítimo", "Aéreo"):
                way(mode)
                phone.wait_for(lambda: "checked" in phone.find(mode).states, f"the choice of {mode}")
        customer.sends("Enviar Cotización", "api_cotizar.php")
        customer.leave()
        customer.enter("Autos")
        customer.read("vehicle", ["Atrás", "Solicitar Importación"])
        customer.sends("Solicitar Importación", "api_auto.php")
        customer.leave()
        customer.enter("1 Paquetes")
        phone.find("Tracking: T1, Libros, RECIBIDO", "list item")
        customer.read("packages", ["Atrás"])
        customer.leave()
        customer.enter("1 Cotizaciones")
        phone.find("Silla, PENDIENTE, Origen: Miami", "list item")
        customer.read("quotations", ["Atrás"])
        customer.leave()
        customer.enter("Perfil")
        customer.read("profile", ["Atrás", "Cambiar foto", "Guardar Cambios"])
        customer.sends("Guardar Cambios", "api_perfil.php")
        customer.leads("Cambiar foto", "Elegir foto", "Cancelar")
        customer.enter("Cambiar foto")
        customer.read("photos", ["Cancelar"])
