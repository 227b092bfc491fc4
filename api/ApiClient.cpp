#include "ApiClient.h"

#include "Deployment.h"
#include "HttpTransport.h"

#include <QCoreApplication>
#include <QMetaObject>

using namespace Qt::StringLiterals;

namespace {

/// Absolute, with a host; anything else is not sent.
std::optional<QUrl> serviceUrl(const QString &address)
{
    const QUrl url(address, QUrl::StrictMode);
    const bool web = url.scheme() == "https"_L1 || url.scheme() == "http"_L1;
    return url.isValid() && web && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

/// Decoding and completion are a job of their own on the main thread's queue, posted in the order of finishing.
void send(const HttpRequest &request, std::function<void(const QByteArray &)> handler)
{
    sendHttp(request, [handler = std::move(handler)](HttpReply reply) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [handler, body = std::move(reply.body)] { handler(body); },
            Qt::QueuedConnection);
    });
}

} // namespace

ApiClient::ApiClient() : baseUrl(Deployment::baseUrl()) {}

ApiClient &ApiClient::instance()
{
    static auto *const client = new ApiClient;
    return *client;
}

void ApiClient::postBytes(const QString &endpoint, const QByteArray &body, BytesHandler handler) const
{
    if (const auto url = serviceUrl(baseUrl + endpoint))
        send({ HttpRequest::Method::Post, *url, body, "application/json" }, std::move(handler));
}

void ApiClient::fetchDashboard(qint64 userId, std::function<void(std::optional<DashboardResponse>)> completion) const
{
    const auto url = serviceUrl(baseUrl + u"api_paquetes.php?user_id="_s + QString::number(userId));
    if (url)
        send({ HttpRequest::Method::Get, *url }, decoding<DashboardResponse>(std::move(completion)));
}
