#include "Scenes.h"

#include "Session.h"

#include <private/qabstractanimation_p.h>
#include <QBuffer>
#include <QDir>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Given = std::function<void(ScriptedServer &)>;
using When = std::function<bool(TestScreen &)>;

constexpr auto listing = "/api_paquetes.php";

bool until(const std::function<bool()> &come) { return QTest::qWaitFor(come, 20000); }

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
    const auto weakPassword = [](TestScreen &screen) {
        if (!still(screen))
            return false;
        const QStringList fields{u"nom"_s, u"email"_s, u"direccion"_s, u"ciudad"_s, u"pass"_s};
        for (const QString &field : fields)
            screen.type(screen.find(field), field == u"pass"_s ? u"casillero"_s : longName);
        screen.tap(screen.find(u"registrar"_s));
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
        {"inicio", "SplashView { logoOpacity: 1; logoScale: 1; spinning: false }", nothing,
         shows(u"Desarrollado por Corvandel"_s)},
        {"ingreso", TestScreen::alone("LoginView {}"), nothing, shows(u"Iniciar Sesión"_s)},
        {"ingreso-error", TestScreen::alone("LoginView {}"), replies("/api_login.php", refusal), fillAndSend},
        {"recuperar", TestScreen::alone("LoginView {}"), nothing, openAlert},
        {"registro", pushed("RegistroView"), nothing, shows(u"Crear Cuenta"_s)},
        {"registro-clave", pushed("RegistroView"), nothing, weakPassword},
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
        {"perfil-guardado", pushed("PerfilView"),
         [](ScriptedServer &server) {
             signIn(u"Ana Lucía Peñalver Ríos"_s);
             server.reply("/api_perfil.php", R"({"status":"success"})");
         },
         presses(u"guardar"_s, u"Perfil actualizado con éxito"_s)},
        {"perfil-error", pushed("PerfilView"), [](ScriptedServer &) { signIn(u"Ana Lucía Peñalver Ríos"_s); },
         presses(u"guardar"_s, u"Error al actualizar"_s)},
    };
}

/// Photos on the device, of all shapes.
void takePhotos(ScriptedServer &)
{
    static const QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    const QDir pictures(home.filePath(u"Pictures"_s));
    pictures.mkpath(u"."_s);
    const QList<QSize> sizes{{300, 200}, {200, 300}, {200, 200}, {400, 100}, {60, 90}};
    for (int i = 0; i < sizes.size(); ++i) {
        QImage image(sizes[i], QImage::Format_RGB32);
        QLinearGradient light(0, 0, sizes[i].width(), sizes[i].height());
        light.setColorAt(0, QColor::fromHsv(i * 67, 90, 250));
        light.setColorAt(1, QColor::fromHsv(i * 67 + 30, 200, 120));
        QPainter(&image).fillRect(image.rect(), light);
        const QString path = pictures.filePath(u"foto%1.png"_s.arg(i));
        image.save(path);
        QFile file(path);
        file.open(QFile::ReadWrite);
        file.setFileTime(QDateTime(QDate(2026, 1, 10 - i), QTime(12, 0)), QFileDevice::FileModificationTime);
    }
}

When opensPicker(bool filled)
{
    return [=](TestScreen &screen) {
        if (!still(screen))
            return false;
        if (!filled)
            qputenv("HOME", "/nowhere");
        screen.tap(screen.find(u"cambiarFoto"_s));
        screen.root()->forceActiveFocus();
        if (!filled)
            return until([&] { return screen.texts().contains(u"No hay fotos en la carpeta de imágenes."_s); });
        return until([&] {
            const auto *const photos = screen.find(u"photos"_s);
            const QList<QQuickItem *> cells = photos->property("contentItem").value<QQuickItem *>()->childItems();
            return photos->property("count").toInt() == 5 &&
                   std::all_of(cells.begin(), cells.end(), [](QQuickItem *cell) {
                       const QQuickItem *const view = cell->findChild<QQuickItem *>(u"view"_s);
                       return !view || view->property("decoded").toBool();
                   });
        });
    };
}

QList<Scene> photoScenes()
{
    return {
        {"fotos", pushed("PerfilView"), takePhotos, opensPicker(true)},
        {"fotos-vacio", pushed("PerfilView"), nothing, opensPicker(false)},
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
    const auto lists = [](int packages) -> When {
        return [=](TestScreen &screen) {
            return still(screen) &&
                   until([&] { return screen.find(u"rows"_s)->property("count").toInt() == packages; });
        };
    };
    const QByteArray dashboard = TestScreen::alone("DashboardView { screens: ServiceScreens {} }");
    return {
        {"panel-vacio", dashboard, rows("{}", u"Ana"_s), shows(u"Mi Resumen"_s)},
        {"panel", dashboard, rows(someRows(), u"Ana Lucía Peñalver Ríos"_s), counts(4)},
        {"panel-largo", dashboard, rows(longRows(), longName), counts(2)},
        {"cotizar", pushed("CotizarView"), nothing, shows(u"Enviar Cotización"_s)},
        {"cotizar-enviado", pushed("CotizarView"), replies("/api_cotizar.php", R"({"status":"success"})"),
         presses(u"enviar"_s, u"Enviado con éxito"_s)},
        {"cotizar-error", pushed("CotizarView"), nothing, presses(u"enviar"_s, u"Error al cotizar"_s)},
        {"autos", pushed("ImportarAutoView"), nothing, shows(u"Solicitar Importación"_s)},
        {"autos-enviado", pushed("ImportarAutoView"), replies("/api_auto.php", R"({"status":"success"})"),
         presses(u"enviar"_s, u"Solicitud enviada"_s)},
        {"autos-error", pushed("ImportarAutoView"), nothing, presses(u"enviar"_s, u"Error al enviar"_s)},
        {"casillero", pushed("CasilleroView"),
         replies("/api_casillero.php", R"({"nombreCompleto":"Ana Lucía Peñalver Ríos MRV-1001"})"),
         shows(u"Ana Lucía Peñalver Ríos MRV-1001"_s)},
        {"casillero-error", pushed("CasilleroView"), nothing, shows(u"Error"_s)},
        {"paquetes", pushed("MisPaquetesView"), rows(someRows(), u"Ana"_s), lists(4)},
        {"paquetes-largo", pushed("MisPaquetesView"), rows(longRows(), u"Ana"_s), lists(2)},
        {"cotizaciones", pushed("MisCotizacionesView"), rows(someRows(), u"Ana"_s), shows(u"Bicicleta de niño"_s)},
        {"cotizaciones-vacio", pushed("MisCotizacionesView"), rows("{}", u"Ana"_s),
         shows(u"No tienes cotizaciones registradas."_s)},
        {"creditos", pushed("DeveloperView"), nothing, shows(u"Corvandel"_s)},
    };
}

} // namespace

QList<Scene> scenes() { return accountScenes() + photoScenes() + logisticsScenes(); }

std::unique_ptr<TestScreen> staged(const QByteArray &name, ScriptedServer &server, QSize size)
{
    const QList<Scene> all = scenes();
    const auto scene = std::find_if(all.begin(), all.end(), [&](const Scene &each) { return each.name == name; });
    if (scene == all.end())
        qFatal("There is no scene %s", name.constData());
    // No picture shows an animation under way.
    QUnifiedTimer::instance()->setSlowModeEnabled(true);
    QUnifiedTimer::instance()->setSlowdownFactor(1.0 / 50);
    scene->given(server);
    auto screen = std::make_unique<TestScreen>(scene->qml, size);
    if (!scene->when(*screen))
        return nullptr;
    screen->settle();
    return screen;
}
