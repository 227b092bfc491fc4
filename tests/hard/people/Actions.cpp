#include "Actions.h"

using namespace Qt::StringLiterals;
using Kind = Model::Kind;

namespace {

QString someText(quint32 choice)
{
    static const QStringList texts{QString(), u"ana@x"_s, u" "_s,        u"Clave.1"_s,
                                   u"12.5"_s, u"Ñandú"_s, u"<b>x</b>"_s, u"Eva Moreno "_s};
    return texts[choice % texts.size()];
}

Reply someReply(const QByteArray &path, quint32 choice)
{
    Reply reply;
    const bool listing = path == "/api_paquetes.php";
    switch (choice % 7) {
    case 0:
        // The platform may repeat a GET whose connection dies.
        reply.lost = !listing;
        reply.readable = false;
        break;
    case 1:
        reply.readable = false;
        break;
    case 2:
        reply.status = u"error"_s;
        reply.message = u"No se puede"_s;
        break;
    case 3:
        reply.status = u"SUCCESS"_s;
        break;
    case 4:
        reply.status = u"success"_s;
        break;
    default:
        reply.status = u"success"_s;
        reply.id = choice % 2 ? u"42"_s : u"43"_s;
        if (choice % 3)
            reply.nombre = u"Ana"_s;
        reply.message = u"Listo"_s;
    }
    if (reply.readable && choice % 5 > 0) {
        reply.nombreCompleto = u"Ana MRV-42"_s;
        reply.paquetes = int(choice % 6);
        reply.cotizaciones = int(choice % 4);
    }
    return reply;
}

void addTyping(QList<Action> &all, const QStringList &fields, quint32 choice)
{
    for (const QString &field : fields) {
        const QString text = someText(choice);
        all.append({u"type \"%1\" into %2"_s.arg(text, field), [=](Device &device) { device.type(field, text); },
                    [=](Model &model) { model.type(field, text); }});
    }
}

void addPress(QList<Action> &all, const QString &button)
{
    // As likely as the typing, or few forms would ever be sent.
    const Action press{u"press "_s + button, [=](Device &device) { device.tap(button); },
                       [](Model &model) { model.press(); }};
    all += {press, press, press};
}

void addWaysBack(QList<Action> &all, const Model &model, quint32 choice)
{
    const bool ownButton = model.top().kind == Kind::Casillero || model.top().kind == Kind::Dev;
    const QList<std::pair<QString, std::function<void(Device &)>>> ways{
        {u"Escape"_s, [](Device &device) { device.key(Qt::Key_Escape); }},
        {u"Alt+Left"_s, [](Device &device) { device.key(Qt::Key_Left, Qt::AltModifier); }},
        {u"a swipe"_s, [](Device &device) { device.swipeBack(); }},
        {u"the way back"_s, [=](Device &device) { device.tap(ownButton ? u"volver"_s : u"back"_s); }},
    };
    const auto &[name, way] = ways[choice % ways.size()];
    all.append({u"go back by "_s + name, way, [](Model &of) { of.pop(); }});
}

void addAlert(QList<Action> &all, quint32 choice)
{
    const QString text = someText(choice);
    const auto close = [](Model &model) { model.top().alert = false; };
    all.append({u"type \"%1\" into the alert"_s.arg(text),
                [=](Device &device) { device.type(u"alertInput"_s, text); },
                [=](Model &model) { model.type(u"recuperarEmail"_s, text); }});
    all.append({u"send the alert"_s, [](Device &device) { device.tap(u"aceptar"_s); },
                [](Model &model) { model.sendRecovery(); }});
    all.append({u"cancel the alert"_s, [](Device &device) { device.tap(u"cancelar"_s); }, close});
    all.append({u"Escape in the alert"_s, [](Device &device) { device.key(Qt::Key_Escape); }, close});
}

void addSignIn(QList<Action> &all, quint32 choice)
{
    addTyping(all, {u"email"_s, u"pass"_s}, choice);
    addPress(all, u"iniciarSesion"_s);
    all.append({u"open the recovery"_s, [](Device &device) { device.tap(u"recuperar"_s); },
                [](Model &model) {
                    model.top().alert = true;
                    model.top().fields[u"recuperarEmail"_s].clear();
                }});
    all.append({u"open the registration"_s, [](Device &device) { device.tap(u"registro"_s); },
                [](Model &model) { model.push(Kind::Registro); }});
}

void addHome(QList<Action> &all, quint32 choice)
{
    static const QList<std::pair<QString, Kind>> entrances{
        {u"CasilleroTile"_s, Kind::Casillero},
        {u"CotizarTile"_s, Kind::Cotizar},
        {u"AutosTile"_s, Kind::Autos},
        {u"PerfilTile"_s, Kind::Perfil},
        {u"DevTile"_s, Kind::Dev},
        {u"paqueteCount"_s, Kind::Paquetes},
        {u"cotizacionCount"_s, Kind::Cotizaciones},
    };
    for (const auto &[entrance, kind] : entrances)
        all.append({u"open "_s + entrance, [=](Device &device) { device.tap(entrance); },
                    [=](Model &model) { model.push(kind); }});
    all.append({u"sign out"_s, [](Device &device) { device.tap(u"cerrarSesion"_s); },
                [](Model &model) { model.signOut(); }});
    all.append({u"scroll"_s, [](Device &device) { device.scroll(); }, [](Model &) {}});
    addTyping(all, {u"trackingText"_s}, choice);
    all.append({u"search"_s, [](Device &device) { device.tap(u"buscar"_s); }, [](Model &) {}});
}

void addForm(QList<Action> &all, Kind kind, quint32 choice)
{
    switch (kind) {
    case Kind::Registro:
        addTyping(all, {u"nom"_s, u"email"_s, u"direccion"_s, u"ciudad"_s, u"pass"_s}, choice);
        return addPress(all, u"registrar"_s);
    case Kind::Cotizar:
        addTyping(all, {u"peso"_s, u"valor"_s, u"descripcion"_s}, choice);
        all.append({u"by sea"_s, [](Device &device) { device.tap(u"Marítimo"_s); },
                    [](Model &model) { model.top().tipo = u"Marítimo"_s; }});
        return addPress(all, u"enviar"_s);
    case Kind::Autos:
        addTyping(all, {u"marca"_s, u"modelo"_s, u"anio"_s, u"ubicacion"_s}, choice);
        return addPress(all, u"enviar"_s);
    case Kind::Perfil:
        addTyping(all, {u"nombre"_s, u"email"_s}, choice);
        return addPress(all, u"guardar"_s);
    default:
        return;
    }
}

void addReplies(QList<Action> &all, const Model &model, quint32 choice)
{
    for (qsizetype i = 0; i < model.pending.size(); ++i) {
        const Reply reply = someReply(model.pending[i].path, choice);
        const QString what = reply.lost ? u"lose"_s : u"answer with "_s + QString::fromUtf8(reply.bytes());
        all.append({u"%1 (%2, number %3)"_s.arg(what, QString::fromUtf8(model.pending[i].path)).arg(i),
                    [=](Device &device) { device.answer(i, reply); }, [=](Model &of) { of.answer(i, reply); }});
    }
}

} // namespace

QList<Action> actions(const Model &model, quint32 choice)
{
    QList<Action> all;
    addReplies(all, model, choice);
    if (model.top().alert) {
        addAlert(all, choice);
        return all;
    }
    if (model.top().kind == Kind::Login)
        addSignIn(all, choice);
    else if (model.top().kind == Kind::Dashboard)
        addHome(all, choice);
    else
        addForm(all, model.top().kind, choice);
    if (model.stack.size() > 1)
        addWaysBack(all, model, choice);
    return all;
}
