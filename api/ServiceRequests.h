#pragma once

#include "HttpTransport.h"

#include <QString>

#include <optional>

/// The requests that the service understands, below a base address that ends in "/". Nothing when base address and
/// endpoint do not form an absolute http or https address with a host.
namespace ServiceRequests {

/// A POST of a written record to one of the Endpoints; the body may be empty.
std::optional<HttpRequest> post(const QString &baseUrl, const QString &endpoint, const QByteArray &body);

/// The GET of a customer's listing; any number is asked for as it is.
std::optional<HttpRequest> listing(const QString &baseUrl, qint64 userId);

} // namespace ServiceRequests
