#include "DemoTest.h"

#include <QTest>

using namespace Qt::StringLiterals;

class DemoHttpTest : public DemoTest {
    Q_OBJECT

private Q_SLOTS:
    void namesTheWrongPlace_data();
    void namesTheWrongPlace();
    void boundsTexts();
    void refusesStrangeHosts_data();
    void refusesStrangeHosts();
    void refusesWrongPathsAndMethods();
    void refusesWhatIsNotJson();
    void refusesLargeBodies();
    void leavesNothingOfARefusedRequestForTheNext();
    void sendsNoParts();
    void survivesAnyBytes();
};

void DemoHttpTest::namesTheWrongPlace_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("place");
    const auto row = [](const char *path, const char *body, const QString &place) {
        QTest::addRow("%s %s", path, body) << QByteArray(path) << QByteArray(body) << place;
    };
    row("api_login.php", R"({"email":"a"})", u"password: missing"_s);
    row("api_login.php", R"({"email":1,"password":"b"})", u"email: number, must be text"_s);
    row("api_login.php", "", u"not JSON"_s);
    row("api_login.php", "[]", u"array, must be object"_s);
    row("api_recuperar.php", "{}", u"email: missing"_s);
    row("api_registro.php", R"({"nombre":"a","email":"b","password":"c","direccion":null,"ciudad":"e"})",
        u"direccion: null, must be text"_s);
    row("api_perfil.php", R"({"user_id":"1"})", u"user_id: text, must be number"_s);
    row("api_casillero.php", R"({"user_id":1})", u"user_id: number, must be text"_s);
    row("api_cotizar.php", R"({"user_id":1.5})", u"user_id: number, must be a whole number of 64 bits"_s);
    row("api_auto.php", R"({"user_id":1,"marca":"a","modelo":"b","anio":2019,"ubicacion":"d"})",
        u"anio: number, must be text"_s);
}

void DemoHttpTest::namesTheWrongPlace()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    QFETCH(QString, place);
    const auto reply = post(m_port, path, body);
    QVERIFY(reply.refused(400));
    QVERIFY2(reply.message().startsWith(u"Solicitud no válida: "_s + place), qUtf8Printable(reply.message()));
}

