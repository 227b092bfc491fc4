"""Stories of packages, quotations and the other services."""

import contextlib
import pathlib

from phone import Phone
from scripted import ScriptedServer, reply
from service import demo_port
from stage import BRUNO, heard_alert, open_at_login, sign_in, story


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


def peak_memory(phone):
    """The most that the app has held, in MB."""
    status = pathlib.Path(f"/proc/{phone.app.pid}/status").read_text()
    return int(next(line.split()[1] for line in status.splitlines() if line.startswith("VmHWM"))) // 1024


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
        before = peak_memory(phone)
        sign_in(phone, ("a@x", "b"))
        phone.press("100000 Paquetes")
        phone.find("Tracking: MRV-1, Repuestos electrónicos, caja 1, EN TRÁNSITO")
        phone.keys("Tab")
        phone.keys("Tab")
        phone.keys("End")
        phone.find("Tracking: MRV-100000, Repuestos electrónicos, caja 100000, EN TRÁNSITO")
        more = peak_memory(phone) - before
        print(f"{more} MB more at its peak than at the sign-in")
        assert more < 100, f"{more} MB"
