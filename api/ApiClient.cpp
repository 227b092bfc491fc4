#include "ApiClient.h"

#include "Deployment.h"
#include "FreedMemory.h"
#include "ServiceRequests.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QTimer>

namespace {

constexpr qsizetype largeReply = qsizetype(1024) * 1024;
constexpr std::chrono::milliseconds returnDelay{500};

/// Posts the handler to the main thread's queue, so that replies are decoded in the order in which they finished.
void send(const HttpRequest &request, std::function<void(QByteArray)> handler)
{
    sendHttp(request, [handler = std::move(handler)](HttpReply reply) {
        const qsizetype size = reply.body.size();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [handler, body = std::move(reply.body)]() mutable { handler(std::move(body)); }, Qt::QueuedConnection);
        // By then the reply, and the data that its screen has replaced, are freed.
        if (size > largeReply)
            QTimer::singleShot(returnDelay, QCoreApplication::instance(), returnFreedMemory);
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
