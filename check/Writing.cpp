#include "Endpoints.h"
#include "Rules.h"
#include "Text.h"
#include "Visit.h"

#include <QRandomGenerator>

#include <algorithm>

using namespace Qt::StringLiterals;

// The requests that change the server's data. Each form is sent once.

namespace {

/// Returns an address that most mail servers deliver to the same mailbox:
/// "ana+check-20260102-030405-7f3a@example.com".
QString newAddress(const QString &email, const QString &stamp)
{
    const qsizetype at = email.lastIndexOf(u'@');
    return at < 0 ? email + u"+check-"_s + stamp : email.first(at) + u"+check-"_s + stamp + email.sliced(at);
}

/// Returns a photo: a PNG picture of 16 by 16 pixels.
QByteArray smallPhoto()
{
    return QByteArray::fromBase64(
        "iVBORw0KGgoAAAANSUhEUgAAABAAAAAQCAIAAACQkWg2AAAARklEQVR42mNkYFggwMBAPGJkECBVgwKpGgxI1eBAqoYA"
        "UjUkkKqhgFQNDaRqmECqhgWkathAqoYDpGq4QKqGB6Rq+ECaBgBK2SCRlrI0egAAAABJRU5ErkJggg==");
}

/// Returns the same picture as a file of the largest size that the app accepts; readers of PNG skip what follows its
/// end. Like a photo, the file cannot be compressed.
QByteArray largePhoto()
{
    constexpr qsizetype largestFile = qsizetype(64) * 1024 * 1024; // as in ui/PhotoFile.cpp
    QByteArray file = smallPhoto();
    QList<quint32> noise((largestFile - file.size()) / qsizetype(sizeof(quint32)) + 1);
    QRandomGenerator(1).generate(noise.begin(), noise.end());
    file.append(reinterpret_cast<const char *>(noise.constData()), largestFile - file.size());
    return file;
}

/// Returns the screen that fails, if one does.
Check::Screen worse(const Check::Screen &one, const Check::Screen &other)
{
    return one.state == Check::Screen::State::Fails ? one : other;
}

} // namespace

