#pragma once

#include "Diagnosis.h"
#include "Endpoints.h"
#include "Examine.h"
#include "Mask.h"
#include "ServiceRequests.h"
#include "Text.h"

#include <concepts>
#include <functional>

namespace Check {

/// Returns the record as JSON for the report, with its password replaced by "(hidden)", and a photo by its size.
template <Record R>
QByteArray shownBody(R record)
{
    boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) {
        if constexpr (std::same_as<std::remove_cvref_t<decltype(record.*field.pointer)>, QString>) {
            QString &value = record.*field.pointer;
            if (std::string_view(field.name) == "password" && !value.isEmpty())
                value = QStringLiteral("(hidden)");
            if (std::string_view(field.name) == "avatar_base64" && !value.isEmpty())
                value = QStringLiteral("(%1)").arg(counted(value.size(), QStringLiteral("character")));
        }
    });
    return Json::write(record).value_or(QByteArray());
}

/// Sends requests to the service as the app does, one after the other. Adds each exchange and its findings to a
/// diagnosis, and returns what the app would receive.
class Asker {
public:
    /// Calls `progress` with the endpoint before each request.
    Asker(const Order &order, Diagnosis &diagnosis, std::function<void(const QString &)> progress)
        : m_order(order), m_mask(order.password), m_diagnosis(diagnosis), m_progress(std::move(progress))
    {
    }

    template <Record Reply, Record Body>
    std::optional<Reply> post(const QString &endpoint, const Body &body)
    {
        const QByteArray bytes = Json::write(body).value_or(QByteArray());
        return ask<Reply>(endpoint, ServiceRequests::post(m_order.base, endpoint, bytes), shownBody(body)).record;
    }

    ReadReply<DashboardResponse> listing(qint64 id)
    {
        return ask<DashboardResponse>(Endpoints::paquetes, ServiceRequests::listing(m_order.base, id), {});
    }

    /// Returns the body of the last reply.
    const QByteArray &lastBody() const { return m_lastBody; }

private:
    template <Record Reply>
    ReadReply<Reply> ask(const QString &endpoint, const std::optional<HttpRequest> &request,
                         const QByteArray &shownBody)
    {
        if (!request)
            return {};
        Exchange exchange = send(endpoint, *request);
        exchange.shownBody = shownBody;
        auto read = readReply<Reply>(exchange.reply.body, m_diagnosis.findings);
        exchange.usable = read.record.has_value();
        note(std::move(exchange));
        return read;
    }

    Exchange send(const QString &endpoint, const HttpRequest &request);
    void note(Exchange exchange);

    const Order &m_order;
    const Mask m_mask;
    Diagnosis &m_diagnosis;
    std::function<void(const QString &)> m_progress;
    QByteArray m_lastBody;
};

} // namespace Check
