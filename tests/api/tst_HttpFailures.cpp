#include "Exchanges.h"
#include "MarovendaTest.h"

#include <QScopeGuard>
#include <QTest>

#include <algorithm>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Exchanges::completed;
using Exchanges::get;
using Exchanges::post;
using Exchanges::send;
using Script = ScriptedServer::Script;

namespace {

const QByteArray password = R"({"password":"once"})";

Script answering(const QByteArray &bytes)
{
    return [bytes](const ScriptedServer::Request &, const ScriptedServer::AnswerPtr &answer) {
        answer->raw(bytes);
        answer->close();
    };
}

} // namespace
Q_DECLARE_METATYPE(Script)

/// Connections that break: a POST is never sent twice, and what came of the reply counts.
class HttpFailuresTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { server.clear(); }

    void scriptedConnectionEndsAsTheScriptSays_data();
    void scriptedConnectionEndsAsTheScriptSays();
    void brokenConnectionIsNotTriedAgain_data();
    void brokenConnectionIsNotTriedAgain();
    void connectionThatEndsUnreadIsNotTriedAgain_data();
    void connectionThatEndsUnreadIsNotTriedAgain();
    void connectionThatEndsDuringTheUploadIsNotTriedAgain_data();
    void connectionThatEndsDuringTheUploadIsNotTriedAgain();
    void replyDuringTheUploadIsTaken();
    void brokenGetCompletesOnce();

private:
    /// Sends a request and waits for its reply: what was sent before it has then come too.
    void sendOneMore();
    /// The POSTs whose head has come, on whatever connection. The platform may open another after a broken one, but
    /// must not send anything over it.
    int posts() const { return heads + int(raw.count("POST ")); }

    ScriptedServer server;
    int heads = 0;
    /// What came over connections that a test reads by itself.
    QByteArray raw;
};

void HttpFailuresTest::init()
{
    heads = 0;
    raw.clear();
    server.onHead([this](const ScriptedServer::Request &request, const ScriptedServer::AnswerPtr &) {
        heads += request.method == "POST";
        return false;
    });
}

void HttpFailuresTest::sendOneMore()
{
    server.onConnection(nullptr);
    server.reply("/last", "last");
    const auto last = send(get(server, u"last"_s));
    QVERIFY(completed(last));
    QCOMPARE(last->reply.body, "last");
}

void HttpFailuresTest::scriptedConnectionEndsAsTheScriptSays_data()
{
    QTest::addColumn<bool>("reset");
    QTest::newRow("closed") << false;
    QTest::newRow("reset") << true;
}

