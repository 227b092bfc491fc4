#include "ApiClient.h"

#include "Deployment.h"
#include "FreedMemory.h"
#include "ServiceRequests.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QTimer>

namespace {

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
    if (const auto request = ServiceRequests::post(baseUrl, endpoint, body))
        send(*request, std::move(handler));
}

void ApiClient::fetchDashboard(qint64 userId, std::function<void(std::optional<DashboardResponse>)> completion) const
{
    if (const auto request = ServiceRequests::listing(baseUrl, userId))
        send(*request, decoding<DashboardResponse>(std::move(completion)));
}