namespace Check {

QString Visit::anyPassword()
{
    auto &random = *QRandomGenerator::system();
    return u"Aa_"_s + QString::number(random.generate64(), 36) + QString::number(random.generate64(), 36);
}

void Visit::write()
{
    const QStringList forCustomer{ScreenName::cotizar(), ScreenName::importarAuto(), ScreenName::perfil()};
    const QStringList others{ScreenName::recuperar(), ScreenName::registro()};
    if (!m_order.write) {
        for (const QString &name : forCustomer + others)
            skip(name, u"--write tries it"_s);
        return;
    }
    if (m_diagnosis.refused) {
        for (const QString &name : forCustomer + others)
            skip(name, u"the sign-in was refused"_s);
        return;
    }
    if (m_id != 0) {
        quote();
        importAuto();
        saveProfile();
        lookAgain();
    } else {
        for (const QString &name : forCustomer)
            skip(name, u"nobody is signed in"_s);
    }
    recover();
    registerCustomer();
}

void Visit::quote()
{
    // Include characters that customers type: accents, quotation marks, a slash and a backslash.
    m_description = u"Prueba de "_s + m_mark + u": ñandú, 10\" x 5' / \\"_s;
    const CotizacionRequest request{.user_id = m_id,
                                    .tipo = u"aereo"_s,
                                    .origen = u"Miami, USA"_s,
                                    .destino = u"Panamá"_s,
                                    .peso = 2.5,
                                    .valor = 40,
                                    .descripcion = m_description};
    const auto reply = m_asker.post<StandardResponse>(Endpoints::cotizar, request);
    if (reply)
        judgeForm(*reply, false, m_diagnosis.findings);
    look(cotizarScreen(reply));
    m_quoted = reply && reply->status == u"success"_s;
    noteCreated(u"a quotation for customer %1: %2"_s.arg(m_id).arg(quoted(m_description, 100)),
                reply ? reply->status : std::nullopt, reply.has_value());
}

void Visit::importAuto()
{
    const AutoRequest request{
        .user_id = m_id, .marca = u"Prueba"_s, .modelo = m_mark, .anio = u"2019"_s, .ubicacion = u"Panamá"_s};
    const auto reply = m_asker.post<StandardResponse>(Endpoints::importarAuto, request);
    if (reply)
        judgeForm(*reply, false, m_diagnosis.findings);
    look(importarAutoScreen(reply));
    noteCreated(u"a vehicle request for customer %1: Prueba %2"_s.arg(m_id).arg(m_mark),
                reply ? reply->status : std::nullopt, reply.has_value());
}

void Visit::saveProfile()
{
    if (!m_nombre || m_nombre->trimmed().isEmpty()) {
        skip(ScreenName::perfil(), u"the sign-in gave no name, and saving would erase the one there is"_s);
        return;
    }
    Screen screen = savePhoto(smallPhoto());
    if (m_order.largestPhoto)
        screen = worse(screen, savePhoto(largePhoto()));
    // Last the request of an unchanged form; the app always leaves the password empty.
    look(worse(screen, savePhoto({})));
    signInAgain();
}

Screen Visit::savePhoto(const QByteArray &photo)
{
    const PerfilRequest request{.user_id = m_id,
                                .nombre = *m_nombre,
                                .email = {},
                                .password = {},
                                .avatar_base64 = QString::fromLatin1(photo.toBase64())};
    const auto reply = m_asker.post<StandardResponse>(Endpoints::perfil, request);
    if (!photo.isEmpty() && reply && reply->status == u"success"_s)
        m_photo = request.avatar_base64;
    if (reply)
        judgeForm(*reply, false, m_diagnosis.findings);
    noteCreated(u"the profile of customer %1, saved with the name that it had, %2, and %3"_s.arg(
                    QString::number(m_id), quoted(*m_nombre),
                    photo.isEmpty() ? u"no photo, which keeps the old one"_s
                                    : u"a photo of %1"_s.arg(counted(photo.size(), u"byte"_s))),
                reply ? reply->status : std::nullopt, reply.has_value());
    return perfilScreen(reply);
}

/// Detects a service that stores the profile's empty password or e-mail, and so locks the customer out.
void Visit::signInAgain()
{
    const LoginRequest request{.email = m_order.email, .password = m_order.password};
    const auto reply = m_asker.post<LoginResponse>(Endpoints::login, request);
    const bool signsIn = loginScreen(reply).state == Screen::State::Works;
    const QString remedy =
        u"An empty password, e-mail or photo means that it was not changed: keep the old one. The app sends the "
        "password empty always."_s;
    if (!signsIn)
        m_diagnosis.findings.add(Severity::Fault, u"after "_s + Endpoints::perfil,
                                 u"the customer can no longer sign in"_s, remedy);
    else if (reply->nombre != m_nombre)
        m_diagnosis.findings.add(Severity::Warning, u"after "_s + Endpoints::perfil,
                                 u"the name is no longer the one that was saved"_s,
                                 u"Store the text as it is sent, in UTF-8."_s);
}

void Visit::lookAgain()
{
    if (!m_quoted && m_photo.isEmpty())
        return;
    const auto listing = m_asker.listing(m_id).record;
    if (!listing)
        return;
    if (!m_photo.isEmpty())
        lookForPhoto(*listing);
    if (m_quoted)
        lookForQuote(listing->cotizaciones.value_or(QList<DashboardResponse::Cotizacion>()));
}

void Visit::lookForPhoto(const DashboardResponse &listing)
{
    const QString avatar = listing.avatar.value_or(QString());
    m_diagnosis.findings.add(Severity::Note, u"after "_s + Endpoints::perfil,
                             avatar.isEmpty() ? u"the listing has no avatar"_s
                             : avatar == m_photo
                                 ? u"the listing's avatar is the photo that was saved"_s
                                 : u"the listing's avatar is not the photo that was saved: "_s + quoted(avatar, 40),
                             u"No screen uses it: the app shows the photo that it keeps itself."_s);
}

void Visit::lookForQuote(const QList<DashboardResponse::Cotizacion> &rows)
{
    const auto found = [&](const auto &test) { return std::ranges::any_of(rows, test); };
    if (found([&](const auto &row) { return row.descripcion == m_description; }))
        return;
    if (found([&](const auto &row) { return row.descripcion && row.descripcion->contains(m_mark); }))
        m_diagnosis.findings.add(Severity::Warning, u"after "_s + Endpoints::cotizar,
                                 u"the quotation's description differs from the text that was sent"_s,
                                 u"Store the text as it is sent, in UTF-8, without escaping it for HTML or SQL."_s);
    else
        m_diagnosis.findings.add(Severity::Warning, u"after "_s + Endpoints::cotizar,
                                 u"the quotation is not in the listing"_s,
                                 u"Nothing to do if it appears after somebody has processed it."_s);
}

void Visit::recover()
{
    const auto reply = m_asker.post<StandardResponse>(Endpoints::recuperar, RecuperarRequest{.email = m_order.email});
    if (reply)
        judgeForm(*reply, true, m_diagnosis.findings);
    look(recuperarScreen(reply));
    noteCreated(u"a request to reset the password of %1"_s.arg(harmless(m_order.email)),
                reply ? reply->status : std::nullopt, reply.has_value());
}

void Visit::registerCustomer()
{
    const QString email = m_order.newEmail.isEmpty() ? newAddress(m_order.email, m_stamp) : m_order.newEmail;
    const RegistroRequest request{.nombre = u"Prueba Ñandú"_s,
                                  .email = email,
                                  .password = anyPassword(),
                                  .direccion = m_mark,
                                  .ciudad = u"Panamá"_s};
    const auto reply = m_asker.post<LoginResponse>(Endpoints::registro, request);
    if (reply && !judgeLogin(*reply, SignIn::New, m_diagnosis.findings))
        m_diagnosis.findings.add(Severity::Fault, Place{{}, -1, u"status"_s},
                                 u"%1: the service refuses%2"_s.arg(
                                     quoted(reply->status.value_or(QString())),
                                     reply->message ? u", saying %1"_s.arg(quoted(*reply->message)) : QString()),
                                 u"See why it refuses; --new-email registers another address."_s);
    look(registroScreen(reply));
    const QString number = reply && reply->id ? u", number %1"_s.arg(harmless(*reply->id)) : QString();
    noteCreated(u"a customer %1%2, with a password that nobody knows"_s.arg(harmless(email), number),
                reply ? reply->status : std::nullopt, reply.has_value());
}

void Visit::noteCreated(const QString &what, const std::optional<QString> &status, bool readable)
{
    if (status == u"success"_s)
        m_diagnosis.created += what;
    else if (!readable)
        m_diagnosis.created += u"perhaps "_s + what + u" (there is no readable reply)"_s;
    else
        m_diagnosis.created += u"perhaps "_s + what + u" (the reply says that it failed)"_s;
}

} // namespace Check
