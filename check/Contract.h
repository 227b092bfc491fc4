#pragma once

#include <QByteArray>
#include <QString>

namespace Check {

/// Returns the protocol as an OpenAPI 3.1 description in JSON. It is made from the app's Endpoints and Records, so
/// that it cannot differ from what the app sends and reads.
QByteArray contract(const QString &version, const QString &baseUrl);

} // namespace Check
