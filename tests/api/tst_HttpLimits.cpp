#include "Exchanges.h"
#include "MarovendaTest.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Exchanges::completed;
using Exchanges::get;
using Exchanges::post;
using Exchanges::send;

/// How large a reply may be, and how long nothing may move.
class HttpLimitsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { server.clear(); }

    void limitsOfTheProduct();
    void replyUpToTheLimitIsTaken_data();
    void replyUpToTheLimitIsTaken();
    void announcedSizeBeyondTheLimitEndsTheExchange();
    void compressedReplyCountsUnpacked();
    void largeReplyThatCannotBeUnpackedEndsTheExchange();
    void silenceEndsTheExchange();
    void slowReplyGoesOn();

private:
    static HttpLimits sized(qint64 bytes) { return {bytes, 60s}; }
    static HttpLimits silent(std::chrono::milliseconds silence) { return {qint64(1024) * 1024, silence}; }

    ScriptedServer server;
};

void HttpLimitsTest::limitsOfTheProduct()
{
    QCOMPARE(HttpLimits().bodySize, qint64(64) * 1024 * 1024);
    QCOMPARE(HttpLimits().silence, std::chrono::milliseconds(60'000));
}

void HttpLimitsTest::replyUpToTheLimitIsTaken_data()
{
    QTest::addColumn<QByteArray>("coding");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("taken");
    for (const char *coding : {"announced", "chunked", "to the end"}) {
        QTest::addRow("just, %s", coding) << QByteArray(coding) << 5000 << true;
        QTest::addRow("one more, %s", coding) << QByteArray(coding) << 5001 << false;
    }
}

void HttpLimitsTest::replyUpToTheLimitIsTaken()
{
    QFETCH(const QByteArray, coding);
    QFETCH(const int, size);
    QFETCH(const bool, taken);
    const QByteArray body(size, 'b');
    server.on("/a", [&](const auto &, const auto &answer) {
        if (coding == "announced")
            return answer->send(body);
        const bool chunks = coding == "chunked";
        answer->raw("HTTP/1.1 200 OK\r\n" + QByteArray(chunks ? "Transfer-Encoding: chunked\r\n" : "") + "\r\n" +
                    (chunks ? Exchanges::chunked(body, 1000) : body));
        answer->close();
    });
    for (const HttpRequest &request : {post(server, "{}"), get(server)}) {
        const auto outcome = send(request, sized(5000));
        QVERIFY(completed(outcome));
        QVERIFY(outcome->reply.body == (taken ? body : QByteArray()));
        QCOMPARE(outcome->reply.end, taken ? HttpReply::End::Platform : HttpReply::End::TooLarge);
    }
}

void HttpLimitsTest::announcedSizeBeyondTheLimitEndsTheExchange()
{
    server.on("/a", [](const auto &, const auto &answer) {
        answer->raw("HTTP/1.1 200 OK\r\nContent-Length: 1000000000000\r\n\r\nfirst bytes");
    });
    const auto outcome = send(post(server, "{}"), sized(5000));
    QVERIFY(completed(outcome));
    QVERIFY(outcome->reply.body.isEmpty());
}

void HttpLimitsTest::compressedReplyCountsUnpacked()
{
    // More than the platform unpacks of so few bytes by itself.
    constexpr int limit = 16'000'000;
    for (const int size : {limit, limit + 1}) {
        const QByteArray body(size, 'b');
        server.on("/a", [&](const auto &, const auto &answer) {
            answer->send(Exchanges::deflated(body), 200, "Content-Encoding: deflate\r\n");
        });
        const auto outcome = send(get(server), sized(limit));
        QVERIFY(completed(outcome));
        QVERIFY(outcome->reply.body == (size == limit ? body : QByteArray()));
    }
    QVERIFY(server.requests().first().header("Accept-Encoding").contains("gzip"));
}

void HttpLimitsTest::largeReplyThatCannotBeUnpackedEndsTheExchange()
{
    // More packed bytes than the platform takes at once, of no known kind from the first on.
    QByteArray body(3'000'000, 'b');
    QRandomGenerator(1).fillRange(reinterpret_cast<quint32 *>(body.data()), body.size() / 4);
    QByteArray packed = Exchanges::deflated(body);
    packed[2] = '\x07';
    server.on("/a",
              [&](const auto &, const auto &answer) { answer->send(packed, 200, "Content-Encoding: deflate\r\n"); });
    for (const HttpRequest &request : {post(server, "{}"), get(server)}) {
        const auto outcome = send(request);
        QVERIFY(completed(outcome));
        QVERIFY(outcome->reply.body.isEmpty());
        QCOMPARE(outcome->reply.error, QNetworkReply::UnknownContentError);
        QCOMPARE(outcome->reply.end, HttpReply::End::Platform);
    }
}

void HttpLimitsTest::silenceEndsTheExchange()
{
    server.on("/a", [&](const auto &, const auto &answer) {
        answer->raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"status\":");
        server.held.append(answer);
    });
    for (const HttpRequest &request : {post(server, "{}"), get(server)}) {
        QElapsedTimer time;
        time.start();
        const auto outcome = send(request, silent(300ms));
        QVERIFY(completed(outcome));
        QVERIFY2(time.elapsed() >= 300, QByteArray::number(time.elapsed()).constData());
        QVERIFY(outcome->reply.body.isEmpty());
        QCOMPARE(outcome->reply.error, QNetworkReply::OperationCanceledError);
        QCOMPARE(outcome->reply.end, HttpReply::End::Silent);
        // The server is told.
        QTRY_VERIFY(!server.held.last()->isConnected());
    }
    QCOMPARE(server.requests().size(), 2);
}

void HttpLimitsTest::slowReplyGoesOn()
{
    const QByteArray body = R"({"status":"slow")";
    QCOMPARE(body.size(), 16);
    QTimer next;
    qsizetype sent = 0;
    server.on("/a", [&](const auto &, const auto &answer) {
        answer->raw("HTTP/1.1 200 OK\r\nContent-Length: 16\r\n\r\n");
        next.callOnTimeout(this, [&, answer] {
            answer->raw(body.mid(sent++, 1));
            if (sent == body.size()) {
                next.stop();
                answer->close();
            }
        });
        next.start(100);
    });
    QElapsedTimer time;
    time.start();
    const auto outcome = send(post(server, "{}"), silent(800ms));
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.body, body);
    QVERIFY(time.elapsed() > 1000);
}

MAROVENDA_TEST(HttpLimitsTest)
#include "tst_HttpLimits.moc"
