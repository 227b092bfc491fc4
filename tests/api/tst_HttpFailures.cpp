#include "Exchanges.h"
#include "MarovendaTest.h"

#include <QTest>

#include <algorithm>

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

    void brokenConnectionIsNotTriedAgain_data();
    void brokenConnectionIsNotTriedAgain();
    void connectionThatEndsDuringTheRequestIsNotTriedAgain_data();
    void connectionThatEndsDuringTheRequestIsNotTriedAgain();
    void replyDuringTheUploadIsTaken();

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
    add("closed after the head", answering(head));
    add("closed in the body", answering(head + R"({"status":"succ)"), R"({"status":"succ)");
    add("closed in a chunk", answering(chunks + "5\r\nhello\r\n7\r\nwo"), "hellowo");
    add("garbage", answering("\x16\x03\x01 what is this\r\n\r\nnot HTTP\r\n"));
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

void HttpFailuresTest::connectionThatEndsDuringTheRequestIsNotTriedAgain_data()
{
    QTest::addColumn<bool>("reset");
    QTest::addColumn<int>("bodySize");
    QTest::addColumn<int>("bytesRead");
    for (const bool reset : {false, true}) {
        const char *const end = reset ? "reset" : "closed";
        QTest::addRow("%s before anything has come", end) << reset << 20 << -1;
        QTest::addRow("%s behind the first bytes", end) << reset << 20 << 0;
        QTest::addRow("%s in an upload", end) << reset << 20'000'000 << 1'000'000;
    }
}

void HttpFailuresTest::connectionThatEndsDuringTheRequestIsNotTriedAgain()
{
    QFETCH(const bool, reset);
    QFETCH(const int, bodySize);
    QFETCH(const int, bytesRead);
    for (int time = 1; time <= 5; ++time) {
        init();
        qint64 taken = 0;
        server.onConnection([&](QTcpSocket *socket) {
            const auto read = [&, socket] {
                const QByteArray bytes = socket->readAll();
                taken += bytes.size();
                raw += bytes.first(qMin<qsizetype>(bytes.size(), 100));
                if (taken > bytesRead)
                    reset ? ScriptedServer::reset(socket) : socket->close();
            };
            connect(socket, &QTcpSocket::readyRead, socket, read);
            read();
            return true;
        });
        const auto outcome = send(post(server, QByteArray(bodySize, 'p')));
        QVERIFY(completed(outcome));
        sendOneMore();
        QCOMPARE(outcome->completions, 1);
        QVERIFY(outcome->reply.body.isEmpty());
        QVERIFY(posts() <= 1);
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

MAROVENDA_TEST_MAIN(HttpFailuresTest)
#include "tst_HttpFailures.moc"
