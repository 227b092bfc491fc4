#include "Model.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const auto success = u"success"_s;

QJsonArray rows(int count)
{
    QJsonArray all;
    for (int i = 0; i < count; ++i)
        all.append(QJsonObject{{u"tracking"_s, QString::number(i)}, {u"descripcion"_s, u"Caja"_s}});
    return all;
}

/// The numbers that the replies of this check carry.
qint64 idOf(const std::optional<QString> &text) { return text ? text->toLongLong() : 0; }

bool allowed(const QString &password)
{
    const bool capital =
        std::any_of(password.begin(), password.end(), [](QChar c) { return c >= u'A' && c <= u'Z'; });
    const bool special = std::any_of(password.begin(), password.end(), [](QChar c) { return !c.isLetterOrNumber(); });
    return capital && special;
}

} // namespace

QByteArray Reply::bytes() const
{
    if (!readable)
        return "<html>Bad gateway</html>";
    QJsonObject object;
    const auto put = [&](const QString &key, const std::optional<QString> &value) {
        if (value)
            object.insert(key, *value);
    };
    put(u"status"_s, status);
    put(u"message"_s, message);
    put(u"id"_s, id);
    put(u"nombre"_s, nombre);
    put(u"nombreCompleto"_s, nombreCompleto);
    if (paquetes)
        object.insert(u"paquetes"_s, rows(*paquetes));
    if (cotizaciones)
        object.insert(u"cotizaciones"_s, rows(*cotizaciones));
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

void Model::showRoot()
{
    stack = {std::make_shared<Screen>(Screen{user == 0 ? Kind::Login : Kind::Dashboard})};
    appear();
}

void Model::setUser(qint64 id)
{
    const bool switches = (user == 0) != (id == 0);
    user = id;
    if (switches)
        showRoot();
}

void Model::appear()
{
    switch (top().kind) {
    case Kind::Dashboard:
    case Kind::Paquetes:
    case Kind::Cotizaciones:
        return request("/api_paquetes.php");
    case Kind::Casillero:
        return request("/api_casillero.php");
    default:
        return;
    }
}

void Model::request(const QByteArray &path)
{
    ++requests;
    pending.append({path, stack.last(), top().fields});
}

void Model::push(Kind kind)
{
    stack.append(std::make_shared<Screen>(Screen{kind}));
    appear();
}

void Model::pop()
{
    stack.removeLast();
    appear();
}

void Model::type(const QString &field, const QString &text)
{
    if (field == u"nombre"_s)
        nombre = text;
    else
        top().fields[field] = text;
}

void Model::press()
{
    switch (top().kind) {
    case Kind::Login:
        if (top().fields[u"email"_s].isEmpty() || top().fields[u"pass"_s].isEmpty()) {
            top().msg = u"Completa los campos"_s;
            return;
        }
        return request("/api_login.php");
    case Kind::Registro:
        return register_();
    case Kind::Cotizar:
        return request("/api_cotizar.php");
    case Kind::Autos:
        return request("/api_auto.php");
    case Kind::Perfil:
        return request("/api_perfil.php");
    default:
        return;
    }
}

void Model::register_()
{
    for (const QString &field : {u"nom"_s, u"email"_s, u"direccion"_s, u"ciudad"_s, u"pass"_s}) {
        if (top().fields[field].trimmed().isEmpty()) {
            top().msg = u"Por favor completa todos los campos"_s;
            return;
        }
    }
    if (!allowed(top().fields[u"pass"_s].trimmed())) {
        top().msg = u"La contraseña debe incluir al menos una mayúscula y un carácter especial"_s;
        return;
    }
    request("/api_registro.php");
}

void Model::sendRecovery()
{
    top().alert = false;
    if (!top().fields[u"recuperarEmail"_s].isEmpty())
        request("/api_recuperar.php");
}

void Model::answer(qsizetype index, const Reply &reply)
{
    const Pending request = pending.takeAt(index);
    Screen &screen = *request.screen;
    if (request.path == "/api_login.php")
        signInAnswered(request, reply, u"Error de credenciales"_s);
    else if (request.path == "/api_registro.php")
        signInAnswered(request, reply, u"Error al registrar"_s);
    else if (request.path == "/api_recuperar.php")
        screen.msg = reply.present() && reply.message ? *reply.message : u"Solicitud procesada"_s;
    else if (request.path == "/api_paquetes.php")
        listingAnswered(screen, reply);
    else if (request.path == "/api_casillero.php")
        screen.info = reply.present() && reply.nombreCompleto ? *reply.nombreCompleto : u"Error"_s;
    else if (request.path == "/api_cotizar.php")
        quotationAnswered(screen, reply);
    else if (request.path == "/api_auto.php")
        screen.msg = reply.success() ? u"Solicitud enviada"_s : u"Error al enviar"_s;
    else
        screen.msg = reply.success() ? u"Perfil actualizado con éxito"_s : u"Error al actualizar"_s;
}

void Model::signInAnswered(const Pending &request, const Reply &reply, const QString &failure)
{
    if (!reply.success()) {
        request.screen->msg = reply.present() && reply.message ? *reply.message : failure;
        return;
    }
    const bool registration = request.screen->kind == Kind::Registro;
    setUser(idOf(reply.id));
    nombre = reply.nombre.value_or(registration ? request.sent[u"nom"_s].trimmed() : QString());
    email = registration ? request.sent[u"email"_s].trimmed() : request.screen->fields[u"email"_s];
}

void Model::listingAnswered(Screen &screen, const Reply &reply)
{
    screen.paquetes = reply.present() ? reply.paquetes.value_or(0) : 0;
    screen.cotizaciones = reply.present() ? reply.cotizaciones.value_or(0) : 0;
}

void Model::quotationAnswered(Screen &screen, const Reply &reply)
{
    screen.msg = reply.success() ? u"Enviado con éxito"_s : u"Error al cotizar"_s;
    if (reply.success()) {
        for (const QString &field : {u"peso"_s, u"valor"_s, u"descripcion"_s})
            screen.fields[field].clear();
    }
}
