"""Stories of recovery and registration."""

from customer import EMAIL, FORGOT, NAME, PASSWORD, RECOVERY, RECOVERY_FIELD, REGISTER
from stage import ANA, story

EVA = ("eva@marovenda.example", "Clave.1")


@story
def recovery(stage):
    with stage.customer() as phone:
        phone.send({}, FORGOT, RECOVERY, "dialog")
        assert not phone.shows("Iniciar Sesión"), "the form is heard under the alert"
        phone.wait_focus(RECOVERY_FIELD)
        phone.write(ANA[0])
        phone.wait_text(RECOVERY_FIELD, ANA[0])
        phone.keys("Return")
        phone.find("Si el correo está registrado, recibirás un enlace", "alert")
        phone.wait_gone(RECOVERY)


@story
def registration(stage):
    with stage.customer() as phone:
        phone.press(REGISTER)
        phone.send({}, "Registrarme", "Por favor completa todos los campos", "alert")
        phone.send({NAME: "Eva Moreno ", EMAIL: ANA[0], "Dirección de Domicilio": "Calle 50", "Ciudad": "Colon",
                    PASSWORD: "clave.1"}, "Registrarme",
                   "La contraseña debe incluir al menos una mayúscula y un carácter especial", "alert")
        phone.send({PASSWORD: EVA[1]}, "Registrarme", "Ese correo ya está registrado", "alert")
        phone.send({EMAIL: EVA[0]}, "Registrarme", "Hola, Eva Moreno")
        phone.find("0 Paquetes")
        phone.send({}, "Cerrar sesión", "Iniciar Sesión")
        phone.sign_in(EVA, "Hola, Eva Moreno")
