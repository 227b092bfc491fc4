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
    void bodyIsSentAsItIs_data();
    void bodyIsSentAsItIs();
    void replyIsTakenWhateverItsStatus_data();
    void replyIsTakenWhateverItsStatus();
    void statusAndHeadersAreKnown();
    void observerSeesTheExchangeFromItsStart();
    void redirectIsNotFollowed_data();
    void redirectIsNotFollowed();
    void noCookieIsSentBack();
    void challengeIsNotAnswered_data();
    void challengeIsNotAnswered();
    void http2IsNotAskedFor();
    void replyWithoutALengthEndsWithTheConnection();
    void chunkedReplyIsPutTogether();
    void replyInManyPiecesIsPutTogether();
    void compressedReplyIsUnpacked_data();
    void compressedReplyIsUnpacked();
    void provisionalRepliesAreSkipped();
    void emptyReplyHasNoBytes();
    void closedPortIsNoReply();
    void completionComesLaterOnTheMainThread();
    void completionsComeInTheOrderOfFinishing();
    void manyExchangesRunAtOnce();
    void completionMaySendAgain();
    void capturesLiveUntilTheCompletionHasRun();

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
    // What the platform adds by itself, and nothing more.
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

void HttpTransportTest::bodyIsSentAsItIs_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("one byte") << "x"_ba;
    QTest::newRow("zeros and line ends") << QByteArray("\0\r\n\r\n\0", 6);
    QTest::newRow("one block") << QByteArray(qsizetype(16) * 1024, 'b');
    QTest::newRow("one block and a byte") << QByteArray(qsizetype(16) * 1024 + 1, 'b');
    QTest::newRow("photo") << "0123456789abcdef"_ba.repeated(qsizetype(5) * 1024 * 64);
}

void HttpTransportTest::bodyIsSentAsItIs()
{
    QFETCH(const QByteArray, body);
    server.reply("/a", "b");
    const auto outcome = send(post(server, body));
    QVERIFY(completed(outcome));
    QCOMPARE(server.requests().size(), 1);
    QVERIFY(server.requests().first().body == body);
    QCOMPARE(server.requests().first().header("Content-Length"), QByteArray::number(body.size()));
    QCOMPARE(outcome->reply.body, "b");
}

void HttpTransportTest::replyIsTakenWhateverItsStatus_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {200, 201, 202, 203, 300, 304, 400, 401, 403, 404, 405, 407, 408,
                             409, 413, 418, 422, 426, 429, 500, 501, 502, 503, 504, 599})
        QTest::addRow("%d", status) << status;
}

void HttpTransportTest::replyIsTakenWhateverItsStatus()
{
    QFETCH(const int, status);
    // This one has no body by its definition.
    const QByteArray body = status == 304 ? "" : R"({"status":"error"})";
    server.reply("/a", body, status);
    for (const HttpRequest &request : {post(server, "{}"), get(server)}) {
        const auto outcome = send(request);
        QVERIFY(completed(outcome));
        QCOMPARE(outcome->reply.status, status);
        QCOMPARE(outcome->reply.body, body);
    }
    QCOMPARE(server.requests().size(), 2);
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

void HttpTransportTest::redirectIsNotFollowed_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("elsewhere");
    for (const int status : {301, 302, 303, 307, 308}) {
        QTest::addRow("%d, same host", status) << status << false;
        QTest::addRow("%d, other host", status) << status << true;
    }
}

