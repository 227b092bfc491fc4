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

Action press(const QString &button, const std::function<void(Model &)> &predict)
{
    return {u"press "_s + button, [=](Device &device) { device.tap(button); }, predict};
}

Action type(const QString &field, const QString &text)
{
    return {u"type \"%1\" into %2"_s.arg(text, field), [=](Device &device) { device.type(field, text); },
            [=](Model &model) { model.type(field, text); }};
}

Action goBack(const Model &model, quint32 choice)
{
    const bool ownButton = model.top().kind == Kind::Casillero || model.top().kind == Kind::Dev;
    const QList<std::pair<QString, std::function<void(Device &)>>> ways{
        {u"Escape"_s, [](Device &device) { device.key(Qt::Key_Escape); }},
        {u"Alt+Left"_s, [](Device &device) { device.key(Qt::Key_Left, Qt::AltModifier); }},
        {u"a swipe"_s, [](Device &device) { device.swipeBack(); }},
        {u"the way back"_s, [=](Device &device) { device.tap(ownButton ? u"volver"_s : u"back"_s); }},
    };
    const auto &[name, way] = ways[choice % ways.size()];
    return {u"go back by "_s + name, way, [](Model &of) { of.pop(); }};
}

QList<Action> inAlert(const QString &text)
{
    const auto close = [](Model &model) { model.top().alert = false; };
    return {type(u"alertInput"_s, text),
            press(u"aceptar"_s, [](Model &model) { model.sendRecovery(); }),
            press(u"cancelar"_s, close),
            {u"Escape in the alert"_s, [](Device &device) { device.key(Qt::Key_Escape); }, close}};
}

QList<Action> onScreen(const Model &model, quint32 choice)
{
    const Kind kind = model.top().kind;
    QList<Action> all;
    const QString button = Model::formOf(kind).button;
    for (const QString &field : Model::fieldsOf(kind))
        all += type(field, someText(choice));
    // As likely as the typing, or few forms would ever be sent.
    for (int times = button.isEmpty() ? 0 : 3; times > 0; --times)
        all += press(button, [](Model &of) { of.press(); });
    for (const Model::Page &next : Model::pages()) {
        const Kind from = next.kind == Kind::Registro ? Kind::Login : Kind::Dashboard;
        if (kind == from && !next.entrance.isEmpty())
            all += press(next.entrance, [screen = next.kind](Model &of) { of.push(screen); });
    }
    if (kind == Kind::Login)
        all += press(u"recuperar"_s, [](Model &of) {
            of.top().alert = true;
            of.top().fields[u"alertInput"_s].clear();
        });
    if (kind == Kind::Dashboard) {
        all += press(u"cerrarSesion"_s, [](Model &of) { of.signOut(); });
        all += {u"scroll"_s, [](Device &device) { device.scroll(); }, [](Model &) {}};
    }
    if (kind == Kind::Cotizar)
        all += press(u"Marítimo"_s, [](Model &of) { of.top().tipo = u"Marítimo"_s; });
    return all;
}

} // namespace

QList<Action> actions(const Model &model, quint32 choice)
{
    QList<Action> all;
    for (qsizetype i = 0; i < model.pending.size(); ++i) {
        const Reply reply = someReply(model.pending[i].path, choice);
        const QString what = reply.lost ? u"lose"_s : u"answer with "_s + QString::fromUtf8(reply.bytes());
        all.append({u"%1 (%2, number %3)"_s.arg(what, QString::fromUtf8(model.pending[i].path)).arg(i),
                    [=](Device &device) { device.answer(i, reply); }, [=](Model &of) { of.answer(i, reply); }});
    }
    if (model.top().alert)
        return all + inAlert(someText(choice));
    all += onScreen(model, choice);
    if (model.stack.size() > 1)
        all += goBack(model, choice);
    return all;
}
