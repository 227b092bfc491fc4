#include "Forms.h"

using namespace Qt::StringLiterals;

const QList<Form> &forms()
{
    static const QList<Form> all{
        {
            .view = "LoginView",
            .read = {u"Ingresa a tu panel logístico"_s, u"Correo Electrónico"_s, u"Contraseña"_s,
                     u"¿Olvidaste tu contraseña?"_s, u"Iniciar Sesión"_s, u"¿No tienes cuenta? Regístrate aquí"_s},
            .fields = {{u"email"_s, u" Ana@x/y "_s}, {u"pass"_s, u"  "_s}},
            .button = u"iniciarSesion"_s,
            .path = "/api_login.php",
            .body = R"({"email":" Ana@x\/y ","password":"  "})",
            .untouchedBody = {},
            .incomplete = u"Completa los campos"_s,
            .failure = u"Error de credenciales"_s,
            .showsMessage = true,
            .emptyMessageTakesALine = false,
        },
        {
            .view = "RegistroView",
            .read = {u"Crear Cuenta"_s, u"Nombre Completo"_s, u"Correo Electrónico"_s, u"Dirección de Domicilio"_s,
                     u"Ciudad"_s, u"Contraseña"_s, u"Registrarme"_s},
            .fields = {{u"nom"_s, u" Ana \"Lu\" Ñ "_s},
                       {u"email"_s, u"no es correo/y"_s},
                       {u"direccion"_s, u"Calle\\5  #2"_s},
                       {u"ciudad"_s, u"Colón"_s},
                       {u"pass"_s, u"A_"_s}},
            .button = u"registrar"_s,
            .path = "/api_registro.php",
            .body = R"({"nombre":"Ana \"Lu\" Ñ","email":"no es correo\/y","password":"A_",)"
                    R"("direccion":"Calle\\5  #2","ciudad":"Colón"})",
            .untouchedBody = {},
            .incomplete = u"Por favor completa todos los campos"_s,
            .blank = u" \u00A0\u2003 "_s,
            .failure = u"Error al registrar"_s,
            .showsMessage = true,
            .emptyMessageTakesALine = false,
        },
        {
            .view = "PerfilView",
            .read = {u"Mi Perfil"_s, u"Cambiar foto"_s, u"Toca la imagen para cambiar foto"_s, u"Nombre Completo"_s,
                     u"Correo"_s, u"Guardar Cambios"_s},
            .fields = {{u"nombre"_s, u" \tAna \"Lu\" / Ñ  "_s, false, u"Ana"_s}, {u"email"_s, u" no es correo "_s}},
            .button = u"guardar"_s,
            .path = "/api_perfil.php",
            .body = R"({"user_id":42,"nombre":" \tAna \"Lu\" \/ Ñ  ","email":" no es correo ","password":"",)"
                    R"("avatar_base64":""})",
            .untouchedBody = R"({"user_id":42,"nombre":"Ana","email":"","password":"","avatar_base64":""})",
            .incomplete = {},
            .failure = u"Error al actualizar"_s,
            .success = u"Perfil actualizado con éxito"_s,
        },
        {
            .view = "CotizarView",
            .read = {u"Cotizar Importación"_s, u"Tipo"_s, u"Aéreo"_s, u"Marítimo"_s, u"Peso (Lbs)"_s,
                     u"Valor Declarado (USD)"_s, u"Descripción del contenido"_s, u"Enviar Cotización"_s},
            .fields = {{u"peso"_s, u"12.5"_s, true},
                       {u"valor"_s, u"0.1"_s, true},
                       {u"descripcion"_s, u" Ropa / ñ "_s}},
            .button = u"enviar"_s,
            .path = "/api_cotizar.php",
            .body = R"({"user_id":42,"tipo":"aereo","origen":"Miami, USA","destino":"Panamá","peso":12.5,)"
                    R"("valor":0.1,"descripcion":" Ropa \/ ñ "})",
            .untouchedBody = R"({"user_id":42,"tipo":"aereo","origen":"Miami, USA","destino":"Panamá","peso":0,)"
                             R"("valor":0,"descripcion":""})",
            .incomplete = {},
            .failure = u"Error al cotizar"_s,
            .success = u"Enviado con éxito"_s,
            .emptiesOnSuccess = true,
        },
        {
            .view = "ImportarAutoView",
            .read = {u"Importar Vehículo"_s, u"Marca (Ej: Toyota)"_s, u"Modelo (Ej: Corolla)"_s, u"Año"_s,
                     u"Ubicación o Subasta"_s, u"Solicitar Importación"_s},
            .fields = {{u"marca"_s, u" Land  Rover "_s},
                       {u"modelo"_s, u"Corolla/LE"_s},
                       {u"anio"_s, u" 20  19 "_s, true},
                       {u"ubicacion"_s, u"Subasta Ñ"_s}},
            .button = u"enviar"_s,
            .path = "/api_auto.php",
            .body = R"({"user_id":42,"marca":" Land  Rover ","modelo":"Corolla\/LE","anio":" 20  19 ",)"
                    R"("ubicacion":"Subasta Ñ"})",
            .untouchedBody = R"({"user_id":42,"marca":"","modelo":"","anio":"","ubicacion":""})",
            .incomplete = {},
            .failure = u"Error al enviar"_s,
            .success = u"Solicitud enviada"_s,
        },
    };
    return all;
}
