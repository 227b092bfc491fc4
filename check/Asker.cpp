#include "Asker.h"

using namespace Qt::StringLiterals;

namespace {

/// A shorter one may stand in a reply by accident.
constexpr qsizetype tellingPassword = 6;

} // namespace

namespace Check {

Exchange Asker::send(const QString &endpoint, const HttpRequest &request)
{
    m_progress(endpoint);
    m_diagnosis.findings.setEndpoint(endpoint);
    Exchange exchange = sendAndWait(request, m_order.silence);
    exchange.endpoint = endpoint;
    if (m_diagnosis.exchanges.isEmpty() && !exchange.connected)
        m_diagnosis.reached = false;
    return exchange;
}

void Asker::note(Exchange exchange)
{
    Findings &findings = m_diagnosis.findings;
    judgeTransport(exchange, findings);
    m_lastBody = std::exchange(exchange.reply.body, {});
    if (m_order.password.size() >= tellingPassword && m_lastBody.contains(m_order.password.toUtf8()))
        findings.add(Severity::Warning, u"the reply"_s, u"holds the customer's password"_s,
                     u"Never send it back, and keep a hash of it only."_s);
    m_diagnosis.exchanges.append(std::move(exchange));
}

} // namespace Check
