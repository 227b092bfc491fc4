#include "Visit.h"

#include "Endpoints.h"
#include "ParseUserId.h"
#include "Rules.h"

#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

/// What a reply to a sign-in says, even if the app cannot use it.
struct RawLogin {
    bool success = false;
    /// 0 if there is none.
    qint64 id = 0;
};

RawLogin readLogin(const QByteArray &body)
{
    Json::Reading reading;
    simdjson::dom::parser parser;
    Json::Element root;
    if (!Json::parse(QByteArrayView(body), reading, parser, root))
        return {};
    int64_t id = 0;
    std::string_view text;
    if (root["id"].get(id) != simdjson::SUCCESS && root["id"].get(text) == simdjson::SUCCESS)
        id = parseUserId(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).trimmed());
    return {root["status"].get(text) == simdjson::SUCCESS && text == "success", id};
}

} // namespace

namespace Check {

Visit::Visit(Order order, std::function<void(const QString &)> progress)
    : m_order(std::move(order)), m_progress(std::move(progress)), m_asker(m_order, m_diagnosis, m_progress),
      m_stamp(QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd-HHmmss-"_s) +
              QUuid::createUuid().toString(QUuid::Id128).first(4)),
      m_mark(u"marovenda-check "_s + m_stamp)
{
}

Diagnosis Visit::run()
{
    signIn();
    if (m_diagnosis.reached) {
        read();
        write();
        tryWrongPassword();
    }
    return std::move(m_diagnosis);
}

void Visit::signIn()
{
    const LoginRequest request{.email = m_order.email, .password = m_order.password};
    const auto reply = m_asker.post<LoginResponse>(Endpoints::login, request);
    if (!m_diagnosis.reached)
        return;
    if (reply)
        m_diagnosis.refused = !judgeLogin(*reply, SignIn::Existing, m_diagnosis.findings);
    if (reply && reply->status == u"success"_s) {
        m_id = parseUserId(reply->id);
        m_nombre = reply->nombre;
    }
    look(loginScreen(reply));
    if (m_id == 0)
        lookForId();
}

/// Looks for a number that allows the check to continue, although the app cannot use it.
void Visit::lookForId()
{
    m_substitute = m_order.id;
    const qint64 id = readLogin(m_asker.lastBody()).id;
    if (!m_substitute && !m_diagnosis.refused && id != 0)
        m_substitute = id;
}

void Visit::read()
{
    if (m_id != 0 || m_substitute) {
        readFor(m_id != 0 ? m_id : *m_substitute);
        return;
    }
    for (const auto &name :
         {ScreenName::dashboard(), ScreenName::misPaquetes(), ScreenName::misCotizaciones(), ScreenName::casillero()})
        skip(name, u"nobody is signed in; --id N continues as customer N"_s);
}

void Visit::readFor(qint64 id)
{
    const auto [listing, replaced] = m_asker.listing(id);
    if (replaced)
        judgeListing(*replaced, m_order.empty, m_diagnosis.findings);
    look(dashboardScreen(listing, m_nombre.value_or(QString())));
    look(misPaquetesScreen(listing));
    look(misCotizacionesScreen(listing));

    const auto casillero =
        m_asker.post<CasilleroResponse>(Endpoints::casillero, CasilleroRequest{.user_id = QString::number(id)});
    if (casillero)
        judgeCasillero(*casillero, m_diagnosis.findings);
    look(casilleroScreen(casillero));

    for (qsizetype i = 1; m_id == 0 && i < m_diagnosis.screens.size(); ++i)
        m_diagnosis.screens[i].remark = u"for customer %1, once the sign-in works"_s.arg(id);
}

/// Detects a service that accepts any password. One attempt, since a service may lock the customer out after several.
void Visit::tryWrongPassword()
{
    if (m_id == 0 && !m_substitute)
        return;
    // The form of this reply is not judged again.
    Diagnosis attempt;
    Asker asker(m_order, attempt, m_progress);
    const auto reply =
        asker.post<LoginResponse>(Endpoints::login, LoginRequest{.email = m_order.email, .password = anyPassword()});
    m_diagnosis.findings.setEndpoint(Endpoints::login);
    const RawLogin answer = readLogin(asker.lastBody());
    if (answer.success && answer.id != 0)
        m_diagnosis.findings.add(
            Severity::Fault, u"a wrong password"_s, u"accepted: whoever knows a customer's e-mail signs in"_s,
            u"Compare the password with the stored hash (PHP: password_verify), and refuse others."_s);
    else if (!reply && !attempt.findings.sorted().isEmpty())
        m_diagnosis.findings.add(
            Severity::Warning, u"a wrong password"_s,
            u"the app cannot read the refusal (%1: %2), and shows \"Error de credenciales\""_s.arg(
                attempt.findings.sorted()[0].where(), attempt.findings.sorted()[0].what),
            u"Refuse with JSON: \"status\": \"error\", and the reason in \"message\"."_s);
    m_diagnosis.exchanges += attempt.exchanges;
}

} // namespace Check
