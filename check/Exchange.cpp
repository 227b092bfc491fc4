#include "Exchange.h"

#include "Certificates.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QSslConfiguration>
#include <QSslError>

using namespace Qt::StringLiterals;

namespace {

QString protocolName(QSsl::SslProtocol protocol)
{
    switch (protocol) {
    case QSsl::TlsV1_2:
        return u"TLS 1.2"_s;
    case QSsl::TlsV1_3:
        return u"TLS 1.3"_s;
    default:
        return u"TLS"_s;
    }
}

void describe(const QSslCertificate &certificate, Check::Tls &to)
{
    if (certificate.isNull())
        return;
    to.subject = Check::subjectOf(certificate);
    to.issuer = Check::issuerOf(certificate);
    to.expires = certificate.expiryDate();
}

Check::Tls &tlsOf(Check::Exchange &exchange) { return exchange.tls ? *exchange.tls : exchange.tls.emplace(); }

/// Returns Qt's error message, which may end in a colon without a detail.
QString errorOf(const QNetworkReply &reply)
{
    QString text = reply.errorString().trimmed();
    while (text.endsWith(u':'))
        text.chop(1);
    // Qt has no text if the connection is closed while it sends the request; see also HttpReply::complete.
    return text == "Unknown error"_L1 ? u"Connection closed"_s : text;
}

/// Records what Qt reports about the connection during the exchange.
void recordEvents(const QNetworkReply &reply, Check::Exchange &to)
{
    QObject::connect(&reply, &QNetworkReply::requestSent, [&to] { to.connected = true; });
    QObject::connect(&reply, &QNetworkReply::encrypted, [&to, &reply] {
        to.connected = true;
        const QSslConfiguration ssl = reply.sslConfiguration();
        tlsOf(to).protocol = protocolName(ssl.sessionProtocol());
        describe(ssl.peerCertificate(), *to.tls);
    });
    QObject::connect(&reply, &QNetworkReply::sslErrors, [&to, &reply](const QList<QSslError> &errors) {
        to.connected = true;
        tlsOf(to).refusals = Check::whyRefused(errors, reply.url().host());
        describe(reply.sslConfiguration().peerCertificate(), *to.tls);
    });
    // The transport may finish a failed reply before Qt does.
    const auto noteError = [&to, &reply] { to.error = errorOf(reply); };
    QObject::connect(&reply, &QNetworkReply::errorOccurred, noteError);
    QObject::connect(&reply, &QNetworkReply::finished, noteError);
}

} // namespace

QByteArray Check::Exchange::header(const char *name) const
{
    for (const auto &[key, value] : reply.headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

Check::Exchange Check::sendAndWait(const HttpRequest &request, std::chrono::milliseconds silence)
{
    Exchange exchange;
    exchange.request = request;
    exchange.silence = silence;
    HttpLimits limits;
    limits.silence = silence;
    QEventLoop loop;
    QElapsedTimer time;
    time.start();
    sendHttp(
        request,
        [&](HttpReply reply) {
            exchange.reply = std::move(reply);
            loop.quit();
        },
        limits, [&](const QNetworkReply &reply) { recordEvents(reply, exchange); });
    loop.exec();
    // The transport deletes its objects in the event loop, which does not run between two requests.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    exchange.milliseconds = time.elapsed();
    exchange.size = exchange.reply.body.size();
    // A failed handshake means that a server has answered.
    if (exchange.reply.status != 0 || exchange.reply.error == QNetworkReply::SslHandshakeFailedError ||
        exchange.reply.error == QNetworkReply::RemoteHostClosedError)
        exchange.connected = true;
    return exchange;
}