void HttpTransportTest::redirectIsNotFollowed()
{
    QFETCH(const int, status);
    QFETCH(const bool, elsewhere);
    ScriptedServer other;
    const QByteArray target = (elsewhere ? other.baseUrl() : server.baseUrl()).toUtf8() + "b";
    server.on("/a", [&](const auto &, const auto &answer) {
        answer->send("moved", status, "Location: " + target + "\r\n");
    });
    for (const HttpRequest &request : {post(server, R"({"password":"x"})"), get(server)}) {
        const auto outcome = send(request);
        QVERIFY(completed(outcome));
        QCOMPARE(outcome->reply.status, status);
        QCOMPARE(outcome->reply.body, "moved");
    }
    QCOMPARE(server.requests().size(), 2);
    QCOMPARE(other.connections(), 0);
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

void HttpTransportTest::challengeIsNotAnswered_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("challenge");
    for (const QByteArray &scheme :
         {R"(Basic realm="a")"_ba, R"(Digest realm="a", nonce="b")"_ba, "NTLM"_ba, "Negotiate"_ba, "Bearer"_ba}) {
        QTest::addRow("401 %s", scheme.constData()) << 401 << QByteArray("WWW-Authenticate: " + scheme + "\r\n");
        QTest::addRow("407 %s", scheme.constData()) << 407 << QByteArray("Proxy-Authenticate: " + scheme + "\r\n");
    }
}

void HttpTransportTest::challengeIsNotAnswered()
{
    QFETCH(const int, status);
    QFETCH(const QByteArray, challenge);
    server.on("/a",
              [&](const auto &, const auto &answer) { answer->send(R"({"status":"error"})", status, challenge); });
    const auto outcome = send(post(server, R"({"password":"x"})"));
    QVERIFY(completed(outcome));
    QCOMPARE(server.requests().size(), 1);
    QVERIFY(server.requests().first().header("Authorization").isNull());
    QVERIFY(server.requests().first().header("Proxy-Authorization").isNull());
    QCOMPARE(outcome->reply.body, "{\"status\":\"error\"}");
}

void HttpTransportTest::http2IsNotAskedFor()
{
    server.reply("/a", "b");
    for (const HttpRequest &request : {post(server, "{}"), get(server)}) {
        const auto outcome = send(request);
        QVERIFY(completed(outcome));
        QVERIFY(server.requests().last().header("Upgrade").isNull());
        QVERIFY(server.requests().last().header("HTTP2-Settings").isNull());
        QVERIFY(!server.requests().last().header("Connection").toLower().contains("upgrade"));
    }
}

void HttpTransportTest::replyWithoutALengthEndsWithTheConnection()
{
    server.on("/a", [](const auto &, const auto &answer) {
        answer->raw("HTTP/1.1 200 OK\r\n\r\nall that comes");
        answer->close();
    });
    const auto outcome = send(post(server, "{}"));
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.body, "all that comes");
}

void HttpTransportTest::chunkedReplyIsPutTogether()
{
    const QByteArray body = "0123456789"_ba.repeated(5000);
    server.on("/a", [&](const auto &, const auto &answer) {
        answer->raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + Exchanges::chunked(body, 777));
    });
    const auto outcome = send(get(server));
    QVERIFY(completed(outcome));
    QVERIFY(outcome->reply.body == body);
}

void HttpTransportTest::replyInManyPiecesIsPutTogether()
{
    const QByteArray body = R"({"status":"success"})";
    server.hold("/a");
    const auto outcome = send(post(server, "{}"));
    QTRY_COMPARE(server.held.size(), 1);
    const QByteArray whole =
        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    for (const char byte : whole) {
        server.held.first()->raw(QByteArray(1, byte));
        QCoreApplication::processEvents();
    }
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.body, body);
}

void HttpTransportTest::compressedReplyIsUnpacked_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("short") << "{\"status\":\"success\",\"message\":\"ñ\"}"_ba;
    QTest::newRow("many like rows") << R"({"tracking":"1Z"},)"_ba.repeated(800'000);
}

void HttpTransportTest::compressedReplyIsUnpacked()
{
    QFETCH(const QByteArray, body);
    server.on("/a", [&](const auto &, const auto &answer) {
        answer->send(Exchanges::gzip(body), 200, "Content-Encoding: gzip\r\n");
    });
    const auto outcome = send(get(server));
    QVERIFY(completed(outcome));
    QVERIFY(outcome->reply.body == body);
    QVERIFY(server.requests().first().header("Accept-Encoding").contains("gzip"));
}

