#pragma once

#include "Diagnosis.h"
#include "Endpoints.h"
#include "Examine.h"
#include "ServiceRequests.h"

#include <concepts>
#include <functional>

namespace Check {

/// The record as JSON with its password, if it has one, put out of sight.
template <Record R>
QByteArray withoutPassword(R record)
{
    boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) {
        if constexpr (std::same_as<std::remove_cvref_t<decltype(record.*field.pointer)>, QString>) {
            QString &value = record.*field.pointer;
            if (std::string_view(field.name) == "password" && !value.isEmpty())
                value = QStringLiteral("(hidden)");
        }
    });
    return Json::write(record).value_or(QByteArray());
}

/// Asks the service one thing after the other as the app does, notes each exchange in a diagnosis and what is to be
/// said of it, and hands out what the app would get.
class Asker {
public:
    /// `progress` is told each endpoint before it is asked.
    Asker(const Order &order, Diagnosis &diagnosis, std::function<void(const QString &)> progress)
        : m_order(order), m_diagnosis(diagnosis), m_progress(std::move(progress))
    {
    }

    template <Record Reply, Record Body>
    std::optional<Reply> post(const QString &endpoint, const Body &body)
    {
        const QByteArray bytes = Json::write(body).value_or(QByteArray());
        return ask<Reply>(endpoint, ServiceRequests::post(m_order.base, endpoint, bytes), withoutPassword(body))
            .record;
    }

    ReadReply<DashboardResponse> listing(qint64 id)
    {
        return ask<DashboardResponse>(Endpoints::paquetes, ServiceRequests::listing(m_order.base, id), {});
    }

    /// The last reply's bytes.
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
    Diagnosis &m_diagnosis;
    std::function<void(const QString &)> m_progress;
    QByteArray m_lastBody;
};

} // namespace Check
