#include "ApiClient.h"

#include "Deployment.h"
#include "FreedMemory.h"
#include "HttpTransport.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

/// Absolute, with a host; anything else is not sent.
std::optional<QUrl> serviceUrl(const QString &address)
{
    const QUrl url(address, QUrl::StrictMode);
    const bool web = url.scheme() == "https"_L1 || url.scheme() == "http"_L1;
    return url.isValid() && web && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

constexpr qsizetype largeReply = qsizetype(1024) * 1024;
constexpr std::chrono::milliseconds largeReplyRest{500};

/// Decoding and completion are a job of their own on the main thread's queue, posted in the order of finishing.
void send(const HttpRequest &request, std::function<void(QByteArray)> handler)
{
    sendHttp(request, [handler = std::move(handler)](HttpReply reply) {
        const qsizetype size = reply.body.size();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [handler, body = std::move(reply.body)]() mutable { handler(std::move(body)); }, Qt::QueuedConnection);
        // Once the reply, and what its screen has replaced by it, are gone.
        if (size > largeReply)
            QTimer::singleShot(largeReplyRest, QCoreApplication::instance(), returnFreedMemory);
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
        send({HttpRequest::Method::Post, *url, body, "application/json"}, std::move(handler));
}

void ApiClient::fetchDashboard(qint64 userId, std::function<void(std::optional<DashboardResponse>)> completion) const
{
    const auto url = serviceUrl(baseUrl + u"api_paquetes.php?user_id="_s + QString::number(userId));
    if (url)
        send({HttpRequest::Method::Get, *url}, decoding<DashboardResponse>(std::move(completion)));
}
