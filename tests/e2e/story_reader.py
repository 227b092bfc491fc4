"""The whole app as a screen reader's user has it: every element of every screen is read out, and every press does what a
tap does."""

import contextlib

from customer import EMAIL, FORGOT, NAME, NUMBER, PASSWORD, RECOVERY, RECOVERY_FIELD, REGISTER, SCREENS, Customer
from stage import story

SECRET = "Secreto#77"


class Reader(Customer):
    def tap(self, name):
        # What has the focus has been brought into view.
        self.find(name).focus()
        self.click(name)

    def ways(self):
        return (self.press, self.tap)

    def read(self, screen, buttons):
        """Prints every element with its role and name. All have one, none tells the password, and the screen has just
        these buttons, once it has come in."""
        self.wait_still()
        elements = self.elements()
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
            assert self.one_more(self.server.posts, way, name).path == f"/{path}"

    def leads(self, name, to, back):
        """Pressing and tapping each lead there; `back` leads back, by a press and by a tap too."""
        for way in self.ways():
            way(name)
            self.wait_gone(name)
            self.find(to)
            way(back)
            self.find(name)
            self.wait_gone(back)

    def opens(self, name, address):
        """Pressing and tapping each hand an address to the system."""
        for way in self.ways():
            assert self.one_more(self.opened, way, name) == address, self.opened()


@contextlib.contextmanager
def reader(on):
    with on.scripted(kind=Reader, height=1300) as (phone, server):
        phone.server = server
        yield phone


@story
def reader_at_the_door(stage):
    with reader(stage) as phone:
        phone.type(EMAIL, "otra@x")
        phone.type(PASSWORD, SECRET)
        phone.read("sign-in", [FORGOT, "Iniciar Sesión", REGISTER])
        phone.sends("Iniciar Sesión", "api_login.php")
        phone.leads(FORGOT, RECOVERY, "Cancelar")
        for way in phone.ways():
            phone.send({}, FORGOT, RECOVERY, "dialog")
            phone.wait_gone(FORGOT)
            phone.read("recovery", ["Cancelar", "Enviar"])
            phone.type(RECOVERY_FIELD, "otra@x")
            phone.one_more(phone.server.posts, way, "Enviar")
            phone.wait_gone("Enviar")
        phone.leads(REGISTER, "Crear Cuenta", "Atrás")
        phone.press(REGISTER)
        phone.wait_gone(REGISTER)
        for field in (NAME, EMAIL, "Dirección de Domicilio", "Ciudad"):
            phone.type(field, "x")
        phone.type(PASSWORD, SECRET)
        phone.read("registration", ["Atrás", "Registrarme"])
        phone.sends("Registrarme", "api_registro.php")


@story
def reader_at_home(stage):
    with reader(stage) as phone:
        phone.sign_in(("ana@x", SECRET), "1 Paquetes")
        row = "Tracking: T1, Libros, RECIBIDO"
        phone.read("dashboard", ["Cerrar sesión", "1 Paquetes", "1 Cotizaciones", "Casillero", "Cotizar", "Autos",
                                 "Perfil", "Dev", "Ver todos", row, "Ver todas", "Buscar"])
        phone.opens(row, "https://track.example/T1")
        phone.type(NUMBER, "T2")
        phone.opens("Buscar", "https://track.example/T2")
        for name in ("Casillero", "Dev", "Cotizar", "Autos", "Perfil", "1 Paquetes", "1 Cotizaciones", "Ver todos",
                     "Ver todas"):
            phone.leads(name, *SCREENS[name.split()[-1]])
        for way in phone.ways():
            way("Cerrar sesión")
            phone.find("Iniciar Sesión")
            phone.wait_gone("Cerrar sesión")
            phone.sign_in(("ana@x", SECRET), "1 Paquetes")


@story
def reader_in_the_services(stage):
    with reader(stage) as phone:
        phone.sign_in(("ana@x", SECRET), "1 Paquetes")
        phone.enter("Casillero", "Ana MRV-42")
        phone.read("mailbox", ["Volver al Panel"])
        phone.leave()
        phone.enter("Dev", "Corvandel")
        site, mail = "🌐 Sitio Web: corvandel.example", "✉️ Correo: hola@corvandel.example"
        phone.read("credits", [site, mail, "Volver al Panel"])
        phone.opens(site, "https://corvandel.example/")
        phone.opens(mail, "mailto:hola@corvandel.example")
        phone.leave()
        phone.enter("Cotizar")
        phone.read("quotation", ["Atrás", "Aéreo", "Marítimo", "Enviar Cotización"])
        for way in phone.ways():
            for mode in ("Marítimo", "Aéreo"):
                way(mode)
                phone.wait_for(lambda: "checked" in phone.find(mode).states, f"the choice of {mode}")
        phone.sends("Enviar Cotización", "api_cotizar.php")
        phone.leave()
        phone.enter("Autos")
        phone.read("vehicle", ["Atrás", "Solicitar Importación"])
        phone.sends("Solicitar Importación", "api_auto.php")
        phone.leave()
        for entrance, row in (("1 Paquetes", "Tracking: T1, Libros, RECIBIDO"),
                              ("1 Cotizaciones", "Silla, PENDIENTE, Origen: Miami")):
            phone.enter(entrance)
            phone.find(row, "list item")
            phone.read(entrance, ["Atrás"])
            phone.leave()
        phone.enter("Perfil", "Mi Perfil")
        phone.read("profile", ["Atrás", "Cambiar foto", "Guardar Cambios"])
        phone.sends("Guardar Cambios", "api_perfil.php")
        phone.leads("Cambiar foto", "Elegir foto", "Cancelar")
        phone.press("Cambiar foto")
        phone.wait_gone("Cambiar foto")
        phone.read("photos", ["Cancelar"])
