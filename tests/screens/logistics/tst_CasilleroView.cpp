#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class CasilleroViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void addressIsThereBeforeTheReply();
    void nameCountsWhateverTheStatus_data();
    void nameCountsWhateverTheStatus();
    void everyShowingAsksAgainAndTheLastReplyWins();
    void buttonReturnsToTheScreenBelow();

private:
    static constexpr auto path = "/api_casillero.php";
};

void CasilleroViewTest::addressIsThereBeforeTheReply()
{
    Session::instance().setUserId(-7);
    server.hold(path);
    const TestScreen screen(TestScreen::alone("CasilleroView {}"));
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().body, R"({"user_id":"-7"})");
    QCOMPARE(screen.names(),
             QStringList({u"Mi Casillero"_s, u"Cargando..."_s,
                          u"Dirección: 1 Test Way\nCiudad: Miami\nEstado: Florida\nZip Code: 33166-0001\n"
                          "Teléfono: +1 305 555 0100"_s,
                          u"Volver al Panel"_s}));
}

void CasilleroViewTest::nameCountsWhateverTheStatus_data()
{
    const auto row = columns<QByteArray, QString>("reply", "shown");
    row("error with name", R"({"status":"error","message":"No","nombreCompleto":"Ana Ñ"})", u"Ana Ñ"_s);
    row("empty name", R"({"nombreCompleto":""})", QString());
    row("success without name", R"({"status":"success","message":"Hola"})", u"Error"_s);
    row("no bytes", "", u"Error"_s);
}

void CasilleroViewTest::nameCountsWhateverTheStatus()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const QString, shown);
    server.reply(path, reply);
    const TestScreen screen(TestScreen::alone("CasilleroView {}"));
    QTRY_COMPARE(screen.text(u"info"_s), shown);
}

void CasilleroViewTest::everyShowingAsksAgainAndTheLastReplyWins()
{
    server.hold(path);
    const TestScreen screen(TestScreen::alone("CasilleroView { objectName: 'mailbox' }"));
    QMetaObject::invokeMethod(screen.find(u"mailbox"_s), "appeared");
    waitForRequests(2);
    server.held[1]->send(R"({"nombreCompleto":"dos"})");
    QTRY_COMPARE(screen.text(u"info"_s), u"dos"_s);
    server.held[0]->send(R"({"nombreCompleto":"uno"})");
    QTRY_COMPARE(screen.text(u"info"_s), u"uno"_s);
}

void CasilleroViewTest::buttonReturnsToTheScreenBelow()
{
    const TestScreen screen(TestScreen::pushing("CasilleroView {}"));
    screen.press(u"open"_s);
    QTRY_VERIFY(screen.settledAt(2));
    QVERIFY(!screen.named(u"Atrás"_s));
    screen.press(u"volver"_s);
    QTRY_VERIFY(screen.settledAt(1));
}

MAROVENDA_TEST(CasilleroViewTest)
#include "tst_CasilleroView.moc"
