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
    /// Sent with a POST as it stands; may be empty.
    QByteArray body = {};
    /// The Content-Type of a POST.
    QByteArray contentType = {};
};

/// How an exchange ended. `ApiClient` looks at the body only; the rest is for tools.
struct HttpReply {
    /// Who ended it: the platform, or this transport by one of its limits, and then without a body.
    enum class End { Platform, TooLarge, Silent };

    /// The received bytes, also when the connection broke after them. Empty when none came, when more than the limit
    /// came, and when the exchange fell silent.
    QByteArray body = {};
    /// 0 when no reply arrived.
    int status = 0;
    QList<QNetworkReply::RawHeaderPair> headers = {};
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    End end = End::Platform;
};

struct HttpLimits {
    /// Bytes of a reply's body, after decompression, that are still taken.
    qint64 bodySize = qint64(64) * 1024 * 1024;
    /// An exchange ends when no byte has moved in either direction for this long.
    std::chrono::milliseconds silence = std::chrono::seconds(60);
};

/// Gets the platform's reply before anything has moved, to connect to its signals: what a tool wants to know of the
/// connection and its certificate. It changes nothing.
using HttpObserver = std::function<void(const QNetworkReply &)>;

/// Sends one HTTP/1.1 request and calls `finished` once, later, on the calling thread, which must be the
/// application's main thread; the end of the application before that drops it. A POST reaches the server at most
/// once whatever the connection does; a GET may be repeated by the platform. Redirects are not followed, cookies
/// neither kept nor sent, certificates that the platform refuses are refused.
void sendHttp(const HttpRequest &request, std::function<void(HttpReply)> finished, const HttpLimits &limits = {},
              const HttpObserver &observer = {});
