"""Stories of signing in and out, and of what the device keeps."""

import os
import re
import stat
import subprocess

from customer import DASHBOARD, EMAIL, PASSWORD, SPLASH, Customer
from stage import ANA, BRUNO, story


@story
def wrong_password(stage):
    with stage.customer() as phone:
        phone.send({}, "Iniciar Sesión", "Completa los campos")
        phone.sign_in((ANA[0], "casillero#1"), "Correo o contraseña incorrectos", "alert")
        phone.wait_heard("Correo o contraseña incorrectos")
        phone.sign_in(ANA, "230 Paquetes")
        for event in phone.events:
            assert "asillero#1" not in "".join(map(str, event)), f"the password was told: {event}"


@story
def service_stopped(stage):
    with stage.alone() as phone:
        phone.sign_in(ANA, "Error de credenciales")
        with stage.service():
            phone.send({}, "Iniciar Sesión", "230 Paquetes")
        phone.close()
        phone.open(stage.app)
        phone.find("0 Paquetes")
        phone.find("Hola, Ana Lucía Peñalver Ríos")


@story
def another_customer(stage):
    with stage.customer() as phone:
        phone.sign_in(ANA, "Hola, Ana Lucía Peñalver Ríos")
        phone.find("230 Paquetes")
        phone.press("Cerrar sesión")
        field = phone.find(EMAIL)
        assert field.text() == "" and phone.find(PASSWORD).text() == "", "the new sign-in is not empty"
        assert not phone.shows(SPLASH), "the splash came again"
        phone.sign_in(BRUNO, "Hola, Bruno Díaz")
        phone.find("2 Paquetes")
        phone.find("1 Cotizaciones")


@story
def killed_at_any_moment(stage):
    with stage.customer() as phone:
        phone.kill()
        phone.open_at_login(stage.app)
        phone.sign_in(ANA, "Hola, Ana Lucía Peñalver Ríos")
        phone.kill()
        phone.open(stage.app)
        phone.find(SPLASH)
        phone.kill()
        phone.open(stage.app)
        phone.find("Hola, Ana Lucía Peñalver Ríos")
        phone.find("230 Paquetes")
        phone.send({}, "Cerrar sesión", "Iniciar Sesión")
        phone.kill()
        phone.open_at_login(stage.app)
        assert not phone.shows(DASHBOARD)
        folder = phone.home / "data" / "marovenda"
        assert stat.S_IMODE(folder.stat().st_mode) == 0o700, oct(folder.stat().st_mode)
        for file in folder.iterdir():
            assert stat.S_IMODE(file.stat().st_mode) == 0o600, f"{file}: {oct(file.stat().st_mode)}"


@story
def window_has_its_icon(stage):
    with stage.alone() as phone:
        windows = subprocess.run(["xdotool", "search", "--pid", str(phone.app.pid), "--name", "^Marovenda$"], check=True,
                                 capture_output=True, text=True).stdout.split()
        icons = [subprocess.run(["xprop", "-id", window, "_NET_WM_ICON"], check=True, capture_output=True, text=True).stdout
                 for window in windows]
        assert any(re.search(r"Icon \(\d+ x \d+\)", icon) for icon in icons), [icon[:80] for icon in icons]


@story
def damaged_store(stage):
    with stage.service(), Customer() as phone:
        phone.open_at_login(stage.app)
        phone.sign_in(ANA, "230 Paquetes")
        phone.close()
        store = phone.home / "data" / "marovenda" / "session.sqlite"
        size = store.stat().st_size
        store.write_bytes(b"damage" * size)
        for companion in store.parent.glob("session.sqlite-*"):
            companion.unlink()  # they may hold all of it once more
        phone.open_at_login(stage.app)
        lines = phone.standard_error().splitlines()
        assert len(lines) == 1 and "session.sqlite" in lines[0], lines
        assert (store.parent / "session.sqlite.damaged-1").read_bytes() == b"damage" * size
        phone.sign_in(ANA, "230 Paquetes")


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
