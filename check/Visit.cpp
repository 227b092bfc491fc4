#include "Visit.h"

#include "Endpoints.h"
#include "ParseUserId.h"
#include "Rules.h"

using namespace Qt::StringLiterals;

namespace Check {

Visit::Visit(Order order, std::function<void(const QString &)> progress)
    : m_order(std::move(order)), m_asker(m_order, m_diagnosis, std::move(progress)),
      m_mark(u"marovenda-check "_s + QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd-HHmmss"_s))
{
}

Diagnosis Visit::run()
{
    signIn();
    if (m_diagnosis.reached) {
        read();
        write();
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
    Json::Reading reading;
    simdjson::dom::parser parser;
    Json::Element root;
    if (m_substitute || m_diagnosis.refused ||
        !Json::parse(QByteArrayView(m_asker.lastBody()), reading, parser, root))
        return;
    int64_t number = 0;
    std::string_view text;
    const auto id = root["id"];
    if (id.get(number) != simdjson::SUCCESS && id.get(text) == simdjson::SUCCESS)
        number = parseUserId(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).trimmed());
    if (number != 0)
        m_substitute = number;
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
        judgeListing(*replaced, m_diagnosis.findings);
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

} // namespace Check
