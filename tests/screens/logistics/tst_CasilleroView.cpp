#include "FormTest.h"
#include "MarovendaTest.h"

#include <QAccessible>

using namespace Qt::StringLiterals;

class CasilleroViewTest : public FormTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { signIn(); }
    void cleanup() { ServiceTest::cleanup(); }

    void addressIsThereBeforeTheReply();
    void numberTravelsAsText_data();
    void numberTravelsAsText();
    void nameCountsWhateverTheStatus_data();
    void nameCountsWhateverTheStatus();
    void everyShowingAsksAgainAndTheLastReplyWins();
    void buttonReturnsToTheScreenBelow();
    void longNamesAreNotCut();

private:
    static QByteArray mailbox()
    {
        return "NavigationContainer { root: Component { AppScreen { objectName: 'below' } }"
               " Component.onCompleted: push(mailbox);"
               " property Component mailbox: Component { CasilleroView { objectName: 'mailbox' } } }";
    }
    static const QString address;
    static QString info(TestScreen &screen) { return text(screen, "info"); }
};

const QString CasilleroViewTest::address =
    u"Dirección: 1 Test Way\nCiudad: Miami\nEstado: Florida\nZip Code: 33166-0001\nTeléfono: +1 305 555 0100"_s;

void CasilleroViewTest::addressIsThereBeforeTheReply()
{
    server.hold("/api_casillero.php");
    TestScreen screen(mailbox());
    waitForRequests(1);
    QCOMPARE(info(screen), u"Cargando..."_s);
    QCOMPARE(text(screen, "direccion"), address);
    server.held.first()->send(R"({"nombreCompleto":"Ana"})");
    QTRY_COMPARE(info(screen), u"Ana"_s);
    QCOMPARE(text(screen, "direccion"), address);
}

void CasilleroViewTest::numberTravelsAsText_data()
{
    QTest::addColumn<qint64>("id");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("plain") << qint64(42) << QByteArray(R"({"user_id":"42"})");
    QTest::newRow("nobody") << qint64(0) << QByteArray(R"({"user_id":"0"})");
    QTest::newRow("negative") << qint64(-7) << QByteArray(R"({"user_id":"-7"})");
    QTest::newRow("large") << qint64(1234567890123) << QByteArray(R"({"user_id":"1234567890123"})");
}

void CasilleroViewTest::numberTravelsAsText()
{
    QFETCH(qint64, id);
    QFETCH(QByteArray, body);
    Session::instance().setUserId(id);
    TestScreen screen(mailbox());
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().path, "/api_casillero.php");
    QCOMPARE(server.requests().first().body, body);
}

void CasilleroViewTest::nameCountsWhateverTheStatus_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("shown");
    QTest::newRow("success") << QByteArray(R"({"status":"success","nombreCompleto":"Ana Ñ"})") << u"Ana Ñ"_s;
    QTest::newRow("error with name") << QByteArray(R"({"status":"error","message":"No","nombreCompleto":"Ana"})")
                                     << u"Ana"_s;
    QTest::newRow("no status") << QByteArray(R"({"nombreCompleto":"Ana"})") << u"Ana"_s;
    QTest::newRow("empty name") << QByteArray(R"({"nombreCompleto":""})") << QString();
    QTest::newRow("success without name") << QByteArray(R"({"status":"success","message":"Hola"})") << u"Error"_s;
    QTest::newRow("null name") << QByteArray(R"({"nombreCompleto":null})") << u"Error"_s;
    QTest::newRow("other key") << QByteArray(R"({"nombre_completo":"Ana"})") << u"Error"_s;
    QTest::newRow("number") << QByteArray(R"({"nombreCompleto":1})") << u"Error"_s;
    QTest::newRow("no bytes") << QByteArray() << u"Error"_s;
    QTest::newRow("not JSON") << QByteArray("oops") << u"Error"_s;
}

void CasilleroViewTest::nameCountsWhateverTheStatus()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, shown);
    server.reply("/api_casillero.php", reply);
    TestScreen screen(mailbox());
    QTRY_COMPARE(info(screen), shown);
    QCOMPARE(text(screen, "direccion"), address);
    QCOMPARE(server.requests().size(), 1);
}

void CasilleroViewTest::everyShowingAsksAgainAndTheLastReplyWins()
{
    server.hold("/api_casillero.php");
    TestScreen screen(mailbox());
    QMetaObject::invokeMethod(screen.find(u"mailbox"_s), "appeared");
    waitForRequests(2);
    server.held[1]->send(R"({"nombreCompleto":"dos"})");
    QTRY_COMPARE(info(screen), u"dos"_s);
    server.held[0]->send(R"({"nombreCompleto":"uno"})");
    QTRY_COMPARE(info(screen), u"uno"_s);
}

void CasilleroViewTest::buttonReturnsToTheScreenBelow()
{
    server.hold("/api_casillero.php");
    TestScreen screen(mailbox());
    QTRY_VERIFY(!screen.root()->property("moving").toBool());
    QVERIFY(!screen.named(u"Atrás"_s));
    waitForRequests(1);
    screen.tap(screen.named(u"Volver al Panel"_s));
    QTRY_COMPARE(screen.root()->property("depth").toInt(), 1);
    server.held.first()->send(R"({"nombreCompleto":"tarde"})");
}

void CasilleroViewTest::longNamesAreNotCut()
{
    server.reply(
        "/api_casillero.php",
        R"({"nombreCompleto":"María Fernanda Montserrat del Carmen Echeverría-Gutiérrez de la Guardia MRV-123456"})");
    TestScreen screen(mailbox(), {320, 480});
    QTRY_VERIFY(info(screen).startsWith(u"María"_s));
    QTRY_VERIFY(!screen.root()->property("moving").toBool());
    screen.settle();
    const QRectF name = TestScreen::box(screen.find(u"info"_s));
    QVERIFY(name.left() >= 0 && name.right() <= 320);
    QVERIFY(!screen.find(u"info"_s)->property("truncated").toBool());
    screen.tap(screen.find(u"volver"_s));
    QTRY_COMPARE(screen.root()->property("depth").toInt(), 1);
}

MAROVENDA_TEST_MAIN(CasilleroViewTest)
#include "tst_CasilleroView.moc"