void HttpTransportTest::provisionalRepliesAreSkipped()
{
    server.on("/a", [](const auto &, const auto &answer) {
        answer->raw("HTTP/1.1 100 Continue\r\n\r\n");
        answer->send("b");
    });
    const auto outcome = send(post(server, "{}"));
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.status, 200);
    QCOMPARE(outcome->reply.body, "b");
    QCOMPARE(server.requests().size(), 1);
}

void HttpTransportTest::emptyReplyHasNoBytes()
{
    for (const int status : {200, 204, 404, 500}) {
        server.reply("/a", "", status);
        const auto outcome = send(post(server, "{}"));
        QVERIFY(completed(outcome));
        QCOMPARE(outcome->reply.status, status);
        QVERIFY(outcome->reply.body.isEmpty());
    }
}

void HttpTransportTest::closedPortIsNoReply()
{
    quint16 port = 0;
    {
        const ScriptedServer gone;
        port = gone.port();
    }
    const QUrl url(u"http://127.0.0.1:%1/a"_s.arg(port));
    for (const auto method : {HttpRequest::Method::Get, HttpRequest::Method::Post}) {
        const auto outcome = send({method, url, "{}", "application/json"});
        QCOMPARE(outcome->completions, 0);
        QVERIFY(completed(outcome));
        QVERIFY(outcome->reply.body.isEmpty());
        QCOMPARE(outcome->reply.status, 0);
        QCOMPARE(outcome->reply.error, QNetworkReply::ConnectionRefusedError);
    }
}

void HttpTransportTest::completionComesLaterOnTheMainThread()
{
    server.reply("/a", "b");
    const HttpRequest nowhere{HttpRequest::Method::Post, QUrl(u"nothing://a/"_s), "{}", "application/json"};
    for (const HttpRequest &request : {post(server, "{}"), get(server), nowhere}) {
        const auto outcome = send(request);
        QCOMPARE(outcome->completions, 0);
        QVERIFY(completed(outcome));
        QVERIFY(outcome->onMainThread);
    }
}

void HttpTransportTest::completionsComeInTheOrderOfFinishing()
{
    server.hold("/a");
    QByteArrayList order;
    for (int i = 0; i < 3; ++i) {
        sendHttp(post(server, QByteArray::number(i)), [&order](const HttpReply &reply) { order += reply.body; });
        QTRY_COMPARE(server.held.size(), i + 1);
    }
    for (const int i : {1, 2, 0}) {
        const qsizetype before = order.size();
        server.held[i]->send("answer to " + server.requests()[i].body);
        QTRY_COMPARE(order.size(), before + 1);
    }
    QCOMPARE(order, (QByteArrayList{"answer to 1", "answer to 2", "answer to 0"}));
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

void HttpTransportTest::completionMaySendAgain()
{
    server.reply("/a", "b");
    std::shared_ptr<Exchanges::Outcome> second;
    sendHttp(post(server, "1"), [&](const HttpReply &) { second = send(post(server, "2")); });
    QTRY_VERIFY(second && second->completions == 1);
    QCOMPARE(server.requests().size(), 2);
}

void HttpTransportTest::capturesLiveUntilTheCompletionHasRun()
{
    server.hold("/a");
    auto captured = std::make_shared<int>(7);
    const std::weak_ptr<int> watched = captured;
    int seen = 0;
    sendHttp(post(server, "1"), [captured, &seen](const HttpReply &) { seen = *captured; });
    captured.reset();
    QTRY_COMPARE(server.held.size(), 1);
    QVERIFY(!watched.expired());
    server.held.first()->send("b");
    QTRY_COMPARE(seen, 7);
    QTRY_VERIFY(watched.expired());
}

MAROVENDA_TEST_MAIN(HttpTransportTest)
#include "tst_HttpTransport.moc"
