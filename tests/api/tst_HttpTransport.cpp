#include "Exchanges.h"
#include "MarovendaTest.h"

#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using Exchanges::completed;
using Exchanges::get;
using Exchanges::post;
using Exchanges::send;

/// One request and its reply, as they are on the wire.
class HttpTransportTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { server.clear(); }

    void postIsSentToTheByte();
    void getIsSentToTheByte();
    void bodyIsSentAsItIs();
    void statusAndHeadersAreKnown();
    void observerSeesTheExchangeFromItsStart();
    void noCookieIsSentBack();
    void brokenConnectionIsNotTriedAgain();
    void bodyThatEndsWithTheConnectionIsComplete_data();
    void bodyThatEndsWithTheConnectionIsComplete();
    void manyExchangesRunAtOnce();

private:
    static QByteArrayList headerNames(const ScriptedServer::Request &request)
    {
        QByteArrayList names;
        for (const auto &[name, value] : request.headers)
            names += name.toLower();
        std::ranges::sort(names);
        return names;
    }

    ScriptedServer server;
};

void HttpTransportTest::postIsSentToTheByte()
{
    server.reply("/a", "b");
    const auto outcome = send(post(server, "{\"email\":\"ñ\"}"));
    QVERIFY(completed(outcome));
    QCOMPARE(server.requests().size(), 1);
    const auto &request = server.requests().first();
    QCOMPARE(request.method, "POST");
    QCOMPARE(request.path, "/a");
    QCOMPARE(request.header("Content-Type"), "application/json");
    QCOMPARE(request.header("Content-Length"), "14");
    QCOMPARE(request.header("Host"), "127.0.0.1:" + QByteArray::number(server.port()));
    QCOMPARE(request.body, "{\"email\":\"ñ\"}");
    // What the platform adds by itself, and nothing more: no offer of HTTP/2 either.
    QCOMPARE(headerNames(request), (QByteArrayList{"accept-encoding", "accept-language", "connection",
                                                   "content-length", "content-type", "host", "user-agent"}));
}

void HttpTransportTest::getIsSentToTheByte()
{
    server.reply("/a", "b");
    const auto outcome = send(get(server, u"a?user_id=-3"_s));
    QVERIFY(completed(outcome));
    QCOMPARE(server.requests().size(), 1);
    const auto &request = server.requests().first();
    QCOMPARE(request.method, "GET");
    QCOMPARE(request.path, "/a?user_id=-3");
    QVERIFY(request.body.isEmpty());
    QCOMPARE(headerNames(request),
             (QByteArrayList{"accept-encoding", "accept-language", "connection", "host", "user-agent"}));
}

void HttpTransportTest::bodyIsSentAsItIs()
{
    server.reply("/a", "b");
    const QByteArray photo = "0123456789abcdef"_ba.repeated(qsizetype(5) * 1024 * 64);
    for (const QByteArray &body : {QByteArray(), QByteArray("\0\r\n\r\n\0", 6), photo}) {
        const auto outcome = send(post(server, body));
        QVERIFY(completed(outcome));
        const auto &request = server.requests().last();
        QVERIFY(request.body == body);
        QCOMPARE(request.header("Content-Length"), QByteArray::number(body.size()));
        QCOMPARE(outcome->reply.body, "b");
    }
    QCOMPARE(server.requests().size(), 3);
}

void HttpTransportTest::statusAndHeadersAreKnown()
{
    server.on("/a", [](const auto &, const auto &answer) { answer->send("b", 503, "X-Reason: tired\r\n"); });
    const auto outcome = send(get(server));
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.status, 503);
    // Later Qt makes all names small; to HTTP they are the same.
    QVERIFY(std::ranges::any_of(outcome->reply.headers, [](const auto &header) {
        return header.first.toLower() == "x-reason" && header.second == "tired";
    }));
    QCOMPARE(outcome->reply.error, QNetworkReply::ServiceUnavailableError);
}

void HttpTransportTest::observerSeesTheExchangeFromItsStart()
{
    server.reply("/a", "b");
    QStringList seen;
    sendHttp(
        get(server), [&](const HttpReply &reply) { seen += QString::fromUtf8(reply.body); }, {},
        [&](const QNetworkReply &reply) {
            seen += reply.isFinished() ? u"too late"_s : u"in time"_s;
            connect(&reply, &QNetworkReply::requestSent, this, [&] { seen += u"sent"_s; });
            connect(&reply, &QNetworkReply::finished, this, [&] { seen += u"finished"_s; });
        });
    QCOMPARE(seen, QStringList(u"in time"_s));
    QTRY_COMPARE(seen, (QStringList{u"in time"_s, u"sent"_s, u"finished"_s, u"b"_s}));
}

