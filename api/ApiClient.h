#pragma once

#include "Json.h"
#include "Records.h"

#include <functional>
#include <optional>

/// The gateway to the company's service: one call of a screen becomes one HTTPS exchange. It keeps no cookie, token
/// or cache, retries nothing, logs nothing, and belongs to the main thread.
///
/// A completion is called once, on the main thread, never inside the call, in the order in which the exchanges ended,
/// also when the screen that asked has gone: what it captures must live that long (see ViewModel::hold). It gets
/// the reply record whatever the HTTP status, or nothing: no connection, a reply without bytes or too large, 60
/// seconds of silence, or bytes that do not read as the record. It is never called when the address is not a valid
/// URL.
class ApiClient final {
public:
    ApiClient(const ApiClient &) = delete;
    ApiClient &operator=(const ApiClient &) = delete;

    /// The one client of the process, made at first use and never destroyed.
    static ApiClient &instance();

    /// POSTs `body` to the endpoint file (see Endpoints.h), as JSON, and reads the answer as `Reply`. The body is
    /// written before this returns; a record that cannot be written is sent as a POST without a body.
    template <Record Reply, Record Body>
    void post(const QString &endpoint, const Body &body, std::function<void(std::optional<Reply>)> completion) const
    {
        postBytes(endpoint, Json::write(body).value_or(QByteArray()), decoding<Reply>(std::move(completion)));
    }

    /// GETs the listing of a customer; any number is asked for as it is.
    void fetchDashboard(qint64 userId, std::function<void(std::optional<DashboardResponse>)> completion) const;

private:
    using BytesHandler = std::function<void(QByteArray)>;

    ApiClient();

    void postBytes(const QString &endpoint, const QByteArray &body, BytesHandler handler) const;

    template <Record Reply>
    static BytesHandler decoding(std::function<void(std::optional<Reply>)> completion)
    {
        return [completion = std::move(completion)](QByteArray bytes) {
            completion(bytes.isEmpty() ? std::nullopt : Json::readAndFree<Reply>(std::move(bytes)).record);
        };
    }

    const QString baseUrl;
};
