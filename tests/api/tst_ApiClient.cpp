#include "ApiClient.h"
#include "MarovendaTest.h"
#include "RecordTools.h"
#include "ScriptedServer.h"
#include "ServiceRequests.h"
#include "TestDeployment.h"

#include <QNetworkReply>
#include <QTest>
#include <QThread>

#include <limits>

using namespace Qt::StringLiterals;
using RecordTools::with;

namespace {

/// What a completion got.
template <Record R>
struct Delivery {
    int count = 0;
    bool onMainThread = false;
    std::optional<R> record;
};

template <Record Reply, Record Body>
std::shared_ptr<Delivery<Reply>> post(const char *endpoint, const Body &body)
{
    auto delivery = std::make_shared<Delivery<Reply>>();
    ApiClient::instance().post<Reply>(
        PostEndpoint<Body, Reply>(endpoint), body, [delivery](std::optional<Reply> record) {
            ++delivery->count;
            delivery->onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
            delivery->record = std::move(record);
        });
    return delivery;
}

constexpr PostEndpoint<LoginRequest, StandardResponse> somewhere("a");

std::shared_ptr<Delivery<DashboardResponse>> fetch(qint64 userId)
{
    auto delivery = std::make_shared<Delivery<DashboardResponse>>();
    ApiClient::instance().fetchDashboard(userId, [delivery](std::optional<DashboardResponse> record) {
        ++delivery->count;
        delivery->record = std::move(record);
    });
    return delivery;
}

} // namespace

/// One call of a screen is one exchange and one completion.
class ApiClientTest : public QObject {
    Q_OBJECT
public:
    ApiClientTest() { TestDeployment::values().baseUrl = server.baseUrl(); }

private Q_SLOTS:
    void cleanup() { server.clear(); }

    void thereIsOneClientAndItKeepsItsAddress();
    void requestIsPostedToTheEndpointGiven();
    void listingIsAskedForByNumber_data();
    void listingIsAskedForByNumber();
    void replyIsReadWhateverItsStatus();
    void replyThatCannotBeReadIsAbsent();
    void noConnectionIsAbsent();
    void requestBelowAMalformedBaseIsNone();
    void recordThatCannotBeWrittenIsSentWithoutABody();
    void recordIsWrittenBeforeTheCallReturns();
    void completionIsAJobOfItsOwn();
    void capturesLiveUntilTheCompletionHasRun();
    void completionMayCallAgain();

private:
    ScriptedServer server;
};

void ApiClientTest::thereIsOneClientAndItKeepsItsAddress()
{
    const ApiClient *const client = &ApiClient::instance();
    const QString address = std::exchange(TestDeployment::values().baseUrl, u"http://127.0.0.1:1/"_s);
    server.reply("/a", "{}");
    const auto delivery = post<StandardResponse>("a", LoginRequest());
    TestDeployment::values().baseUrl = address;
    QTRY_COMPARE(delivery->count, 1);
    QVERIFY(delivery->record);
    QCOMPARE(&ApiClient::instance(), client);
    static_assert(!std::is_copy_constructible_v<ApiClient> && !std::is_move_constructible_v<ApiClient>);
    static_assert(!std::is_default_constructible_v<ApiClient>);
}

void ApiClientTest::requestIsPostedToTheEndpointGiven()
{
    // As it stands: nothing in it is encoded or decoded.
    const QByteArray endpoint = "a.php?x=%2F&y=+%20";
    const auto request = RecordTools::filled<CotizacionRequest>();
    const auto reply = RecordTools::filled<LoginResponse>();
    server.reply('/' + endpoint, Json::write(reply).value());
    const auto delivery = post<LoginResponse>(endpoint.constData(), request);
    QTRY_COMPARE(delivery->count, 1);
    QVERIFY(delivery->onMainThread);
    QVERIFY(delivery->record && RecordTools::same(*delivery->record, reply));
    QCOMPARE(server.requests().size(), 1);
    const auto &sent = server.requests().first();
    QCOMPARE(sent.method, "POST");
    QCOMPARE(sent.path, '/' + endpoint);
    QCOMPARE(sent.header("Content-Type"), "application/json");
    QCOMPARE(sent.body, Json::write(request).value());
}

void ApiClientTest::listingIsAskedForByNumber_data()
{
    const auto row = columns<qint64, QByteArray>("userId", "path");
    row("zero", 0, "/api_paquetes.php?user_id=0");
    row("negative", -3, "/api_paquetes.php?user_id=-3");
    row("most", std::numeric_limits<qint64>::max(), "/api_paquetes.php?user_id=9223372036854775807");
    row("least", std::numeric_limits<qint64>::min(), "/api_paquetes.php?user_id=-9223372036854775808");
}

void ApiClientTest::listingIsAskedForByNumber()
{
    QFETCH(const qint64, userId);
    const auto reply = RecordTools::filled<DashboardResponse>();
    server.reply("/api_paquetes.php", Json::write(reply).value());
    const auto delivery = fetch(userId);
    QTRY_COMPARE(delivery->count, 1);
    QVERIFY(delivery->record && RecordTools::same(*delivery->record, reply));
    QCOMPARE(server.requests().size(), 1);
    const auto &sent = server.requests().first();
    QCOMPARE(sent.method, "GET");
    QTEST(sent.path, "path");
    QVERIFY(sent.body.isEmpty());
    QVERIFY(sent.header("Content-Type").isNull());
    QVERIFY(sent.header("Content-Length").isNull());
}

void ApiClientTest::replyIsReadWhateverItsStatus()
{
    for (const int status : {200, 201, 302, 400, 401, 404, 500, 503}) {
        server.reply("/a", R"({"status":"error","message":"No"})", status);
        const auto delivery = post<StandardResponse>("a", LoginRequest());
        QTRY_COMPARE(delivery->count, 1);
        QCOMPARE(delivery->record.value().message, u"No"_s);
    }
}

