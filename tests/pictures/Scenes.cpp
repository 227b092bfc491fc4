#include "Scenes.h"

#include "Session.h"

#include <QBuffer>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Given = std::function<void(ScriptedServer &)>;
using When = std::function<bool(TestScreen &)>;

constexpr auto listing = "/api_paquetes.php";

bool until(const std::function<bool()> &come) { return QTest::qWaitFor(come, 20000); }

QByteArray alone(const QByteArray &view) { return "NavigationContainer { root: Component { " + view + " {} } }"; }

/// As pushed on another screen, so that there is a way back.
QByteArray pushed(const QByteArray &view)
{
    return "NavigationContainer { id: navigation; root: Component { AppScreen {} }\n Component.onCompleted: "
           "push(page);\n"
           " property Component page: Component { " +
           view + " {} } }";
}

bool still(TestScreen &screen)
{
    return until([&] { return !screen.root()->property("moving").toBool(); });
}

void nothing(ScriptedServer &) {}

Given replies(const QByteArray &path, const QByteArray &body)
{
    return [=](ScriptedServer &server) { server.reply(path, body); };
}

QByteArray someRows()
{
    return R"({"paquetes":[
        {"tracking":"MRV-100230","descripcion":"Computadora portátil de 14 pulgadas","estado":"recibido"},
        {"tracking":"MRV-100229","descripcion":"Libros de cocina panameña","estado":"en tránsito"},
        {"tracking":"MRV-100228","descripcion":"Repuesto de motor","estado":"listo para retirar"},
        {}],
        "cotizaciones":[
        {"origen":"Miami, USA","descripcion":"Bicicleta de niño","estado":"pendiente"},
        {"origen":"Orlando, USA","descripcion":"Piezas de piano, muy frágiles","estado":"rechazada"},
        {},
        {"origen":"Doral, USA","descripcion":"Silla de playa","estado":"aprobada"}]})";
}

QByteArray longRows()
{
    const QByteArray description = QByteArray("Repuestos electrónicos y herramientas de precisión ").repeated(3);
    return R"({"paquetes":[{"tracking":"9400111899223100001234567890123456789012345","descripcion":")" + description +
           R"(","estado":"pendiente de documentación aduanera"},{"tracking":"1","descripcion":"x","estado":"y"}],)"
           R"("cotizaciones":[{"origen":"San Francisco de los Altos de Monagas, Venezuela","descripcion":")" +
           description + R"(","estado":"en espera de respuesta del proveedor"}]})";
}

void signIn(const QString &name)
{
    Session::instance().setUserId(42);
    Session::instance().setUserNombre(name);
}

const QString longName = u"María Fernanda Montserrat del Carmen Echeverría-Gutiérrez"_s;

QByteArray photo()
{
    QImage image(200, 200, QImage::Format_RGB32);
    QLinearGradient sunset(0, 0, 0, 200);
    sunset.setColorAt(0, QColor(70, 110, 180));
    sunset.setColorAt(1, QColor(250, 180, 120));
    QPainter(&image).fillRect(image.rect(), sunset);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

When shows(const QString &text)
{
    return [=](TestScreen &screen) { return still(screen) && until([&] { return screen.texts().contains(text); }); };
}

When presses(const QString &button, const QString &outcome)
{
    return [=](TestScreen &screen) {
        if (!still(screen))
            return false;
        screen.tap(screen.find(button));
        screen.root()->forceActiveFocus();
        return until([&] { return screen.texts().contains(outcome); });
    };
}

QList<Scene> accountScenes()
{
    const QByteArray refusal = R"({"message":"Tu cuenta está bloqueada hasta que confirmes tu correo electrónico."})";
    const auto fillAndSend = [](TestScreen &screen) {
        screen.type(screen.find(u"email"_s), u"ana@marovenda.example"_s);
        screen.type(screen.find(u"pass"_s), u"Casillero#1"_s);
        screen.tap(screen.find(u"iniciarSesion"_s));
        screen.root()->forceActiveFocus();
        return until([&] { return screen.find(u"msg"_s)->isVisible(); });
    };
    const auto openAlert = [](TestScreen &screen) {
        screen.tap(screen.find(u"recuperar"_s));
        return until([&] { return qFuzzyCompare(screen.find(u"recuperarDialog"_s)->opacity(), 1.0); });
    };
    const auto photoShown = [](TestScreen &screen) {
        return still(screen) && until([&] { return screen.find(u"avatar"_s)->property("decoded").toBool(); });
    };
    return {
        {"ingreso", alone("LoginView"), nothing, shows(u"Iniciar Sesión"_s)},
        {"ingreso-error", alone("LoginView"), replies("/api_login.php", refusal), fillAndSend},
        {"recuperar", alone("LoginView"), nothing, openAlert},
        {"registro", pushed("RegistroView"), nothing, shows(u"Crear Cuenta"_s)},
        {"registro-error", pushed("RegistroView"), nothing,
         presses(u"registrar"_s, u"Por favor completa todos los campos"_s)},
        {"perfil", pushed("PerfilView"), [](ScriptedServer &) { signIn(u"Ana Lucía Peñalver Ríos"_s); },
         shows(u"Mi Perfil"_s)},
        {"perfil-foto", pushed("PerfilView"),
         [](ScriptedServer &) {
             signIn(longName);
             Session::instance().setUserAvatarData(photo());
         },
         photoShown},
    };
}

QList<Scene> logisticsScenes()
{
    const auto rows = [](const QByteArray &body, const QString &name) -> Given {
        return [=](ScriptedServer &server) {
            signIn(name);
            server.reply(listing, body);
        };
    };
    const auto counts = [](int packages) -> When {
        return [=](TestScreen &screen) {
            return until([&] { return screen.find(u"paqueteCount"_s)->property("count").toInt() == packages; });
        };
    };
    return {
        {"panel-vacio", alone("DashboardView"), rows("{}", u"Ana"_s), shows(u"Mi Resumen"_s)},
        {"panel", alone("DashboardView"), rows(someRows(), u"Ana Lucía Peñalver Ríos"_s), counts(4)},
        {"panel-largo", alone("DashboardView"), rows(longRows(), longName), counts(2)},
        {"cotizar", pushed("CotizarView"), nothing, shows(u"Enviar Cotización"_s)},
        {"cotizar-enviado", pushed("CotizarView"), replies("/api_cotizar.php", R"({"status":"success"})"),
         presses(u"enviar"_s, u"Enviado con éxito"_s)},
        {"autos", pushed("ImportarAutoView"), nothing, shows(u"Solicitar Importación"_s)},
        {"casillero", pushed("CasilleroView"),
         replies("/api_casillero.php", R"({"nombreCompleto":"Ana Lucía Peñalver Ríos MRV-1001"})"),
         shows(u"Ana Lucía Peñalver Ríos MRV-1001"_s)},
        {"paquetes", pushed("MisPaquetesView"), rows(someRows(), u"Ana"_s), shows(u"Tracking: N/A"_s)},
        {"paquetes-largo", pushed("MisPaquetesView"), rows(longRows(), u"Ana"_s), shows(u"Tracking: 1"_s)},
        {"cotizaciones", pushed("MisCotizacionesView"), rows(someRows(), u"Ana"_s), shows(u"Bicicleta de niño"_s)},
        {"cotizaciones-vacio", pushed("MisCotizacionesView"), rows("{}", u"Ana"_s),
         shows(u"No tienes cotizaciones registradas."_s)},
        {"creditos", pushed("DeveloperView"), nothing, shows(u"Corvandel"_s)},
    };
}

} // namespace

QList<Scene> scenes() { return accountScenes() + logisticsScenes(); }
