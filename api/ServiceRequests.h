#pragma once

#include "HttpTransport.h"

#include <QString>

#include <optional>

/// Builds the requests to the service. The base address must end in "/". The functions return nothing if the base
/// address and the endpoint do not form an absolute http or https URL with a host.
namespace ServiceRequests {

/// A POST of a JSON record to one of the Endpoints; the body may be empty.
std::optional<HttpRequest> post(const QString &baseUrl, const QString &endpoint, const QByteArray &body);

/// A GET of a customer's packages and quotations.
std::optional<HttpRequest> listing(const QString &baseUrl, qint64 userId);

} // namespace ServiceRequests
