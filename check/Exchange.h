#pragma once

#include "Findings.h"

#include "HttpTransport.h"

#include <QDateTime>

#include <optional>

namespace Check {

/// The secured connection under an exchange, as far as it came.
struct Tls {
    QString protocol;
    QString subject;
    QString issuer;
    QDateTime expires;
    /// Why the certificate was refused.
    QStringList refusals;
};

/// One exchange with the server: what was asked, what came, and how.
struct Exchange {
    QString endpoint;
    HttpRequest request;
    /// The body as it may be shown: without the password.
    QByteArray shownBody;
    /// Its body is let go of once it has been looked at.
    HttpReply reply;
    qsizetype size = 0;
    QString error;
    /// Whether a server answered at all, be it by closing the connection.
    bool connected = false;
    std::optional<Tls> tls;
    qint64 milliseconds = 0;
    std::chrono::milliseconds silence;
    /// Whether the app reads the reply.
    bool usable = false;

    QByteArray header(const char *name) const;
};

/// Sends a request through the product's own transport and waits for what comes of it.
Exchange sendAndWait(const HttpRequest &request, std::chrono::milliseconds silence);

/// What is to be said of the connection and of the reply around its body.
void judgeTransport(const Exchange &exchange, Findings &findings);

} // namespace Check
