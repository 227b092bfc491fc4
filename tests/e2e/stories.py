"""Stories of customers, told through the real app against a real server, from outside.

usage: stories.py STORY APP SCRIPTED_APP SERVICE RELEASE_APP      stories.py --list

Each story has a network of its own where the kernel grants one, since the app's port is built in; otherwise the stories
wait for one another.
"""

import contextlib
import fcntl
import os
import pathlib
import stat
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from phone import Phone
from scripted import ScriptedServer, reply
from service import Service, demo_port

ANA = ("ana@marovenda.example", "Casillero#1")
BRUNO = ("bruno@marovenda.example", "Casillero#2")
STORIES = {}


def story(function):
    STORIES[function.__name__] = function
    return function


class Stage:
    """What a story is played with."""

    def __init__(self, app, scripted_app, service, release_app):
        self.app, self.scripted_app, self.service_program, self.release_app = app, scripted_app, service, release_app
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="marovenda-story-"))

    def service(self):
        return Service(self.service_program, demo_port(), self.folder / "demo.sqlite")


def sign_in(phone, customer):
    phone.type("Correo Electrónico", customer[0])
    phone.type("Contraseña", customer[1])
    phone.press("Iniciar Sesión")


def open_at_login(phone, app):
    phone.open(app)
    phone.find("Iniciar Sesión")
    phone.wait_gone("Desarrollado por Corvandel")


def heard_alert(phone, text):
    """Whether a screen reader was told: the text is an alert's name, and the alert has begun to show."""
    named = any(e[0] == "object:property-change:accessible-name" and e[1] == "alert" and e[2] == text
                for e in phone.events)
    shown = any(e[0].startswith("object:state-changed:showing") and e[1] == "alert" and e[3] == 1 for e in phone.events)
    return named and shown


