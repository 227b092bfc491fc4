#include "Handshakes.h"

#include "HttpTransport.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A request is longer than this, and an alert is shorter.
constexpr int requestSize = 500;
const QByteArray secret(requestSize, 's');
constexpr qint64 late = 3000;

QJsonObject certified(const QString &name) { return {{u"certificate"_s, name}}; }

QJsonObject versions(const QString &oldest, const QString &newest, const QString &ciphers = {})
{
    QJsonObject tls = certified(u"good"_s);
    tls[u"oldest"_s] = oldest;
    tls[u"newest"_s] = newest;
    if (!ciphers.isEmpty())
        tls[u"ciphers"_s] = ciphers;
    return tls;
}

} // namespace

QList<Handshakes::Server> Handshakes::servers()
{
    const QByteArray plain = "HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n{\"status\":\"success\"}";
    const QString old = u"ALL:@SECLEVEL=0"_s;
    return {
        {"good certificate", certified(u"good"_s), {}, true},
        {"good certificate by way of another", certified(u"by-middle"_s), {}, true},
        {"TLS 1.2", versions(u"TLSv1_2"_s, u"TLSv1_2"_s), {}, true},
        {"TLS 1.3", versions(u"TLSv1_3"_s, u"TLSv1_3"_s), {}, true},
        {"expired", certified(u"expired"_s)},
        {"not yet valid", certified(u"not-yet-valid"_s)},
        {"for another host", certified(u"wrong-host"_s)},
        {"for a host whose name holds this one", certified(u"longer-host"_s)},
        {"for any host", certified(u"wildcard-host"_s)},
        {"for clients", certified(u"for-clients"_s)},
        {"signed with SHA-1", certified(u"with-sha1"_s)},
        {"self-signed", certified(u"self-signed"_s)},
        {"of an untrusted root", certified(u"untrusted-root"_s)},
        {"by way of one that is not shown", certified(u"lacks-its-middle"_s)},
        {"by way of one that has expired", certified(u"by-stale-middle"_s)},
        {"by way of one that may not sign", certified(u"by-no-authority"_s)},
        {"TLS 1.0", versions(u"TLSv1"_s, u"TLSv1"_s, old)},
        {"TLS 1.1", versions(u"TLSv1_1"_s, u"TLSv1_1"_s, old)},
        {"without a certificate", {{u"ciphers"_s, u"ADH:AECDH:@SECLEVEL=0"_s}, {u"newest"_s, u"TLSv1_2"_s}}},
        {"with ciphers that hide nothing", versions(u"TLSv1_2"_s, u"TLSv1_2"_s, u"eNULL:@SECLEVEL=0"_s)},
        {"plain text on the port", {}, Steps().send(plain).half()},
        {"plain text that waits for a request", {}, Steps().take(1).send(plain).half()},
        {"a redirect in plain text",
         {},
         Steps()
             .take(1)
             .send("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1/\r\nContent-Length: 0\r\n\r\n")
             .half()},
        {"garbage instead of a handshake", {}, Steps().send(QByteArray(300, '\x17')).half()},
        {"an alert instead of a handshake", {}, Steps().take(1).send(QByteArray("\x15\x03\x03\0\2\2\x28", 7)).half()},
        {"closed instead of a handshake", {}, Steps().close()},
    };
}

void Handshakes::prepare(const Server &server)
{
    m_wire.forget();
    if (!server.tls.isEmpty())
        m_wire.encrypt(server.tls);
    if (!server.door.steps.isEmpty())
        m_wire.doors(server.door);
}

void Handshakes::tryCertificates(bool everyCall)
{
    const auto &calls = Calls::all();
    std::size_t turn = 0;
    for (const Server &server : servers()) {
        ++turn;
        for (std::size_t call = 0; call < calls.size(); ++call) {
            if (everyCall || call == turn % (calls.size() - 1) || !calls[call].isPost())
                attempt(server, calls[call], calls[(call + 3) % calls.size()]);
        }
    }
}

void Handshakes::attempt(const Server &server, const Calls::Call &call, const Calls::Call &next)
{
    prepare(server);
    m_wire.script(call.path, Steps().send("HTTP/1.1 200 OK\r\n\r\n" + call.reply("trusted")).close());
    const auto delivery = call.start(secret);
    QByteArray wrong;
    if (!until([&] { return delivery->completions > 0; }))
        wrong = "has not ended";
    else if (delivery->completions != 1 || delivery->misplaced)
        wrong = "completed twice, or in the wrong place";
    else if (delivery->record != (server.isGood ? std::optional(call.reply("trusted")) : std::nullopt))
        wrong = "got " + delivery->record.value_or("nothing");
    else if (!server.isGood)
        wrong = refused();
    if (wrong.isEmpty())
        wrong = works(next);
    m_tally.note(server.name, wrong.isEmpty(), call.name + ": " + wrong);
}

