#pragma once

#include "HttpTransport.h"
#include "ScriptedServer.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <memory>

/// What the tests of the exchanges share.
namespace Exchanges {

/// What came of one exchange.
struct Outcome {
    int completions = 0;
    HttpReply reply;
};

inline std::shared_ptr<Outcome> send(const HttpRequest &request, const HttpLimits &limits = {})
{
    auto outcome = std::make_shared<Outcome>();
    sendHttp(
        request,
        [outcome](HttpReply reply) {
            ++outcome->completions;
            outcome->reply = std::move(reply);
        },
        limits);
    return outcome;
}

/// Waits until an exchange has ended; false when it has not, or more than once, in a time that is long for a test.
inline bool completed(const std::shared_ptr<Outcome> &outcome)
{
    const QDeadlineTimer deadline(20'000);
    QTimer wake;
    wake.start(1000);
    while (outcome->completions == 0 && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return outcome->completions == 1;
}

inline HttpRequest get(const ScriptedServer &server, const QString &path = QStringLiteral("a"))
{
    return {HttpRequest::Method::Get, QUrl(server.baseUrl() + path)};
}

inline HttpRequest post(const ScriptedServer &server, const QByteArray &body,
                        const QString &path = QStringLiteral("a"))
{
    return {HttpRequest::Method::Post, QUrl(server.baseUrl() + path), body, "application/json"};
}

/// The zlib format (RFC 1950), which is HTTP's content coding "deflate": the platform's own, without its length.
inline QByteArray deflated(const QByteArray &bytes) { return qCompress(bytes, 9).mid(4); }

/// A body in the chunked transfer coding, in pieces of a size.
inline QByteArray chunked(const QByteArray &body, qsizetype size)
{
    QByteArray all;
    for (qsizetype at = 0; at < body.size(); at += size) {
        const QByteArray piece = body.mid(at, size);
        all += QByteArray::number(piece.size(), 16) + "\r\n" + piece + "\r\n";
    }
    return all + "0\r\n\r\n";
}

} // namespace Exchanges