void HttpTransportTest::noCookieIsSentBack()
{
    server.on("/a", [](const auto &, const auto &answer) {
        answer->send("b", 200, "Set-Cookie: session=1; Path=/\r\nSet-Cookie: other=2\r\n");
    });
    for (int i = 0; i < 3; ++i) {
        const auto outcome = send(i == 1 ? get(server) : post(server, "{}"));
        QVERIFY(completed(outcome));
    }
    QCOMPARE(server.requests().size(), 3);
    for (const auto &request : server.requests())
        QVERIFY(request.header("Cookie").isNull());
}

void HttpTransportTest::brokenConnectionIsNotTriedAgain()
{
    server.on("/a", [](const auto &, const auto &answer) { answer->close(); });
    server.on("/b", [](const auto &, const auto &answer) {
        answer->raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"status\":");
        answer->close();
    });
    int heads = 0;
    server.onHead([&](const auto &, const auto &) {
        ++heads;
        return false;
    });
    const auto unanswered = send(post(server, R"({"password":"once"})"));
    QVERIFY(completed(unanswered));
    QCOMPARE(unanswered->reply.body, "");
    const auto cut = send(post(server, R"({"password":"once"})", u"b"_s));
    QVERIFY(completed(cut));
    QCOMPARE(cut->reply.body, "{\"status\":");
    // Whatever was sent before the last request has come too.
    server.reply("/last", "");
    const auto last = send(get(server, u"last"_s));
    QVERIFY(completed(last));
    QCOMPARE(heads, 3);
    QCOMPARE(unanswered->completions + cut->completions, 2);
}

void HttpTransportTest::bodyThatEndsWithTheConnectionIsComplete_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("early");
    QTest::addColumn<bool>("resets");
    QTest::addColumn<bool>("complete");
    // Qt has not noticed that the request is sent when such a reply comes, and wants to send it again.
    for (const bool early : {false, true}) {
        const char *when = early ? "before the request's body" : "after the request";
        QTest::addRow("without a length, %s", when) << "HTTP/1.1 200 OK"_ba << early << false << true;
        QTest::addRow("HTTP/1.0, %s", when) << "HTTP/1.0 200 OK"_ba << early << false << true;
        QTest::addRow("an error, %s", when) << "HTTP/1.1 503 Busy"_ba << early << false << true;
        QTest::addRow("with a reset, %s", when) << "HTTP/1.1 200 OK"_ba << early << true << true;
        QTest::addRow("too short, %s", when) << "HTTP/1.1 200 OK\r\nContent-Length: 9"_ba << early << false << false;
        QTest::addRow("no last chunk, %s", when)
            << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n6"_ba << early << false << false;
    }
}

void HttpTransportTest::bodyThatEndsWithTheConnectionIsComplete()
{
    QFETCH(const QByteArray, head);
    QFETCH(const bool, early);
    QFETCH(const bool, resets);
    const QByteArray blank = head.endsWith('6') ? "\r\n"_ba : "\r\n\r\n"_ba;
    const auto script = [&](const auto &, const auto &answer) {
        answer->raw(head + blank + "{\"a\":1");
        resets ? answer->reset() : answer->close();
    };
    server.on("/a", script);
    if (early) {
        server.onHead([&](const auto &request, const auto &answer) {
            script(request, answer);
            return true;
        });
    }
    for (int i = 0; i < 20; ++i) {
        const auto outcome = send(post(server, QByteArray(200, 'a')));
        QVERIFY(completed(outcome));
        QTEST(outcome->reply.complete, "complete");
    }
}

void HttpTransportTest::manyExchangesRunAtOnce()
{
    constexpr int count = 40;
    server.hold("/a");
    QList<std::shared_ptr<Exchanges::Outcome>> outcomes;
    for (int i = 0; i < count; ++i)
        outcomes += send(post(server, QByteArray::number(i)));
    QTRY_COMPARE(server.held.size(), count);
    for (int i = 0; i < count; ++i)
        server.held[i]->send("answer to " + server.requests()[i].body);
    for (int i = 0; i < count; ++i) {
        QVERIFY(completed(outcomes[i]));
        QCOMPARE(outcomes[i]->reply.body, "answer to " + QByteArray::number(i));
    }
    QCOMPARE(server.requests().size(), count);
}

MAROVENDA_TEST(HttpTransportTest)
#include "tst_HttpTransport.moc"
