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

const QList<Model::Page> &Model::pages()
{
    static const QList<Page> all{
        {Kind::Login, u"iniciarSesion"_s, {}, {}, "LoginView"},
        {Kind::Registro, u"registrar"_s, u"registro"_s, {}, "RegistroView"},
        {Kind::Dashboard, u"greeting"_s, {}, "/api_paquetes.php", "DashboardView"},
        {Kind::Casillero, u"info"_s, u"CasilleroTile"_s, "/api_casillero.php"},
        {Kind::Cotizar, u"peso"_s, u"CotizarTile"_s, {}, "CotizarView"},
        {Kind::Autos, u"marca"_s, u"AutosTile"_s, {}, "ImportarAutoView"},
        {Kind::Perfil, u"guardar"_s, u"PerfilTile"_s, {}, "PerfilView"},
        {Kind::Dev, u"sitio"_s, u"DevTile"_s},
        {Kind::Paquetes, u"rows"_s, u"paqueteCount"_s, "/api_paquetes.php"},
        {Kind::Cotizaciones, u"rows"_s, u"cotizacionCount"_s, "/api_paquetes.php"},
    };
    return all;
}

const Model::Page &Model::pageOf(Kind kind) { return *std::ranges::find(pages(), kind, &Page::kind); }

const Form &Model::formOf(Kind kind)
{
    static const Form none;
    static const Form search{"DashboardView", {}, {{u"trackingText"_s, {}}}, u"buscar"_s, {}, {}, {}, {}, {}, {}};
    const QByteArray &view = pageOf(kind).form;
    const auto found = std::ranges::find(forms(), view, &Form::view);
    return found != forms().end() ? *found : view == search.view ? search : none;
}

QStringList Model::fieldsOf(Kind kind)
{
    QStringList names;
    for (const Field &field : formOf(kind).fields)
        names.append(field.name);
    return names;
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
    if (const QByteArray &path = pageOf(top().kind).appears; !path.isEmpty())
        request(path);
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
    if (top().kind == Kind::Registro)
        return register_();
    if (top().kind == Kind::Login && (top().fields[u"email"_s].isEmpty() || top().fields[u"pass"_s].isEmpty()))
        top().msg = u"Completa los campos"_s;
    else if (const QByteArray path = formOf(top().kind).path; !path.isEmpty())
        request(path);
}

void Model::register_()
{
    for (const QString &field : fieldsOf(Kind::Registro)) {
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
    if (!top().fields[u"alertInput"_s].isEmpty())
        request("/api_recuperar.php");
}

void Model::answer(qsizetype index, const Reply &reply)
{
    const Pending request = pending.takeAt(index);
    Screen &screen = *request.screen;
    const Form &form = formOf(screen.kind);
    if (request.path == "/api_login.php" || request.path == "/api_registro.php") {
        signInAnswered(request, reply, form.failure);
    } else if (request.path == "/api_recuperar.php") {
        screen.msg = reply.present() && reply.message ? *reply.message : u"Solicitud procesada"_s;
    } else if (request.path == "/api_paquetes.php") {
        screen.paquetes = reply.present() ? reply.paquetes.value_or(0) : 0;
        screen.cotizaciones = reply.present() ? reply.cotizaciones.value_or(0) : 0;
    } else if (request.path == "/api_casillero.php") {
        screen.info = reply.present() && reply.nombreCompleto ? *reply.nombreCompleto : u"Error"_s;
    } else {
        screen.msg = reply.success() ? form.success : form.failure;
        if (reply.success() && screen.kind == Kind::Cotizar)
            screen.fields.clear();
    }
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

QList<Model::Shown> Model::shown() const
{
    const Screen &screen = top();
    QList<Shown> all{{u"msg"_s, "text", screen.msg},
                     {u"recuperarDialog"_s, "shown", screen.alert ? u"true"_s : QString()}};
    for (const QString &field : fieldsOf(screen.kind))
        all.append({field, "text", field == u"nombre"_s ? nombre : screen.fields.value(field)});
    switch (screen.kind) {
    case Kind::Dashboard:
        return all += {{u"greeting"_s, "text", u"Hola, "_s + nombre},
                       {u"paqueteCount"_s, "count", QString::number(screen.paquetes)},
                       {u"cotizacionCount"_s, "count", QString::number(screen.cotizaciones)}};
    case Kind::Casillero:
        return all += {u"info"_s, "text", screen.info};
    case Kind::Cotizar:
        return all += {u"tipo"_s, "selection", screen.tipo};
    case Kind::Paquetes:
        return all += {u"rows"_s, "count", QString::number(screen.paquetes)};
    case Kind::Cotizaciones:
        return all += {u"rows"_s, "count", QString::number(screen.cotizaciones)};
    default:
        return all;
    }
}
