#include "Asker.h"

using namespace Qt::StringLiterals;

namespace {

/// A reply may contain a shorter password by accident.
constexpr qsizetype shortestSearchedPassword = 6;

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
    if (m_order.password.size() >= shortestSearchedPassword && m_mask.finds(QString::fromUtf8(m_lastBody)))
        findings.add(Severity::Warning, u"the reply"_s, u"contains the customer's password"_s,
                     u"Never send it back, and keep a hash of it only."_s);
    m_diagnosis.exchanges.append(std::move(exchange));
}

} // namespace Check
