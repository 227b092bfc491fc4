#include "ApiClient.h"
#include "MarovendaTest.h"
#include "ScriptedServer.h"
#include "TestDeployment.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

/// An address that is not a URL: nothing is sent, and the completion is never called. The client takes its base
/// address once, so that each is tried in a process of its own.
class ApiClientMalformedBaseTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nothingIsSentAndNobodyIsCalled_data();
    void nothingIsSentAndNobodyIsCalled();
    void goodBaseIsSentTo();

private:
    /// What a process says whose client has this base.
    static QByteArray call(const QString &base)
    {
        QProcess caller;
        caller.start(QCoreApplication::applicationFilePath(), {u"--call"_s, base});
        return caller.waitForFinished(60'000) ? caller.readAllStandardOutput() : "did not end";
    }
};

namespace {

/// Posts and fetches under a base address, and says how many completions were called and freed. A last exchange with
/// a server of its own shows that the time was enough.
int callUnder(const QString &base)
{
    ScriptedServer server;
    TestDeployment::values().baseUrl = base == "SERVER"_L1 ? server.baseUrl() : base;
    server.reply("/api_login.php", "{}");
    server.reply("/api_paquetes.php", "{}");
    int called = 0;
    auto captured = std::make_shared<int>();
    const std::weak_ptr<int> watched = captured;
    ApiClient::instance().post<LoginResponse>(u"api_login.php"_s, LoginRequest(),
                                              [&called, captured](const auto &) { ++called; });
    ApiClient::instance().fetchDashboard(7, [&called, captured](const auto &) { ++called; });
    captured.reset();
    const bool freedAtOnce = watched.expired();

    QTcpSocket probe;
    probe.connectToHost(u"127.0.0.1"_s, server.port());
    probe.write("GET /probe HTTP/1.1\r\n\r\n");
    const auto probed = [&] {
        return std::ranges::any_of(server.requests(), [](const auto &request) { return request.path == "/probe"; });
    };
    const bool waited = QTest::qWaitFor([&] { return probed() && (freedAtOnce || watched.expired()); });
    std::printf("%s called %d requests %d", waited ? "ended" : "waiting", called, int(server.requests().size()) - 1);
    return 0;
}

} // namespace

void ApiClientMalformedBaseTest::nothingIsSentAndNobodyIsCalled_data()
{
    QTest::addColumn<QString>("base");
    QTest::newRow("empty") << u""_s;
    QTest::newRow("open bracket") << u"http://[bad/"_s;
    QTest::newRow("blank in the host") << u"http://exa mple/"_s;
    QTest::newRow("bad port") << u"http://127.0.0.1:99999/"_s;
    QTest::newRow("no host") << u"http:///"_s;
    QTest::newRow("no scheme") << u"127.0.0.1/"_s;
    QTest::newRow("relative") << u"api/"_s;
    QTest::newRow("bad escape") << u"http://127.0.0.1/%zz/"_s;
}

void ApiClientMalformedBaseTest::nothingIsSentAndNobodyIsCalled()
{
    QFETCH(const QString, base);
    QCOMPARE(call(base), "ended called 0 requests 0");
}

void ApiClientMalformedBaseTest::goodBaseIsSentTo() { QCOMPARE(call(u"SERVER"_s), "ended called 2 requests 2"); }

int main(int argc, char *argv[])
{
    if (argc == 3 && qstrcmp(argv[1], "--call") == 0) {
        const QCoreApplication application(argc, argv);
        return callUnder(QString::fromLocal8Bit(argv[2]));
    }
    return runMarovendaTest([] { return std::make_unique<ApiClientMalformedBaseTest>(); }, argc, argv);
}
#include "tst_ApiClientMalformedBase.moc"
