#include "Endpoints.h"
#include "Exchange.h"
#include "Text.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Check::counted;
using Check::Exchange;
using Check::Findings;
using Check::quoted;
using Check::Severity;

constexpr qint64 slow = 5000;
constexpr qsizetype worthCompressing = qsizetype(256) * 1024;
constexpr qint64 expiresSoon = 30;
constexpr qint64 secondsPerDay = 86400;
constexpr qsizetype largeRequest = qsizetype(1024) * 1024;
constexpr auto tooLarge =
    u"Allow larger requests: a photo of 64 MiB is a body of 87 MiB (nginx: client_max_body_size 192m; "
    "PHP: post_max_size = 192M).";

QString status(const Exchange &exchange) { return u"HTTP %1"_s.arg(exchange.reply.status); }

bool redirects(const Exchange &exchange)
{
    return exchange.reply.status >= 300 && exchange.reply.status < 400 && exchange.reply.status != 304;
}

void judgeSilence(const Exchange &exchange, Findings &to)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(exchange.silence).count();
    to.add(Severity::Fault, u"time"_s,
           u"no byte moved for %1; the app waits %2 seconds without showing progress"_s
               .arg(counted(seconds, u"second"_s))
               .arg(std::chrono::duration_cast<std::chrono::seconds>(HttpLimits().silence).count()),
           u"Find what the server waits for. A Content-Length larger than the body has the same effect."_s);
}

void judgeSize(Findings &to)
{
    to.add(Severity::Fault, u"size"_s,
           u"more than %1 MiB of body, which the app drops"_s.arg(HttpLimits().bodySize / 1024 / 1024),
           u"Send fewer or smaller rows, and no avatar: no screen uses it."_s);
}

void judgeCertificate(const Exchange &exchange, Findings &to)
{
    if (!exchange.tls || exchange.tls->refusals.isEmpty())
        to.addGeneral(Severity::Fault, u"TLS"_s, Check::harmless(exchange.error),
                      u"The port must speak TLS 1.2 or 1.3."_s);
    else
        for (const auto &[what, remedy] : exchange.tls->refusals)
            to.addGeneral(Severity::Fault, u"TLS"_s, Check::harmless(what), remedy);
}

/// Adds the reason why the body is empty.
void judgeEmptyBody(const Exchange &exchange, Findings &to)
{
    using Error = QNetworkReply::NetworkError;
    const HttpReply &reply = exchange.reply;
    if (reply.end == HttpReply::End::Silent) {
        judgeSilence(exchange, to);
    } else if (reply.end == HttpReply::End::TooLarge) {
        judgeSize(to);
    } else if (reply.error == Error::SslHandshakeFailedError) {
        judgeCertificate(exchange, to);
    } else if (redirects(exchange) || reply.status >= 400) {
        // judgeStatus reports these.
    } else if (reply.complete) {
        to.add(Severity::Fault, status(exchange), u"an empty body"_s,
               u"Answer every request with a JSON object; look into the server's error log."_s);
    } else if (reply.status != 0) {
        to.add(Severity::Fault, u"connection"_s, u"the reply is lost: "_s + Check::harmless(exchange.error),
               u"Is the body compressed as Content-Encoding says, and as long as Content-Length says?"_s);
    } else if (exchange.connected) {
        to.add(Severity::Fault, u"connection"_s, u"no HTTP reply: "_s + Check::harmless(exchange.error),
               exchange.request.body.size() > largeRequest
                   ? QString::fromUtf16(tooLarge)
                   : u"Does an HTTP server listen there, and does it survive this request?"_s);
    } else {
        to.add(Severity::Fault, u"connection"_s, Check::harmless(exchange.error),
               u"Check the address, the server and the network between them."_s);
    }
}

void judgeBrokenBody(const Exchange &exchange, Findings &to)
{
    const HttpReply &reply = exchange.reply;
    if (reply.body.isEmpty() || reply.complete)
        return;
    const QByteArray announced = exchange.header("Content-Length");
    const QString of = announced.isEmpty() ? QString() : u" of %1 announced"_s.arg(QString::fromLatin1(announced));
    to.add(exchange.usable ? Severity::Warning : Severity::Fault, u"connection"_s,
           u"broke after %1%2: %3"_s.arg(counted(reply.body.size(), u"byte"_s), Check::harmless(of),
                                         Check::harmless(exchange.error)),
           u"Send the whole body; Content-Length counts its bytes (PHP: strlen)."_s);
}

/// How to fix an HTTP status. The first row that fits counts.
struct StatusRemedy {
    int from;
    int to;
    /// Whether the row is for replies that the app can read, or for others.
    bool usable;
    const char16_t *remedy;
};

constexpr auto tooMany =
    u"The server had too many requests: wait, and check again. The app does not wait: it ignores Retry-After, and "
    "sends a request for each press.";

constexpr StatusRemedy statusRemedies[]{
    {404, 405, false, u"Is the base address right, and does the endpoint's file take this method?"},
    {413, 413, true, tooLarge},
    {413, 413, false, tooLarge},
    {429, 429, true, tooMany},
    {429, 429, false, tooMany},
    {500, 599, true, u"See why the server is not ready: maintenance, or an error in its log. Then check again."},
    {400, 599, true, u"Nothing to do if the body says the same: the app uses the body's \"status\"."},
    {400, 599, false, u"Look into the server's error log; answer with JSON, errors too."},
};

