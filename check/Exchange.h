#pragma once

#include "Findings.h"

#include "HttpTransport.h"

#include <QDateTime>

#include <optional>

namespace Check {

/// The TLS connection of an exchange, as far as it was established.
struct Tls {
    QString protocol;
    QString subject;
    QString issuer;
    QDateTime expires;
    /// Why the certificate was refused, and how to fix it.
    QList<std::pair<QString, QString>> refusals;
};

/// A request, its reply, and the circumstances.
struct Exchange {
    QString endpoint;
    HttpRequest request;
    /// The body of the request without the password.
    QByteArray shownBody;
    /// The body is freed after it has been checked.
    HttpReply reply;
    qsizetype size = 0;
    QString error;
    /// Whether a server answered, even if it only closed the connection.
    bool connected = false;
    std::optional<Tls> tls;
    qint64 milliseconds = 0;
    std::chrono::milliseconds silence;
    /// Whether the app can read the reply.
    bool usable = false;

    QByteArray header(const char *name) const;
};

/// Sends a request with the app's transport and waits for the result.
Exchange sendAndWait(const HttpRequest &request, std::chrono::milliseconds silence);

/// Adds findings about the connection, the HTTP status and the headers.
void judgeTransport(const Exchange &exchange, Findings &findings);

} // namespace Check