@story
def wrong_password(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        phone.press("Iniciar Sesión")
        phone.find("Completa los campos")
        sign_in(phone, (ANA[0], "casillero#1"))
        phone.find("Correo o contraseña incorrectos", "alert")
        phone.wait_for(lambda: heard_alert(phone, "Correo o contraseña incorrectos"), "the announcement")
        sign_in(phone, ANA)
        phone.find("230 Paquetes")
        for event in phone.events:
            assert "asillero#1" not in "".join(map(str, event)), f"the password was told: {event}"
        assert phone.standard_error() == "", phone.standard_error()


@story
def service_stopped(stage):
    with Phone() as phone:
        open_at_login(phone, stage.app)
        sign_in(phone, ANA)
        phone.find("Error de credenciales")
        with stage.service():
            phone.press("Iniciar Sesión")
            phone.find("230 Paquetes")
        phone.close()
        phone.open(stage.app)
        phone.find("0 Paquetes")
        phone.find("Hola, Ana Lucía Peñalver Ríos")
        assert phone.standard_error() == "", phone.standard_error()


@story
def another_customer(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        sign_in(phone, ANA)
        phone.find("Hola, Ana Lucía Peñalver Ríos")
        phone.find("230 Paquetes")
        phone.press("Cerrar sesión")
        field = phone.find("Correo Electrónico")
        assert field.text() == "" and phone.find("Contraseña").text() == "", "the new sign-in is not empty"
        assert not phone.shows("Desarrollado por Corvandel"), "the splash came again"
        sign_in(phone, BRUNO)
        phone.find("Hola, Bruno Díaz")
        phone.find("2 Paquetes")
        phone.find("1 Cotizaciones")


@story
def killed_at_any_moment(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        phone.kill()
        open_at_login(phone, stage.app)
        sign_in(phone, ANA)
        phone.find("Hola, Ana Lucía Peñalver Ríos")
        phone.kill()
        phone.open(stage.app)
        phone.find("Desarrollado por Corvandel")
        phone.kill()
        phone.open(stage.app)
        phone.find("Hola, Ana Lucía Peñalver Ríos")
        phone.find("230 Paquetes")
        phone.press("Cerrar sesión")
        phone.find("Iniciar Sesión")
        phone.kill()
        open_at_login(phone, stage.app)
        assert not phone.shows("Bienvenido")
        folder = phone.home / "data" / "marovenda"
        assert stat.S_IMODE(folder.stat().st_mode) == 0o700, oct(folder.stat().st_mode)
        for file in folder.iterdir():
            assert stat.S_IMODE(file.stat().st_mode) == 0o600, f"{file}: {oct(file.stat().st_mode)}"


@story
def damaged_store(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        sign_in(phone, ANA)
        phone.find("230 Paquetes")
        phone.close()
        store = phone.home / "data" / "marovenda" / "session.sqlite"
        size = store.stat().st_size
        store.write_bytes(b"damage" * size)
        for companion in store.parent.glob("session.sqlite-*"):
            companion.unlink()  # they may hold all of it once more
        open_at_login(phone, stage.app)
        lines = phone.standard_error().splitlines()
        assert len(lines) == 1 and "session.sqlite" in lines[0], lines
        assert (store.parent / "session.sqlite.damaged-1").read_bytes() == b"damage" * size
        sign_in(phone, ANA)
        phone.find("230 Paquetes")


@story
def tracking_pages(stage):
    with stage.service(), Phone(height=1200) as phone:
        open_at_login(phone, stage.app)
        sign_in(phone, BRUNO)
        phone.find("2 Paquetes")
        row = phone.wait_for(lambda: next((e for e in phone.elements() if e.name.startswith("Tracking: MRV-")), None),
                             "a package row")
        number = row.name.split(",")[0].removeprefix("Tracking: ")
        row.press()
        phone.wait_for(lambda: len(phone.opened()) == 1, "the tracking page")
        assert phone.opened() == ["https://www.aftership.com/track/" + number], phone.opened()
        for ignored in ("", "   ", "N/A"):
            phone.type("Número de tracking...", ignored)
            phone.press("Buscar")
        phone.type("Número de tracking...", " MRV 1 ")
        phone.press("Buscar")
        phone.wait_for(lambda: len(phone.opened()) == 2, "the second tracking page")
        assert phone.opened()[1] == "https://www.aftership.com/track/MRV%201", phone.opened()


@story
def recovery(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        phone.press("¿Olvidaste tu contraseña?")
        phone.find("Recuperar Contraseña", "dialog")
        assert not phone.shows("Iniciar Sesión"), "the form is heard under the alert"
        assert "focused" in phone.find("Ingresa tu correo registrado").states
        subprocess.run(["xdotool", "type", "--delay", "4", ANA[0]], check=True)
        phone.wait_for(lambda: phone.find("Ingresa tu correo registrado").text() == ANA[0], "the typed address")
        phone.keys("Return")
        phone.find("Si el correo está registrado, recibirás un enlace", "alert")
        phone.wait_gone("Recuperar Contraseña")


@story
def keyboard_alone(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)

        def walk_to(name):
            for _ in range(12):
                if any(e.name == name and "focused" in e.states for e in phone.elements()):
                    return
                before = [e.name for e in phone.elements() if "focused" in e.states]
                phone.keys("Tab")
                phone.wait_for(lambda: [e.name for e in phone.elements() if "focused" in e.states] != before, "focus")
            raise AssertionError(f"{name} cannot be reached")

        walk_to("Correo Electrónico")
        subprocess.run(["xdotool", "type", "--delay", "4", BRUNO[0]], check=True)
        walk_to("Contraseña")
        subprocess.run(["xdotool", "type", "--delay", "4", BRUNO[1]], check=True)
        walk_to("Iniciar Sesión")
        phone.keys("Return")
        phone.find("2 Paquetes")
        walk_to("Cerrar sesión")
        phone.keys("space")
        phone.find("Iniciar Sesión")


@story
def bytes_on_the_wire(stage):
    def script(request):
        if request.line.startswith("POST /api_login.php"):
            return reply('{"status":"success","id":"42","nombre":"Ana"}', headers="Set-Cookie: a=b; Path=/\r\n")
        return reply('{"paquetes":[{"tracking":"T1"}]}', status="500 Oops", headers="Set-Cookie: c=d\r\n")

    server = ScriptedServer(18473, script)
    with contextlib.closing(server), Phone() as phone:
        open_at_login(phone, stage.scripted_app)
        sign_in(phone, ("ana/n@x", 'a"b\\c'))
        phone.find("1 Paquetes")
        post, get = server.requests[:2]
        assert post.line == "POST /api_login.php HTTP/1.1", post.line
        assert post.body == r'{"email":"ana\/n@x","password":"a\"b\\c"}'.encode(), post.body
        assert post.header("Content-Type") == "application/json", post.headers
        assert post.header("Content-Length") == str(len(post.body))
        assert get.line == "GET /api_paquetes.php?user_id=42 HTTP/1.1", get.line
        assert get.body == b"" and get.header("Content-Type") is None, get.headers
        # Beyond those of the call only what the platform's client sends of itself.
        platform = {"host", "connection", "accept-encoding", "accept-language", "user-agent"}
        for request, own in ((post, {"content-type", "content-length"}), (get, set())):
            names = {name.lower() for name, _ in request.headers}
            assert names <= platform | own, names
            assert request.header("Host") == "127.0.0.1:18473"
            assert request.header("User-Agent") == "Mozilla/5.0", request.header("User-Agent")


@story
def one_post_whatever_happens(stage):
    answers = [None, b"garbage", b"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{", b"HTTP/1.1 200 OK\r\n"]
    server = ScriptedServer(18473, lambda request: answers[(len(server.posts()) - 1) % len(answers)])
    with contextlib.closing(server), Phone() as phone:
        open_at_login(phone, stage.scripted_app)
        phone.type("Correo Electrónico", "a@x")
        phone.type("Contraseña", "b")
        for count in range(1, 2 * len(answers) + 1):
            phone.press("Iniciar Sesión")
            phone.wait_for(lambda: len(server.posts()) >= count, "the request")
            phone.find("Error de credenciales")
        # A further, good one: whatever might have been sent again has come by now.
        answers[:] = [reply('{"status":"error","message":"Fin"}')]
        phone.press("Iniciar Sesión")
        phone.find("Fin")
        assert len(server.posts()) == 9, len(server.posts())
        assert phone.standard_error() == "", phone.standard_error()


ENTRANCES = [
    ("Casillero", "Mi Casillero"),
    ("Cotizar", "Cotizar Importación"),
    ("Autos", "Importar Vehículo"),
    ("Perfil", "Toca la imagen para cambiar foto"),
    ("Dev", "Desarrollo de Software & IT Solutions"),
    ("2 Paquetes", "Mis Paquetes"),
    ("Ver todos", "Mis Paquetes"),
    ("1 Cotizaciones", "Mis Cotizaciones"),
    ("Ver todas", "Mis Cotizaciones"),
]


@story
def every_entrance(stage):
    with stage.service(), Phone(height=1200) as phone:
        open_at_login(phone, stage.app)
        phone.press("¿No tienes cuenta? Regístrate aquí")
        phone.find("Crear Cuenta")
        assert not phone.shows("Iniciar Sesión"), "the sign-in is heard under the registration"
        phone.press("Atrás")
        phone.find("Iniciar Sesión")
        sign_in(phone, BRUNO)
        phone.find("2 Paquetes")
        for entrance, inside in ENTRANCES:
            phone.press(entrance)
            # Some of these texts are on the dashboard too.
            phone.wait_gone("Bienvenido")
            phone.find(inside)
            back = "Volver al Panel" if entrance in ("Casillero", "Dev") else "Atrás"
            assert phone.shows(back), f"{back} is missing behind {entrance}"
            if entrance in ("Ver todos", "Cotizar"):
                phone.keys("Escape")
            else:
                phone.press(back)
            phone.find("Bienvenido")
            phone.wait_gone(back)
        assert phone.standard_error() == "", phone.standard_error()


@story
def quotation_by_sea(stage):
    with stage.service(), Phone(height=1200) as phone:
        open_at_login(phone, stage.app)
        sign_in(phone, BRUNO)
        phone.find("1 Cotizaciones")
        phone.press("Cotizar")
        phone.press("Marítimo")
        phone.type("Peso (Lbs)", "12.5")
        phone.type("Valor Declarado (USD)", "40")
        phone.type("Descripción del contenido", "Silla de playa")
        assert all(e.name for e in phone.elements()), f"something has no name: {phone.elements()}"
        phone.press("Enviar Cotización")
        phone.find("Enviado con éxito", "alert")
        phone.wait_for(lambda: heard_alert(phone, "Enviado con éxito"), "the announcement")
        assert phone.find("Peso (Lbs)").text() == "", "the form was not emptied"
        phone.press("Atrás")
        phone.find("2 Cotizaciones")
        phone.find("Origen: Miami, USA, Silla de playa, PENDIENTE")
        phone.press("2 Cotizaciones")
        phone.find("Silla de playa, PENDIENTE, Origen: Miami, USA")
        assert phone.standard_error() == "", phone.standard_error()


@story
def mailbox_and_vehicle(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        sign_in(phone, BRUNO)
        phone.find("2 Paquetes")
        phone.press("Casillero")
        phone.wait_for(lambda: any(e.name.startswith("Bruno Díaz") for e in phone.elements()), "the mailbox's name")
        assert any("Estado: Florida" in e.name for e in phone.elements())
        phone.press("Volver al Panel")
        phone.press("Autos")
        phone.type("Marca (Ej: Toyota)", "Toyota")
        phone.type("Modelo (Ej: Corolla)", "Corolla")
        phone.type("Año", "2019")
        phone.type("Ubicación o Subasta", "Copart Miami")
        phone.press("Solicitar Importación")
        phone.find("Solicitud enviada", "alert")
        assert phone.find("Año").text() == "2019", "the form was emptied"


@story
def credits_links(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        sign_in(phone, BRUNO)
        phone.find("2 Paquetes")
        phone.press("Dev")
        phone.press("🌐 Sitio Web: corvandel.example")
        phone.press("✉️ Correo: hola@corvandel.example")
        phone.wait_for(lambda: len(phone.opened()) == 2, "both links")
        assert sorted(phone.opened()) == ["https://corvandel.example/", "mailto:hola@corvandel.example"], phone.opened()


@story
def registration(stage):
    with stage.service(), Phone() as phone:
        open_at_login(phone, stage.app)
        phone.press("¿No tienes cuenta? Regístrate aquí")
        phone.press("Registrarme")
        phone.find("Por favor completa todos los campos", "alert")
        phone.type("Nombre Completo", "Eva Moreno ")
        phone.type("Correo Electrónico", ANA[0])
        phone.type("Dirección de Domicilio", "Calle 50")
        phone.type("Ciudad", "Colon")
        phone.type("Contraseña", "clave.1")
        phone.press("Registrarme")
        phone.find("La contraseña debe incluir al menos una mayúscula y un carácter especial", "alert")
        phone.type("Contraseña", "Clave.1")
        phone.press("Registrarme")
        phone.find("Ese correo ya está registrado", "alert")
        phone.type("Correo Electrónico", "eva@marovenda.example")
        phone.press("Registrarme")
        phone.find("Hola, Eva Moreno")
        phone.find("0 Paquetes")
        phone.press("Cerrar sesión")
        sign_in(phone, ("eva@marovenda.example", "Clave.1"))
        phone.find("Hola, Eva Moreno")


def photo_colour(phone):
    """The colour in the middle of the dashboard's photo."""
    box = phone.find("Foto de perfil").box()
    pixel = subprocess.run(["import", "-window", "root", "-crop", f"1x1+{box.x + box.width // 2}+{box.y + box.height // 2}",
                            "-depth", "8", "rgb:-"], check=True, stdout=subprocess.PIPE).stdout
    return tuple(pixel[:3])


def is_red(colour):
    return colour[0] > 200 and colour[1] < 60 and colour[2] < 60


@story
def photo(stage):
    with Phone() as phone:
        os.environ["HOME"] = str(phone.home)
        pictures = phone.home / "Pictures"
        pictures.mkdir()
        for name, colour in (("rojo", "red"), ("verde", "lime")):
            subprocess.run(["convert", "-size", "400x300", f"xc:{colour}", str(pictures / f"{name}.png")], check=True)

        def pick(name):
            phone.press("Cambiar foto")
            phone.find("Elegir foto", "dialog")
            phone.press(name, "push button")
            phone.wait_gone("Elegir foto")

        with stage.service():
            open_at_login(phone, stage.app)
            sign_in(phone, ANA)
            phone.find("230 Paquetes")
            phone.press("Perfil")
            pick("rojo")
            phone.press("Guardar Cambios")
            phone.find("Perfil actualizado con éxito", "alert")
            phone.press("Atrás")
            phone.find("Bienvenido")
            phone.wait_for(lambda: is_red(photo_colour(phone)), "the photo on the dashboard")
            phone.close()
            phone.open(stage.app)
            phone.find("230 Paquetes")
            phone.wait_for(lambda: is_red(photo_colour(phone)), "the photo after a restart")
        # Without the service nothing is saved, and the old photo stays.
        phone.press("Perfil")
        pick("verde")
        phone.press("Guardar Cambios")
        phone.find("Error al actualizar", "alert")
        phone.press("Atrás")
        phone.find("Bienvenido")
        phone.wait_for(lambda: is_red(photo_colour(phone)), "the old photo")
        with stage.service():
            # It is carried over to the next customer of this device.
            phone.press("Cerrar sesión")
            sign_in(phone, BRUNO)
            phone.find("2 Paquetes")
            phone.wait_for(lambda: is_red(photo_colour(phone)), "the photo of the one before")
        assert phone.standard_error() == "", phone.standard_error()


@story
def infinite_weight(stage):
    def script(request):
        if request.line.startswith("POST /api_login.php"):
            return reply('{"status":"success","id":"42"}')
        return reply('{"status":"success"}')

    server = ScriptedServer(18473, script)
    with contextlib.closing(server), Phone() as phone:
        open_at_login(phone, stage.scripted_app)
        sign_in(phone, ("a@x", "b"))
        phone.press("Cotizar")
        phone.type("Peso (Lbs)", "inf")
        phone.press("Enviar Cotización")
        phone.find("Enviado con éxito")
        post = server.posts()[-1]
        assert post.line == "POST /api_cotizar.php HTTP/1.1" and post.body == b"", (post.line, post.body)
        assert post.header("Content-Length") == "0" and post.header("Content-Type") == "application/json"


@story
def hundred_thousand_packages(stage):
    rows = ",".join(f'{{"tracking":"MRV-{i}","descripcion":"Repuestos electrónicos, caja {i}","estado":"en tránsito",'
                    f'"fecha_recibido":"2026-10-01"}}' for i in range(1, 100_001))
    listing = reply(f'{{"paquetes":[{rows}]}}')

    def script(request):
        if request.line.startswith("POST /api_login.php"):
            return reply('{"status":"success","id":"42"}')
        return listing

    # The build that customers get: the sanitizers of the other one take memory of their own.
    server = ScriptedServer(demo_port(), script)
    with contextlib.closing(server), Phone() as phone:
        open_at_login(phone, stage.release_app)
        sign_in(phone, ("a@x", "b"))
        phone.press("100000 Paquetes")
        phone.find("Tracking: MRV-1, Repuestos electrónicos, caja 1, EN TRÁNSITO")
        phone.keys("Tab")
        phone.keys("Tab")
        phone.keys("End")
        phone.find("Tracking: MRV-100000, Repuestos electrónicos, caja 100000, EN TRÁNSITO")
        status = pathlib.Path(f"/proc/{phone.app.pid}/status").read_text()
        peak = int(next(line.split()[1] for line in status.splitlines() if line.startswith("VmHWM"))) // 1024
        print(f"peak memory {peak} MB")
        assert peak < 250, f"{peak} MB"


@story
def wrong_arguments(stage):
    def run(*arguments):
        return subprocess.run([stage.app, *arguments], capture_output=True, text=True,
                              env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
    unknown = run("nonsense")
    assert unknown.returncode == 2 and "nonsense" in unknown.stderr, unknown
    option = run("--nonsense")
    assert option.returncode == 2 and "nonsense" in option.stderr, option
    version = run("--version")
    assert version.returncode == 0 and "marovenda" in version.stdout.lower(), version


def in_own_network():
    """Starts this program again with a network of its own; returns where that is refused, once no other story runs."""
    if os.environ.get("MAROVENDA_OWN_NETWORK"):
        return None
    own = ["unshare", "--user", "--map-root-user", "--net"]
    if subprocess.run([*own, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
        os.environ["MAROVENDA_OWN_NETWORK"] = "1"
        os.execvp(own[0], [*own, "sh", "-c", 'ip link set lo up && exec "$@"', "sh", sys.executable, *sys.argv])
    lock = open(pathlib.Path(tempfile.gettempdir()) / "marovenda-stories.lock", "w")
    fcntl.flock(lock, fcntl.LOCK_EX)
    return lock


def main():
    if sys.argv[1:] == ["--list"]:
        print("\n".join(STORIES))
        return
    lock = in_own_network()
    STORIES[sys.argv[1]](Stage(*sys.argv[2:6]))
    del lock


if __name__ == "__main__":
    main()