QString remedyFor(const Exchange &exchange)
{
    const int number = exchange.reply.status;
    const QStringList beforeSignIn{Endpoints::login, Endpoints::registro, Endpoints::recuperar};
    if ((number == 401 || number == 403) && exchange.usable && !beforeSignIn.contains(exchange.endpoint))
        return u"After the sign-in the app sends no cookie, token or password, only the customer's number: "
               "answer for that number."_s;
    const auto *const found = std::ranges::find_if(statusRemedies, [&](const StatusRemedy &each) {
        return number >= each.from && number <= each.to && exchange.usable == each.usable;
    });
    return found == std::end(statusRemedies) ? QString() : QString::fromUtf16(found->remedy);
}

QString meaningOf(const Exchange &exchange)
{
    const QByteArray wait = exchange.header("Retry-After");
    const QString advice = !wait.isEmpty() ? u" (Retry-After: %1)"_s.arg(quoted(QString::fromUtf8(wait)))
                           : exchange.reply.status == 429 ? u" (no Retry-After)"_s
                                                          : QString();
    const QString meaning = exchange.usable ? u"has no effect: the app reads the body, whatever the status is"_s
                            : exchange.reply.body.isEmpty() ? u"an empty body"_s
                                                            : u"with a body that is not the reply"_s;
    return meaning + advice;
}

void judgeStatus(const Exchange &exchange, Findings &to)
{
    const int number = exchange.reply.status;
    const Severity severity = exchange.usable ? Severity::Warning : Severity::Fault;
    if (redirects(exchange)) {
        const QByteArray location = exchange.header("Location");
        to.add(severity, status(exchange),
               u"redirects to %1, which the app does not follow"_s.arg(quoted(QString::fromUtf8(location), 100)),
               u"Answer at this address, or build the app with the other one."_s);
    } else if (number == 407 ||
               (number == 401 && !exchange.usable && !exchange.header("WWW-Authenticate").isEmpty())) {
        to.add(severity, status(exchange), u"asks for credentials that the app does not have"_s,
               u"Have the endpoints without HTTP authentication (nginx: auth_basic off)."_s);
    } else if (number >= 400) {
        to.add(severity, status(exchange), meaningOf(exchange), remedyFor(exchange));
    }
}

void judgeHeaders(const Exchange &exchange, Findings &to)
{
    const QByteArray type = exchange.header("Content-Type").toLower();
    const qsizetype charset = type.indexOf("charset=");
    if (charset >= 0 && !type.sliced(charset + 8).trimmed().replace('"', "").startsWith("utf-8"))
        to.add(Severity::Warning, u"Content-Type"_s,
               quoted(QString::fromUtf8(type)) + u": the charset is ignored, the body is read as UTF-8"_s,
               u"Send UTF-8 and say so, or say no charset."_s);
    else if (exchange.usable && !type.startsWith("application/json"))
        to.add(Severity::Note, u"Content-Type"_s,
               (type.isEmpty() ? u"absent"_s : quoted(QString::fromUtf8(type))) + u", ignored by the app"_s,
               u"\"application/json\" would be right, for caches and other clients."_s);
    if (!exchange.header("Set-Cookie").isEmpty())
        to.add(Severity::Note, u"Set-Cookie"_s, u"the app neither keeps nor sends cookies"_s,
               u"No reply may depend on a session of the server."_s);
    if (exchange.usable && exchange.reply.body.size() > worthCompressing &&
        exchange.header("Content-Encoding").isEmpty())
        to.add(Severity::Note, u"size"_s, u"%1, not compressed"_s.arg(counted(exchange.reply.body.size(), u"byte"_s)),
               u"Let the web server compress JSON with gzip; the app accepts it."_s);
}

void judgeTime(const Exchange &exchange, Findings &to)
{
    if (exchange.reply.end != HttpReply::End::Silent && exchange.milliseconds >= slow)
        to.add(
            Severity::Warning, u"time"_s,
            u"%1 s until the reply; the app shows no progress"_s.arg(double(exchange.milliseconds) / 1000, 0, 'f', 1),
            u"Make it faster: customers press again, and each press is one more request."_s);
}

void judgeExpiry(const Exchange &exchange, Findings &to)
{
    if (!exchange.tls || !exchange.tls->refusals.isEmpty() || !exchange.tls->expires.isValid())
        return;
    const qint64 days = QDateTime::currentDateTimeUtc().secsTo(exchange.tls->expires) / secondsPerDay;
    if (days < expiresSoon)
        to.addGeneral(Severity::Warning, u"TLS"_s,
                      u"the certificate expires in %1; the app refuses it then"_s.arg(counted(days, u"day"_s)),
                      u"Renew it."_s);
}

} // namespace

void Check::judgeTransport(const Exchange &exchange, Findings &findings)
{
    if (exchange.reply.body.isEmpty())
        judgeEmptyBody(exchange, findings);
    judgeStatus(exchange, findings);
    judgeBrokenBody(exchange, findings);
    judgeTime(exchange, findings);
    judgeExpiry(exchange, findings);
    if (exchange.reply.status != 0)
        judgeHeaders(exchange, findings);
}
