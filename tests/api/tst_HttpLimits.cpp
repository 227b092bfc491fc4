#include "Exchanges.h"
#include "MarovendaTest.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QSemaphore>
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
    void chunksFasterThanTheyAreReadAreHeldBack();
    void compressedReplyCountsUnpacked_data();
    void compressedReplyCountsUnpacked();
    void largeReplyThatCannotBeUnpackedEndsTheExchange();
    void silenceEndsTheExchange_data();
    void silenceEndsTheExchange();
    void serverThatReadsNothingEndsTheExchange();
    void slowReplyGoesOn();
    void slowUploadGoesOn();

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
    for (const auto &[label, size, taken] :
         {std::tuple{"less", 4999, true}, std::tuple{"just", 5000, true}, std::tuple{"one more", 5001, false},
          std::tuple{"much more", 300'000, false}}) {
        for (const char *coding : {"announced", "chunked", "to the end"})
            QTest::addRow("%s, %s", label, coding) << QByteArray(coding) << size << taken;
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

void HttpLimitsTest::chunksFasterThanTheyAreReadAreHeldBack()
{
    // A server on the test's own event loop would never be faster than its client.
    QSemaphore ready;
    quint16 port = 0;
    qint64 sent = 0;
    const std::unique_ptr<QThread> flood(QThread::create([&] {
        QTcpServer listener;
        listener.listen(QHostAddress::LocalHost);
        port = listener.serverPort();
        ready.release();
        if (!listener.waitForNewConnection(20'000))
            return;
        const std::unique_ptr<QTcpSocket> socket(listener.nextPendingConnection());
        socket->waitForReadyRead(20'000);
        socket->write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        const QByteArray chunk = Exchanges::chunked(QByteArray(100'000, 'b'), 100'000).chopped(5);
        while (sent < 1'000'000'000 && socket->write(chunk) > 0 && socket->waitForBytesWritten(20'000))
            sent += chunk.size();
    }));
    flood->start();
    ready.acquire();
    const QUrl url(u"http://127.0.0.1:%1/a"_s.arg(port));
    const auto outcome = send({HttpRequest::Method::Post, url, "{}", "application/json"}, sized(1'000'000));
    QVERIFY(completed(outcome));
    flood->wait();
    QVERIFY(outcome->reply.body.isEmpty());
    // What the system keeps between the two is some megabytes.
    QVERIFY2(sent < 50'000'000, QByteArray::number(sent).constData());
}

void HttpLimitsTest::compressedReplyCountsUnpacked_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("taken");
    QTest::newRow("just") << 1'000'000 << true;
    QTest::newRow("one more") << 1'000'001 << false;
    QTest::newRow("bomb") << 100'000'000 << false;
}

void HttpLimitsTest::compressedReplyCountsUnpacked()
{
    QFETCH(const int, size);
    QFETCH(const bool, taken);
    const QByteArray body(size, 'b');
    const QByteArray packed = Exchanges::deflated(body);
    QVERIFY(packed.size() < 200'000);
    server.on("/a",
              [&](const auto &, const auto &answer) { answer->send(packed, 200, "Content-Encoding: deflate\r\n"); });
    const auto outcome = send(post(server, "{}"), sized(1'000'000));
    QVERIFY(completed(outcome));
    QVERIFY(outcome->reply.body == (taken ? body : QByteArray()));
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

void HttpLimitsTest::silenceEndsTheExchange_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("before the reply") << QByteArray();
    QTest::newRow("in the head") << "HTTP/1.1 200 OK\r\nContent-Le"_ba;
    QTest::newRow("in the body") << "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"status\":"_ba;
    QTest::newRow("after a provisional reply") << "HTTP/1.1 100 Continue\r\n\r\n"_ba;
}

void HttpLimitsTest::silenceEndsTheExchange()
{
    QFETCH(const QByteArray, before);
    server.on("/a", [&](const auto &, const auto &answer) {
        answer->raw(before);
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

void HttpLimitsTest::serverThatReadsNothingEndsTheExchange()
{
    server.onConnection([](QTcpSocket *socket) {
        socket->setReadBufferSize(1);
        return true;
    });
    const auto outcome = send(post(server, QByteArray(qsizetype(50) * 1024 * 1024, 'p')), silent(300ms));
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.error, QNetworkReply::OperationCanceledError);
    QCOMPARE(server.connections(), 1);
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

void HttpLimitsTest::slowUploadGoesOn()
{
    const QByteArray photo(qsizetype(24) * 1024 * 1024, 'p');
    qint64 taken = 0;
    QTimer next;
    server.onConnection([&](QTcpSocket *socket) {
        socket->setReadBufferSize(qint64(128) * 1024);
        next.callOnTimeout(socket, [&, socket] {
            taken += socket->read(qint64(1024) * 1024).size();
            if (taken > photo.size()) {
                next.stop();
                socket->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
            }
        });
        next.start(10);
        return true;
    });
    QElapsedTimer time;
    time.start();
    const auto outcome = send(post(server, photo), silent(800ms));
    QVERIFY(completed(outcome));
    QCOMPARE(outcome->reply.body, "{}");
    QVERIFY2(time.elapsed() > 1000, QByteArray::number(time.elapsed()).constData());
}

MAROVENDA_TEST_MAIN(HttpLimitsTest)
#include "tst_HttpLimits.moc"
