#include "ServiceRequests.h"

#include "Endpoints.h"

using namespace Qt::StringLiterals;

namespace {

std::optional<QUrl> serviceUrl(const QString &address)
{
    const QUrl url(address, QUrl::StrictMode);
    const bool web = url.scheme() == "https"_L1 || url.scheme() == "http"_L1;
    return url.isValid() && web && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

} // namespace

std::optional<HttpRequest> ServiceRequests::post(const QString &baseUrl, const QString &endpoint,
                                                 const QByteArray &body)
{
    const auto url = serviceUrl(baseUrl + endpoint);
    return url ? std::optional(HttpRequest{HttpRequest::Method::Post, *url, body, "application/json"}) : std::nullopt;
}

std::optional<HttpRequest> ServiceRequests::listing(const QString &baseUrl, qint64 userId)
{
    const auto url = serviceUrl(baseUrl + Endpoints::paquetes.name + u'?' + Endpoints::paquetes.parameter + u'=' +
                                QString::number(userId));
    return url ? std::optional(HttpRequest{HttpRequest::Method::Get, *url}) : std::nullopt;
}