QByteArray Handshakes::refused()
{
    QJsonObject report;
    const auto allDone = [&] {
        report = m_wire.report();
        const QJsonArray connections = report[u"connections"_s].toArray();
        return std::ranges::all_of(connections, [](const QJsonValue &one) { return one[u"done"_s].toBool(); });
    };
    if (!until(allDone))
        return "a connection stays open";
    const QJsonArray connections = report[u"connections"_s].toArray();
    if (connections.isEmpty())
        return "nobody came";
    if (!report[u"lines"_s].toObject().isEmpty())
        return "a request came";
    for (const QJsonValue &one : connections) {
        // Decrypted bytes, or those behind the client's hello.
        const int most = one[u"handshake"_s].isBool() ? 0 : requestSize / 2;
        const int hello = one[u"hello"_s].toInt();
        if (hello == 0 && !one[u"handshake"_s].isBool())
            continue;
        if (one[u"read"_s].toInt() - hello > most)
            return QByteArray::number(one[u"read"_s].toInt() - hello) + " bytes came";
    }
    return {};
}

QByteArray Handshakes::works(const Calls::Call &call)
{
    m_wire.forget();
    m_wire.encrypt(certified(u"good"_s));
    m_wire.script(call.path, Steps().send("HTTP/1.1 200 OK\r\n\r\n" + call.reply("after")).close());
    const auto delivery = call.start("after");
    until([&] { return delivery->completions > 0; });
    return delivery->record == call.reply("after") ? QByteArray() : "the client is of no use afterwards";
}

void Handshakes::tryBrokenOff(int step)
{
    const Calls::Call &call = Calls::all()[0];
    for (const QString &version : {u"TLSv1_2"_s, u"TLSv1_3"_s}) {
        for (const bool spoil : {false, true}) {
            const QByteArray name =
                spoil ? "a byte of the handshake changed" : "closed after n bytes of the handshake";
            int size = 1;
            for (int n = 0; n < size; n += step) {
                const Steps steps = spoil ? Steps().flight(-1, n).half() : Steps().flight(n).close();
                prepare({name, versions(version, version), steps});
                const auto delivery = call.start(secret);
                until([&] { return delivery->completions > 0; });
                QByteArray wrong = delivery->completions == 1 && !delivery->record ? refused() : "not absent once";
                size = std::max(size, m_wire.report()[u"connections"_s][0][u"flight"_s].toInt());
                if (wrong.isEmpty() && n % 50 == 0)
                    wrong = works(call);
                m_tally.note(name, wrong.isEmpty(),
                             version.toLatin1() + ", byte " + QByteArray::number(n) + ": " + wrong);
            }
        }
    }
}

namespace {

/// Where a handshake with a good server may stop: it reads on, and says no more. With TLS 1.3 the server's first
/// words complete it.
QList<std::pair<QByteArray, std::pair<QJsonObject, Steps>>> stalls()
{
    const QJsonObject older = versions(u"TLSv1_2"_s, u"TLSv1_2"_s);
    const QJsonObject newer = versions(u"TLSv1_3"_s, u"TLSv1_3"_s);
    return {
        {"stalled before the handshake", {newer, Steps().take(1)}},
        {"stalled in the server's hello", {newer, Steps().flight(40)}},
        {"stalled in the server's certificate", {newer, Steps().flight(500)}},
        {"stalled before the end of the handshake", {older, Steps().flight(-1)}},
    };
}

} // namespace

void Handshakes::tryStalled()
{
    for (const auto &[name, server] : stalls()) {
        prepare({name, server.first, server.second});
        QList<Calls::DeliveryPtr> all;
        for (const Calls::Call &call : Calls::all())
            all += call.start(secret);
        until([&] { return std::ranges::all_of(all, [](const auto &one) { return one->completions > 0; }); });
        QByteArray wrong;
        const qint64 limit = HttpLimits().silence.count();
        for (const auto &one : all) {
            if (one->completions != 1 || one->record || one->took < limit || one->took > limit + late)
                wrong = "ended after " + QByteArray::number(one->took) + " ms";
        }
        if (wrong.isEmpty())
            wrong = refused();
        if (wrong.isEmpty())
            wrong = works(Calls::all()[0]);
        for (std::size_t i = 0; i < Calls::count; ++i)
            m_tally.note(name, wrong.isEmpty(), wrong);
    }
}

void Handshakes::tryStalledShortly()
{
    constexpr std::chrono::milliseconds limit = 1s;
    for (const auto &[name, server] : stalls()) {
        for (const auto method : {HttpRequest::Method::Post, HttpRequest::Method::Get}) {
            prepare({name, server.first, server.second});
            int completions = 0;
            QByteArray body;
            QElapsedTimer time;
            time.start();
            const QUrl url(u"https://localhost:%1/%2"_s.arg(m_wire.port()).arg(QString::fromLatin1(secret)));
            sendHttp({method, url, secret, "application/json"},
                     [&](const HttpReply &reply) { ++completions, body = reply.body; },
                     {HttpLimits().bodySize, limit});
            until([&] { return completions > 0; });
            const qint64 took = time.elapsed();
            const bool inTime = took >= limit.count() && took <= limit.count() + late;
            QByteArray wrong = completions == 1 && body.isEmpty() && inTime
                                   ? refused()
                                   : "ended after " + QByteArray::number(took) + " ms";
            m_tally.note(name, wrong.isEmpty(), wrong);
        }
    }
}
