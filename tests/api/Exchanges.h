#pragma once

#include "HttpTransport.h"
#include "ScriptedServer.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <array>
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

/// The gzip format (RFC 1952) around the platform's own deflate.
inline QByteArray gzip(const QByteArray &bytes)
{
    static const auto table = [] {
        std::array<quint32, 256> all{};
        for (quint32 i = 0; i < all.size(); ++i) {
            quint32 value = i;
            for (int bit = 0; bit < 8; ++bit)
                value = value & 1 ? 0xEDB88320U ^ (value >> 1) : value >> 1;
            all[i] = value;
        }
        return all;
    }();
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : bytes)
        crc = table[(crc ^ static_cast<quint8>(byte)) & 0xFF] ^ (crc >> 8);
    crc = ~crc;
    const auto word = [](quint32 value) {
        QByteArray four;
        for (int shift = 0; shift < 32; shift += 8)
            four += static_cast<char>(value >> shift);
        return four;
    };
    // Between the length and the two bytes of zlib's head, and its four of check.
    const QByteArray deflated = qCompress(bytes, 9).mid(6).chopped(4);
    return QByteArray("\x1F\x8B\x08\0\0\0\0\0\0\x03", 10) + deflated + word(crc) +
           word(static_cast<quint32>(bytes.size()));
}

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
