#include "Rules.h"

#include "Absent.h"
#include "Json.h"
#include "PaqueteIdentity.h"
#include "ParseUserId.h"
#include "Text.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Check::Findings;
using Check::Place;
using Check::quoted;
using Check::Severity;

constexpr qsizetype largeAvatar = qsizetype(64) * 1024;

const QString success = u"success"_s;

Place key(const char *name) { return {{}, -1, QString::fromLatin1(name)}; }

/// Returns whether the word means success, including words that the app does not accept.
bool meansSuccess(const QString &status)
{
    static const QStringList words{success, u"ok"_s,      u"exito"_s, u"éxito"_s, u"true"_s,
                                   u"1"_s,  u"exitoso"_s, u"done"_s,  u"200"_s};
    return words.contains(status.trimmed().toLower());
}

/// Returns whether the status is "success". Adds a finding otherwise, unless it is a plain refusal.
bool judgeStatus(const std::optional<QString> &status, Findings &to)
{
    const QString remedy = u"Send \"status\": \"success\", in small letters, when it went well."_s;
    if (status == success)
        return true;
    if (!status)
        to.add(Severity::Fault, key("status"), u"absent, which counts as a failure"_s, remedy);
    else if (meansSuccess(*status))
        to.add(Severity::Fault, key("status"), u"%1 counts as a failure"_s.arg(quoted(*status)), remedy);
    return false;
}

QString idRemedy() { return u"Send the customer's number as text: \"id\": \"42\"."_s; }

void judgeId(const std::optional<QString> &id, Findings &to)
{
    const qint64 number = parseUserId(id);
    if (number == 0)
        to.add(Severity::Fault, key("id"), (id ? quoted(*id) : u"absent"_s) + u", signs nobody in"_s, idRemedy());
    else if (number < 0)
        to.add(Severity::Warning, key("id"), quoted(*id) + u", a negative number, signs in"_s, idRemedy());
    else if (*id != QString::number(number))
        to.add(Severity::Note, key("id"), u"%1 signs in as %2"_s.arg(quoted(*id)).arg(number), idRemedy());
}

QString shown(QStringView absent) { return quoted(absent.toString()); }

bool isBlank(const std::optional<QString> &text) { return text && text->trimmed().isEmpty(); }

/// Adds a finding if a field of a row is absent or blank.
void judgeField(const Place &row, const char *name, const std::optional<QString> &value, const QString &fallback,
                Severity severity, Findings &to)
{
    const QString remedy = severity == Severity::Note ? QString() : u"Send the package's tracking number."_s;
    const Place place = row.inside(QString::fromLatin1(name));
    if (!value)
        to.add(severity, place, u"absent, shown as "_s + fallback, remedy);
    else if (isBlank(value))
        to.add(severity, place, u"empty, shown as nothing"_s, remedy);
}

void judgePaquete(const DashboardResponse::Paquete &row, const Place &place, Findings &to)
{
    judgeField(place, "tracking", row.tracking, shown(Absent::tracking) + u"; a tap on the row opens nothing"_s,
               Severity::Warning, to);
    judgeField(place, "descripcion", row.descripcion, shown(Absent::descripcion), Severity::Note, to);
    judgeField(place, "estado", row.estado, shown(Absent::estadoPaquete), Severity::Note, to);
    if (row.tracking && row.tracking->trimmed() == Absent::tracking)
        to.add(Severity::Note, place.inside(u"tracking"_s),
               shown(Absent::tracking) + u": a tap on the row opens nothing"_s, {});
}

void judgeCotizacion(const DashboardResponse::Cotizacion &row, const Place &place, Findings &to)
{
    judgeField(place, "origen", row.origen, shown(Absent::origen), Severity::Note, to);
    judgeField(place, "descripcion", row.descripcion, shown(Absent::descripcion) + u" or "_s + shown(Absent::titulo),
               Severity::Note, to);
    judgeField(place, "estado", row.estado, shown(Absent::estadoCotizacion), Severity::Note, to);
}

/// Adds a note about rows with the same identity.
void judgeIdentities(const QList<DashboardResponse::Paquete> &rows, Findings &to)
{
    QHash<QString, QList<qsizetype>> groups;
    QStringList order;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const std::optional<QString> &identity = identityOf(rows[i]);
        // An absent number differs from every text.
        const QString name = identity ? u'+' + *identity : u"-"_s;
        if (!groups.contains(name))
            order += name;
        groups[name].append(i);
    }
    for (const QString &name : std::as_const(order)) {
        if (groups[name].size() < 2)
            continue;
        const QString what = name == u"-"_s
                                 ? u"these rows without a number share one identity; each is shown"_s
                                 : u"these rows share the number %1; each is shown"_s.arg(quoted(name.sliced(1), 40));
        for (const qsizetype row : std::as_const(groups[name]))
            to.add(Severity::Note, Place{u"paquetes"_s, row, u"tracking"_s}, what,
                   u"A tracking number should stand for one package."_s);
    }
}

