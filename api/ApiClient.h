#pragma once

#include "Endpoints.h"
#include "Json.h"
#include "Records.h"

#include <functional>
#include <optional>

/// The client of the company's service: each call sends one HTTPS request. It keeps no cookies, tokens or cache, does
/// not retry, and logs nothing. Use it on the main thread only.
///
/// A completion is called once, on the main thread, after the call has returned, and in the order in which the
/// requests finish. It may outlive the screen that made the call, so what it captures must live that long (see
/// ViewModel::hold). It receives the reply record, whatever the HTTP status. It receives nothing if there is no
/// connection, if the reply is empty or too large, if no byte moves for 60 seconds, or if the reply cannot be read as
/// the record. It is never called if the address is not a valid URL.
class ApiClient final {
public:
    ApiClient(const ApiClient &) = delete;
    ApiClient &operator=(const ApiClient &) = delete;

    /// Returns the client of the process. It is created at the first call and never destroyed.
    static ApiClient &instance();

    /// POSTs `body` as JSON to one of the Endpoints, and reads the reply as a `Reply`; both must be its records. A
    /// record that cannot be written as JSON is sent as an empty body.
    template <Record Reply, Record Body>
    void post(const PostEndpoint<Body, Reply> &endpoint, const Body &body,
              std::function<void(std::optional<Reply>)> completion) const
    {
        postBytes(endpoint, Json::write(body).value_or(QByteArray()), decoding<Reply>(std::move(completion)));
    }

    /// GETs the packages and quotations of a customer.
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