/// Qt tells of both ends in the same way, so this asks the system.
void HttpFailuresTest::scriptedConnectionEndsAsTheScriptSays()
{
    QFETCH(const bool, reset);
    server.on("/a", [reset](const auto &, const auto &answer) { reset ? answer->reset() : answer->close(); });
    const int client = ::socket(AF_INET, SOCK_STREAM, 0);
    QVERIFY(client >= 0);
    const auto closed = qScopeGuard([client] { ::close(client); });
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(server.port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    QCOMPARE(::connect(client, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    const QByteArray request = "GET /a HTTP/1.1\r\n\r\n";
    QCOMPARE(::send(client, request.constData(), static_cast<size_t>(request.size()), 0), request.size());
    // The end is told once.
    int end = EAGAIN;
    const auto ended = [&] {
        char byte = 0;
        if (end == EAGAIN)
            end = ::recv(client, &byte, 1, MSG_DONTWAIT) < 0 ? errno : 0;
        return end != EAGAIN;
    };
    QTRY_VERIFY(ended());
    QCOMPARE(end, reset ? ECONNRESET : 0);
}

void HttpFailuresTest::brokenConnectionIsNotTriedAgain_data()
{
    QTest::addColumn<Script>("script");
    QTest::addColumn<QByteArray>("body");
    const auto add = [](const char *what, const Script &script, const QByteArray &body = {}) {
        QTest::newRow(what) << script << body;
    };
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
    const QByteArray chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    add("closed without an answer", answering({}));
    add("reset without an answer", [](const auto &, const auto &answer) { answer->reset(); });
    add("closed in the status line", answering("HTTP/1.1 2"));
    add("closed after the status line", answering("HTTP/1.1 200 OK\r\n"));
    add("closed in the head", answering("HTTP/1.1 200 OK\r\nContent-Le"));
    add("closed after the head", answering(head));
    add("closed in the body", answering(head + R"({"status":"succ)"), R"({"status":"succ)");
    add("closed one byte before the end", answering(head + QByteArray(99, 'b')), QByteArray(99, 'b'));
    add("closed in a chunk", answering(chunks + "5\r\nhello\r\n7\r\nwo"), "hellowo");
    add("closed between chunks", answering(chunks + "5\r\nhello\r\n"), "hello");
    add("closed after a provisional reply", answering("HTTP/1.1 100 Continue\r\n\r\n"));
    add("garbage", answering("\x16\x03\x01 what is this\r\n\r\nnot HTTP\r\n"));
    add("garbage without a line end", answering("garbage"));
    add("other protocol", answering("SSH-2.0-OpenSSH\r\n"));
    add("empty lines", answering("\r\n\r\n\r\n"));
    add("no such version", answering("HTTP/9.9 200 OK\r\n\r\n"));
    add("time-out of the server", answering("HTTP/1.1 408 Request Timeout\r\nConnection: close\r\n\r\n"));
    add("closed though kept alive",
        answering("HTTP/1.1 200 OK\r\nConnection: keep-alive\r\nContent-Length: 2\r\n\r\n{}"), "{}");
    add("more than announced", answering("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}{}"), "{}");
}

void HttpFailuresTest::brokenConnectionIsNotTriedAgain()
{
    QFETCH(const Script, script);
    server.on("/a", script);
    for (int time = 1; time <= 10; ++time) {
        const auto outcome = send(post(server, password));
        QVERIFY(completed(outcome));
        sendOneMore();
        QCOMPARE(outcome->completions, 1);
        QCOMPARE(posts(), time);
        const auto &requests = server.requests();
        QCOMPARE(std::ranges::count(requests, password, &ScriptedServer::Request::body), time);
        QTEST(outcome->reply.body, "body");
    }
}

void HttpFailuresTest::connectionThatEndsUnreadIsNotTriedAgain_data()
{
    QTest::addColumn<bool>("reset");
    QTest::addColumn<bool>("afterSomeBytes");
    QTest::newRow("closed at once") << false << false;
    QTest::newRow("reset at once") << true << false;
    QTest::newRow("closed with bytes unread") << false << true;
    QTest::newRow("reset with bytes unread") << true << true;
}

void HttpFailuresTest::connectionThatEndsUnreadIsNotTriedAgain()
{
    QFETCH(const bool, reset);
    QFETCH(const bool, afterSomeBytes);
    for (int time = 1; time <= 10; ++time) {
        init();
        server.onConnection([&](QTcpSocket *socket) {
            const auto end = [this, socket, reset] {
                raw += socket->peek(1 << 20);
                reset ? ScriptedServer::reset(socket) : socket->close();
            };
            if (afterSomeBytes)
                connect(socket, &QTcpSocket::readyRead, socket, end);
            else
                end();
            return true;
        });
        const auto outcome = send(post(server, password));
        QVERIFY(completed(outcome));
        sendOneMore();
        QCOMPARE(outcome->completions, 1);
        QVERIFY(outcome->reply.body.isEmpty());
        QCOMPARE(posts(), afterSomeBytes ? 1 : 0);
    }
}

void HttpFailuresTest::connectionThatEndsDuringTheUploadIsNotTriedAgain_data()
{
    connectionThatEndsUnreadIsNotTriedAgain_data();
}

void HttpFailuresTest::connectionThatEndsDuringTheUploadIsNotTriedAgain()
{
    QFETCH(const bool, reset);
    QFETCH(const bool, afterSomeBytes);
    const QByteArray photo(qsizetype(20) * 1024 * 1024, 'p');
    for (int time = 1; time <= 3; ++time) {
        init();
        qint64 taken = 0;
        server.onConnection([&](QTcpSocket *socket) {
            connect(socket, &QTcpSocket::readyRead, socket, [&, socket] {
                const QByteArray bytes = socket->readAll();
                taken += bytes.size();
                raw += bytes.first(qMin<qsizetype>(bytes.size(), 100));
                if (taken > (afterSomeBytes ? 1'000'000 : 0))
                    reset ? ScriptedServer::reset(socket) : socket->close();
            });
            return true;
        });
        const auto outcome = send(post(server, photo));
        QVERIFY(completed(outcome));
        sendOneMore();
        QCOMPARE(outcome->completions, 1);
        QVERIFY(outcome->reply.body.isEmpty());
        QCOMPARE(posts(), 1);
    }
}

void HttpFailuresTest::replyDuringTheUploadIsTaken()
{
    // A server that refuses a large body need not read it.
    server.onHead([this](const ScriptedServer::Request &request, const ScriptedServer::AnswerPtr &answer) {
        heads += request.method == "POST";
        if (request.method == "POST")
            answer->send(R"({"status":"error"})", 413, {}, true);
        return request.method == "POST";
    });
    const auto outcome = send(post(server, QByteArray(qsizetype(20) * 1024 * 1024, 'p')));
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.status, 413);
    QCOMPARE(outcome->reply.body, "{\"status\":\"error\"}");
    sendOneMore();
    QCOMPARE(posts(), 1);
}

void HttpFailuresTest::brokenGetCompletesOnce()
{
    for (const QByteArray &answer : {""_ba, "HTTP/1.1 2"_ba, "garbage"_ba}) {
        server.on("/a", answering(answer));
        const auto outcome = send(get(server));
        QVERIFY(completed(outcome));
        sendOneMore();
        QCOMPARE(outcome->completions, 1);
        QVERIFY(outcome->reply.body.isEmpty());
    }
}

MAROVENDA_TEST_MAIN(HttpFailuresTest)
#include "tst_HttpFailures.moc"
