#pragma once

#include <QByteArray>
#include <QList>
#include <QNetworkReply>
#include <QUrl>

#include <chrono>
#include <functional>
#include <utility>

struct HttpRequest {
    enum class Method { Get, Post };

    Method method = Method::Get;
    QUrl url;
    /// The body of a POST; may be empty.
    QByteArray body = {};
    /// The Content-Type of a POST.
    QByteArray contentType = {};
};

/// The result of an exchange. ApiClient uses the body only; the rest is for tools.
struct HttpReply {
    /// What ended the exchange: Qt, or one of the limits. In the latter case the body is empty.
    enum class End { Platform, TooLarge, Silent };

    /// The bytes received, even if the connection was lost after them. Empty if a limit ended the exchange.
    QByteArray body = {};
    /// 0 if no reply arrived.
    int status = {};
    QList<QNetworkReply::RawHeaderPair> headers = {};
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    End end = End::Platform;
    /// Whether the whole body was received. A body without a length ends where the server closes the connection, so
    /// it is always complete.
    bool complete = false;
};

struct HttpLimits {
    /// The maximum size of a reply's body after decompression.
    qint64 bodySize = qint64(64) * 1024 * 1024;
    /// The exchange ends if no byte moves in either direction for this long.
    std::chrono::milliseconds silence = std::chrono::seconds(60);
};

/// Receives the QNetworkReply before the exchange starts. Tools connect to its signals to learn about the connection
/// and its certificate.
using HttpObserver = std::function<void(const QNetworkReply &)>;

/// Sends an HTTP/1.1 request and later calls `finished` once, unless the application ends first. Call it on the main
/// thread; `finished` is called there too. A POST reaches the server at most once; Qt may repeat a GET when a
/// connection is lost. Redirects are not followed, cookies are neither stored nor sent, and certificates that Qt does
/// not accept are refused.
void sendHttp(const HttpRequest &request, std::function<void(HttpReply)> finished, const HttpLimits &limits = {},
              const HttpObserver &observer = {});