void DemoHttpTest::boundsTexts()
{
    const auto send = [&](qsizetype length) {
        const AutoRequest request{3, u"a"_s, QString(length, u'ñ'), u"2019"_s, u"Miami"_s};
        return post(m_port, "api_auto.php", request);
    };
    QVERIFY(send(10'000).good());
    const auto reply = send(10'001);
    QVERIFY(reply.refused(400));
    QCOMPARE(reply.message(), u"Solicitud no válida: modelo: text of 10001 characters, must be at most 10000"_s);
    QVERIFY(post(m_port, "api_perfil.php", PerfilRequest{3, u"C"_s, {}, {}, QString(4'000'000, u'A')}).good());
}

void DemoHttpTest::refusesStrangeHosts_data()
{
    QTest::addColumn<QByteArray>("hosts");
    QTest::addColumn<int>("status");
    const auto row = [](const char *host, int status) {
        QTest::newRow(host) << "Host: " + QByteArray(host) + "\r\n" << status;
    };
    for (const char *host : {"127.0.0.1", "127.0.0.1:80", "localhost", "LocalHost:8473", "[::1]", "[::1]:9"})
        row(host, 200);
    for (const char *host : {"marovenda.example", "127.0.0.1.example", "localhost.example:80", "127.0.0.1:", "[::1",
                             "::1", "127.0.0.1:80:80", "127.0.0.1:x", "a@localhost", "127.0.0.2", ""})
        row(host, 403);
    QTest::newRow("none") << QByteArray() << 403;
    QTest::newRow("two") << QByteArray("Host: localhost\r\nHost: example.com\r\n") << 403;
}

void DemoHttpTest::refusesStrangeHosts()
{
    QFETCH(QByteArray, hosts);
    QFETCH(int, status);
    const auto reply = exchange(m_port, "GET /api_paquetes.php?user_id=3 HTTP/1.1\r\n" + hosts + "\r\n");
    QCOMPARE(reply.status, status);
    QCOMPARE(reply.good(), status == 200);
    QVERIFY(status == 200 || reply.refused(status));
}

void DemoHttpTest::refusesWrongPathsAndMethods()
{
    for (const char *path :
         {"", "api_login", "api_loginXphp", "API_LOGIN.PHP", "api_login.php/", "../api_login.php"}) {
        QVERIFY2(get(m_port, path).refused(404), path);
        QVERIFY2(post(m_port, path, QByteArray("{}")).refused(404), path);
    }
    for (const char *verb : {"GET", "PUT", "DELETE", "PATCH", "OPTIONS"}) {
        const auto reply = exchange(m_port, head(verb, "api_login.php") + "Content-Length: 0\r\n\r\n");
        QVERIFY2(reply.refused(405), verb);
        QVERIFY(reply.head.contains("\r\nAllow: POST\r\n"));
    }
    const auto reply = post(m_port, "api_paquetes.php?user_id=1", QByteArray("{}"));
    QVERIFY(reply.refused(405));
    QVERIFY(reply.head.contains("\r\nAllow: GET\r\n"));
}

void DemoHttpTest::refusesWhatIsNotJson()
{
    const QByteArray body = *Json::write(RecuperarRequest{u"ana@marovenda.example"_s});
    const auto send = [&](const QByteArray &headers) {
        return exchange(m_port, head("POST", "api_recuperar.php") + headers + "\r\n" + body);
    };
    const QByteArray length = "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    QVERIFY(send(length + "Content-Type: Application/JSON\r\n").good());
    QVERIFY(send(length).refused(400));
    for (const char *type : {"text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
                             "application/json; charset=utf-8"})
        QVERIFY2(send(length + "Content-Type: " + type + "\r\n").refused(400), type);
    QVERIFY(send("Content-Type: application/json\r\n").refused(411));
    QVERIFY(send(length + "Content-Type: application/json\r\nContent-Encoding: gzip\r\n").refused(415));
}

void DemoHttpTest::refusesLargeBodies()
{
    constexpr int most = 32 * 1024 * 1024;
    // As large as allowed is read, and found not to be JSON.
    QVERIFY(post(m_port, "api_login.php", QByteArray(most, ' ')).refused(400));
    QVERIFY(post(m_port, "api_login.php", QByteArray(most + 1, ' ')).refused(413));
    const QByteArray chunk = "100000\r\n" + QByteArray(0x100000, ' ') + "\r\n";
    const QByteArray headers = "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n";
    QVERIFY(exchange(m_port, head("POST", "api_login.php") + headers + chunk.repeated(32) + "1\r\n \r\n0\r\n\r\n")
                .refused(413));
}

void DemoHttpTest::leavesNothingOfARefusedRequestForTheNext()
{
    const QByteArray hidden = postBytes("api_recuperar.php", R"({"email":"hidden"})");
    const QByteArray outer = head("POST", "api_recuperar.php", "marovenda.example");
    exchange(m_port, outer + "Content-Length: " + QByteArray::number(hidden.size()) + "\r\n\r\n" + hidden);
    QCOMPARE(countOf("SELECT count(*) FROM recovery_requests"), 0);
}

void DemoHttpTest::sendsNoParts()
{
    const QByteArray whole = get(m_port, "api_paquetes.php?user_id=2").body;
    for (const char *range : {"0-1", "99999-", "0-1,5-99999999", "99999-100000,0-1", "-0"}) {
        const auto reply =
            exchange(m_port, head("GET", "api_paquetes.php?user_id=2") + "Range: bytes=" + range + "\r\n\r\n");
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.body, whole);
    }
}

void DemoHttpTest::survivesAnyBytes()
{
    const QByteArray nested = R"({"email":)" + QByteArray(2000, '[') + QByteArray(2000, ']') + "}";
    for (const QByteArray &body : {QByteArray("\xFF\xFE\x00{", 4), QByteArray("{\"email\":\"\xC3\"}"), nested,
                                   QByteArray("{\"email\":\"\\ud800\"}"), QByteArray("{\"email\":1e999}"),
                                   QByteArray("{\"email\":\"a\"}\0", 14)})
        QVERIFY2(post(m_port, "api_recuperar.php", body).status == 400, body.left(40).constData());
    for (const QByteArray &bytes :
         {QByteArray("\r\n\r\n"), QByteArray("\0\x01\x02\r\n\r\n", 7), QByteArray("GET\r\n\r\n"),
          "GET /" + QByteArray(20'000, 'a') + " HTTP/1.1\r\n\r\n",
          head("GET", "") + "X: " + QByteArray(20'000, 'a') + "\r\n\r\n",
          QByteArray("POST / HTTP/9.9\r\nContent-Length: -1\r\n\r\n")}) {
        const int status = exchange(m_port, bytes).status;
        QVERIFY(status == 0 || (status >= 400 && status < 500));
    }
    const QString text = QString::fromUtf8("a\0b\"\\/\u2028🛋", 14);
    QVERIFY(post(m_port, "api_cotizar.php", CotizacionRequest{3, u"aereo"_s, text, text, 1e308, 1, text}).good());
    QCOMPARE(listing(3).cotizaciones->at(0).descripcion, text);
}

QTEST_GUILESS_MAIN(DemoHttpTest)
#include "tst_DemoHttp.moc"