void ApiClientTest::replyThatCannotBeReadIsAbsent()
{
    for (const char *body : {"", "<html></html>", R"({"status":"success","id":42})", R"({"status":"success")"}) {
        for (const int status : {200, 500}) {
            server.reply("/api_login.php", body, status);
            const auto delivery = post<LoginResponse>("api_login.php", LoginRequest());
            QTRY_COMPARE(delivery->count, 1);
            QVERIFY2(!delivery->record, body);
        }
    }
}

void ApiClientTest::noConnectionIsAbsent()
{
    server.onConnection([](QTcpSocket *socket) {
        socket->abort();
        return true;
    });
    const auto posted = post<LoginResponse>("api_login.php", LoginRequest());
    const auto fetched = fetch(7);
    QCOMPARE(posted->count + fetched->count, 0);
    QTRY_COMPARE(posted->count, 1);
    QTRY_COMPARE(fetched->count, 1);
    QVERIFY(!posted->record && !fetched->record);
}

/// The client takes its base address once, so this asks what it asks.
void ApiClientTest::requestBelowAMalformedBaseIsNone()
{
    for (const QString &base :
         {u""_s, u"http://[bad/"_s, u"http://exa mple/"_s, u"http://127.0.0.1:99999/"_s, u"http:///"_s,
          u"127.0.0.1/"_s, u"api/"_s, u"http://127.0.0.1/%zz/"_s, u"ftp://127.0.0.1/"_s}) {
        QVERIFY2(!ServiceRequests::post(base, u"api_login.php"_s, "{}"), qPrintable(base));
        QVERIFY2(!ServiceRequests::listing(base, 7), qPrintable(base));
    }
}

void ApiClientTest::recordThatCannotBeWrittenIsSentWithoutABody()
{
    server.reply("/api_cotizar.php", R"({"status":"success"})");
    const auto request = with(&CotizacionRequest::peso, std::numeric_limits<double>::quiet_NaN());
    const auto delivery = post<StandardResponse>("api_cotizar.php", request);
    QTRY_COMPARE(delivery->count, 1);
    QCOMPARE(server.requests().size(), 1);
    const auto &sent = server.requests().first();
    QCOMPARE(sent.method, "POST");
    QCOMPARE(sent.header("Content-Length"), "0");
    QCOMPARE(sent.header("Content-Type"), "application/json");
    QVERIFY(sent.body.isEmpty());
    QCOMPARE(delivery->record.value().status, u"success"_s);
}

void ApiClientTest::recordIsWrittenBeforeTheCallReturns()
{
    server.reply("/a", "{}");
    LoginRequest request{u"before"_s, u"x"_s};
    const auto delivery = post<StandardResponse>("a", request);
    request.email = u"after"_s;
    QTRY_COMPARE(delivery->count, 1);
    QCOMPARE(server.requests().first().body, R"({"email":"before","password":"x"})");
}

void ApiClientTest::completionIsAJobOfItsOwn()
{
    server.hold("/a");
    server.hold("/api_paquetes.php");
    // Jobs that a failed check leaves behind still write here.
    const auto order = std::make_shared<QStringList>();
    const auto note = [order](const QString &what) { return [order, what](const auto &...) { *order += what; }; };
    ApiClient::instance().post<StandardResponse>(somewhere, LoginRequest(), note(u"first"_s));
    ApiClient::instance().fetchDashboard(7, note(u"second"_s));
    ApiClient::instance().post<StandardResponse>(somewhere, LoginRequest(), note(u"third"_s));
    QTRY_COMPARE(server.held.size(), 3);
    const auto replies = QCoreApplication::instance()->findChildren<QNetworkReply *>();
    QCOMPARE(replies.size(), 3);
    const auto enqueue = [&](const QString &what) {
        QMetaObject::invokeMethod(this, note(what), Qt::QueuedConnection);
    };
    // All of them finish in one turn of the event loop, among other jobs for it.
    enqueue(u"before"_s);
    emit replies[2]->finished();
    enqueue(u"between"_s);
    emit replies[0]->finished();
    emit replies[1]->finished();
    enqueue(u"behind"_s);
    QCOMPARE(*order, QStringList());
    QTRY_COMPARE(order->size(), 6);
    QCOMPARE(*order, QStringList({u"before"_s, u"third"_s, u"between"_s, u"first"_s, u"second"_s, u"behind"_s}));
}

void ApiClientTest::capturesLiveUntilTheCompletionHasRun()
{
    server.hold("/a");
    auto screen = std::make_shared<int>(7);
    const std::weak_ptr<int> watched = screen;
    int seen = 0;
    ApiClient::instance().post<StandardResponse>(somewhere, LoginRequest(),
                                                 [screen, &seen](const auto &) { seen = *screen; });
    screen.reset();
    QTRY_COMPARE(server.held.size(), 1);
    QVERIFY(!watched.expired());
    server.held.first()->send("{}");
    QTRY_COMPARE(seen, 7);
    QTRY_VERIFY(watched.expired());
}

void ApiClientTest::completionMayCallAgain()
{
    server.reply("/a", "{}");
    int calls = 0;
    const std::function<void(const std::optional<StandardResponse> &)> again = [&](const auto &) {
        if (++calls < 3)
            ApiClient::instance().post<StandardResponse>(somewhere, LoginRequest(), again);
    };
    again({});
    QTRY_COMPARE(calls, 3);
    QCOMPARE(server.requests().size(), 2);
}

MAROVENDA_TEST(ApiClientTest)
#include "tst_ApiClient.moc"