/// Returns whether the row has none of its fields.
template <class R>
bool isBare(const R &row)
{
    bool bare = true;
    boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) { bare = bare && !(row.*field.pointer); });
    return bare;
}

template <class R, class Judge>
void judgeRows(const std::optional<QList<R>> &rows, const char *name, const QString &shown, bool mayBeEmpty,
               Judge judge, Findings &to)
{
    const QString list = QString::fromLatin1(name);
    if (!rows)
        to.add(Severity::Fault, key(name), u"absent or null, shown as "_s + shown,
               u"Send a list always, also with an error status: [] for a customer who has nothing."_s);
    else if (rows->isEmpty() && !mayBeEmpty)
        to.add(Severity::Fault, key(name), u"empty, shown as "_s + shown,
               u"Check with a test customer who has some, or with --empty if this one has nothing."_s);
    else if (!rows->isEmpty() && std::ranges::all_of(*rows, isBare<R>)) {
        to.add(Severity::Fault, key(name), u"no row has a key that the app reads"_s,
               u"Write the keys as the app does; letter case and underscores count."_s);
        return;
    }
    for (qsizetype i = 0; rows && i < rows->size(); ++i)
        judge(rows->at(i), Place::rowOf(list, i), to);
}

} // namespace

namespace Check {

bool judgeLogin(const LoginResponse &reply, SignIn kind, Findings &findings)
{
    if (judgeStatus(reply.status, findings)) {
        judgeId(reply.id, findings);
        // After a registration without a name in the reply, the app uses the name that was typed.
        if (isBlank(reply.nombre) || (!reply.nombre && kind == SignIn::Existing))
            findings.add(Severity::Warning, key("nombre"),
                         u"%1, so that the greeting is \"Hola, \""_s.arg(reply.nombre ? u"empty"_s : u"absent"_s),
                         u"Send the customer's name."_s);
        return true;
    }
    const bool refused = reply.status && !meansSuccess(*reply.status);
    if (refused && (!reply.message || isBlank(reply.message)))
        findings.add(Severity::Warning, key("message"),
                     reply.message ? u"empty: the customer sees nothing"_s
                                   : u"absent: the customer sees \"%1\""_s.arg(
                                         kind == SignIn::New ? u"Error al registrar"_s : u"Error de credenciales"_s),
                     u"Say in \"message\", in Spanish, why it was refused."_s);
    return !refused;
}

void judgeListing(const DashboardResponse &reply, bool mayBeEmpty, Findings &findings)
{
    if (reply.status != success)
        findings.add(Severity::Note, key("status"),
                     (reply.status ? quoted(*reply.status) : u"absent"_s) + u", which these screens ignore"_s, {});
    if (reply.avatar && reply.avatar->size() > largeAvatar)
        findings.add(Severity::Note, key("avatar"),
                     u"%1 in each listing, which no screen uses"_s.arg(counted(reply.avatar->size(), u"character"_s)),
                     u"Leave it out: the app shows the photo that it keeps itself."_s);
    judgeRows(reply.paquetes, "paquetes", u"\"0 Paquetes\" and a blank list"_s, mayBeEmpty, judgePaquete, findings);
    judgeRows(reply.cotizaciones, "cotizaciones", u"\"0 Cotizaciones\" and \"No tienes cotizaciones registradas.\""_s,
              mayBeEmpty, judgeCotizacion, findings);
    if (reply.paquetes)
        judgeIdentities(*reply.paquetes, findings);
}

void judgeCasillero(const CasilleroResponse &reply, Findings &findings)
{
    const QString remedy = u"Send the name for the parcels in \"nombreCompleto\"."_s;
    if (!reply.nombreCompleto)
        findings.add(Severity::Fault, key("nombreCompleto"),
                     u"absent, shown as \"Error\""_s +
                         (reply.message ? u" instead of the message %1"_s.arg(quoted(*reply.message)) : QString()),
                     remedy);
    else if (isBlank(reply.nombreCompleto))
        findings.add(Severity::Warning, key("nombreCompleto"), u"empty, shown as nothing"_s, remedy);
    if (reply.status != success)
        findings.add(Severity::Note, key("status"),
                     (reply.status ? quoted(*reply.status) : u"absent"_s) + u", which this screen ignores"_s, {});
}

void judgeForm(const StandardResponse &reply, bool messageShown, Findings &findings)
{
    const bool plain = reply.status && reply.status != success && !meansSuccess(*reply.status);
    if (judgeStatus(reply.status, findings) || !plain)
        return;
    const QString message = reply.message ? u", saying %1"_s.arg(quoted(*reply.message)) : QString();
    findings.add(Severity::Fault, key("status"), u"%1: the service refuses%2"_s.arg(quoted(*reply.status), message),
                 messageShown ? u"See why the service refuses."_s
                              : u"See why the service refuses; the customer does not see its message."_s);
}

} // namespace Check
