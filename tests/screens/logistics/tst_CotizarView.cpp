#include "FormTest.h"
#include "MarovendaTest.h"

#include "CotizarViewModel.h"

#include <QAccessible>

using namespace Qt::StringLiterals;

class CotizarViewTest : public FormTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { signIn(); }
    void cleanup() { ServiceTest::cleanup(); }

    void startsAsDesigned();
    void untouchedFormIsSentAsItStands();
    void typedFormIsSentByteForByte();
    void modeTravelsWithoutAccents_data();
    void modeTravelsWithoutAccents();
    void numbersThatCannotBeReadAreZero_data();
    void numbersThatCannotBeReadAreZero();
    void infiniteWeightIsSentWithoutABody();
    void successEmptiesWhatWasTypedAndKeepsTheRest();
    void failureKeepsWhatWasTyped_data();
    void failureKeepsWhatWasTyped();
    void successIsToldBeforeTheFieldsAreEmptied();
    void nothingChangesWhileSending();
    void everyPressSendsOneMoreRequestAndTheLastReplyWins();
    void lateReplyHurtsNothing();
    void arrowKeysChangeTheMode();
    void modeIsHeardAsAChoice();
    void everythingIsReadInOrder();

private:
    static QByteArray form() { return "CotizarView {}"; }
};

void CotizarViewTest::startsAsDesigned()
{
    TestScreen screen(form());
    QCOMPARE(screen.texts(),
             QStringList({u"Cotizar Importación"_s, u"Aéreo"_s, u"Marítimo"_s, u"Peso (Lbs)"_s,
                          u"Valor Declarado (USD)"_s, u"Descripción del contenido"_s, u"Enviar Cotización"_s}));
    QCOMPARE(screen.find(u"tipo"_s)->property("selection").toString(), u"Aéreo"_s);
    QVERIFY(screen.find(u"peso"_s)->property("isDecimal").toBool());
    QVERIFY(screen.find(u"valor"_s)->property("isDecimal").toBool());
    QVERIFY(!screen.find(u"descripcion"_s)->property("isDecimal").toBool());
    QVERIFY(server.requests().isEmpty());
}

void CotizarViewTest::untouchedFormIsSentAsItStands()
{
    Session::instance().setUserId(0);
    TestScreen screen(form());
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().path, "/api_cotizar.php");
    QCOMPARE(
        server.requests().first().body,
        QByteArray(
            R"({"user_id":0,"tipo":"aereo","origen":"Miami, USA","destino":"Panamá","peso":0,"valor":0,"descripcion":""})"));
}

void CotizarViewTest::typedFormIsSentByteForByte()
{
    Session::instance().setUserId(std::numeric_limits<qint64>::max());
    TestScreen screen(form());
    screen.tap(screen.named(u"Marítimo"_s));
    fill(screen, "peso", u"12.5"_s);
    fill(screen, "valor", u"0.1"_s);
    fill(screen, "descripcion", u" Ropa / \"ñ\" "_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(
        server.requests().first().body,
        QByteArray(R"({"user_id":9223372036854775807,"tipo":"maritimo","origen":"Miami, USA","destino":"Panamá",)"
                   R"("peso":12.5,"valor":0.1,"descripcion":" Ropa \/ \"ñ\" "})"));
}

void CotizarViewTest::modeTravelsWithoutAccents_data()
{
    QTest::addColumn<QString>("tipo");
    QTest::addColumn<QString>("sent");
    QTest::newRow("air") << u"Aéreo"_s << u"aereo"_s;
    QTest::newRow("sea") << u"Marítimo"_s << u"maritimo"_s;
    QTest::newRow("sea, decomposed") << u"Mari\u0301timo"_s << u"maritimo"_s;
    QTest::newRow("sea, without accent") << u"Maritimo"_s << u"aereo"_s;
    QTest::newRow("sea, lower case") << u"marítimo"_s << u"aereo"_s;
    QTest::newRow("sea, blank") << u"Marítimo "_s << u"aereo"_s;
    QTest::newRow("anything else") << u"Otro"_s << u"aereo"_s;
    QTest::newRow("nothing") << QString() << u"aereo"_s;
}

void CotizarViewTest::modeTravelsWithoutAccents()
{
    QFETCH(QString, tipo);
    QFETCH(QString, sent);
    CotizarViewModel viewModel;
    viewModel.tipoAssign(tipo);
    viewModel.enviarCotizacion();
    waitForRequests(1);
    QCOMPARE(this->sent("/api_cotizar.php").first().value("tipo"_L1).toString(), sent);
    // The completion still has to come.
    QTRY_COMPARE(viewModel.msgValue(), u"Error al cotizar"_s);
}

void CotizarViewTest::numbersThatCannotBeReadAreZero_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("comma") << u"12,5"_s << QByteArray("0");
    QTest::newRow("blank before") << u" 12.5"_s << QByteArray("0");
    QTest::newRow("blank after") << u"12.5 "_s << QByteArray("0");
    QTest::newRow("letters") << u"doce"_s << QByteArray("0");
    QTest::newRow("exponent") << u"1e2"_s << QByteArray("100");
    QTest::newRow("negative") << u"-3"_s << QByteArray("-3");
}

void CotizarViewTest::numbersThatCannotBeReadAreZero()
{
    QFETCH(QString, typed);
    QFETCH(QByteArray, sent);
    TestScreen screen(form());
    fill(screen, "peso", typed);
    fill(screen, "valor", typed);
    press(screen);
    waitForRequests(1);
    QVERIFY(server.requests().first().body.contains("\"peso\":" + sent + ",\"valor\":" + sent + ","));
}

void CotizarViewTest::infiniteWeightIsSentWithoutABody()
{
    server.reply("/api_cotizar.php", R"({"status":"success"})");
    for (const QString &weight : {u"inf"_s, u"nan"_s, u"1e999"_s}) {
        TestScreen screen(form());
        fill(screen, "peso", weight);
        press(screen);
        QTRY_COMPARE(msg(screen), u"Enviado con éxito"_s);
        QCOMPARE(server.requests().last().body, QByteArray());
        QCOMPARE(server.requests().last().header("Content-Length"), "0");
        QCOMPARE(server.requests().last().header("Content-Type"), "application/json");
    }
}

void CotizarViewTest::successEmptiesWhatWasTypedAndKeepsTheRest()
{
    server.reply("/api_cotizar.php", R"({"status":"success","message":"Recibida"})");
    TestScreen screen(form());
    screen.tap(screen.named(u"Marítimo"_s));
    fill(screen, "peso", u"1"_s);
    fill(screen, "valor", u"2"_s);
    fill(screen, "descripcion", u"x"_s);
    press(screen);
    QTRY_COMPARE(msg(screen), u"Enviado con éxito"_s);
    for (const char *field : {"peso", "valor", "descripcion"})
        QCOMPARE(text(screen, field), QString());
    QCOMPARE(screen.find(u"tipo"_s)->property("selection").toString(), u"Marítimo"_s);
    press(screen);
    waitForRequests(2);
    QCOMPARE(
        server.requests()[1].body,
        QByteArray(
            R"({"user_id":42,"tipo":"maritimo","origen":"Miami, USA","destino":"Panamá","peso":0,"valor":0,"descripcion":""})"));
}

void CotizarViewTest::failureKeepsWhatWasTyped_data() { addFailures(); }

void CotizarViewTest::failureKeepsWhatWasTyped()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, status);
    server.reply("/api_cotizar.php", reply, status);
    TestScreen screen(form());
    screen.tap(screen.named(u"Marítimo"_s));
    fill(screen, "peso", u"1"_s);
    fill(screen, "valor", u"2"_s);
    fill(screen, "descripcion", u"x"_s);
    press(screen);
    QTRY_COMPARE(msg(screen), u"Error al cotizar"_s);
    QCOMPARE(text(screen, "peso"), u"1"_s);
    QCOMPARE(text(screen, "valor"), u"2"_s);
    QCOMPARE(text(screen, "descripcion"), u"x"_s);
    // The same blue as a success.
    QCOMPARE(screen.find(u"msg"_s)->property("color").value<QColor>(), QColor(0x00, 0x7A, 0xFF));
    // The mode, and what is not on show, is kept too.
    press(screen);
    waitForRequests(2);
    QCOMPARE(server.requests()[1].body, server.requests()[0].body);
    QVERIFY(server.requests()[1].body.contains(
        R"("tipo":"maritimo","origen":"Miami, USA","destino":"Panamá","peso":1,"valor":2,)"));
}

void CotizarViewTest::successIsToldBeforeTheFieldsAreEmptied()
{
    CotizarViewModel viewModel;
    server.reply("/api_cotizar.php", R"({"status":"success"})");
    viewModel.pesoAssign(u"1"_s);
    viewModel.valorAssign(u"2"_s);
    viewModel.descripcionAssign(u"x"_s);
    viewModel.enviarCotizacion();
    QStringList order;
    connect(&viewModel, &CotizarViewModel::msgChanged, this, [&] { order.append(u"msg"_s); });
    connect(&viewModel, &CotizarViewModel::pesoChanged, this, [&] { order.append(u"peso"_s); });
    connect(&viewModel, &CotizarViewModel::valorChanged, this, [&] { order.append(u"valor"_s); });
    connect(&viewModel, &CotizarViewModel::descripcionChanged, this, [&] { order.append(u"descripcion"_s); });
    QTRY_COMPARE(order, QStringList({u"msg"_s, u"peso"_s, u"valor"_s, u"descripcion"_s}));
}

void CotizarViewTest::nothingChangesWhileSending()
{
    server.hold("/api_cotizar.php");
    TestScreen screen(form());
    fill(screen, "peso", u"1"_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(msg(screen), QString());
    QCOMPARE(text(screen, "peso"), u"1"_s);
    QVERIFY(screen.find(u"enviar"_s)->isEnabled());
    server.held.first()->close();
    QTRY_COMPARE(msg(screen), u"Error al cotizar"_s);
}

void CotizarViewTest::everyPressSendsOneMoreRequestAndTheLastReplyWins()
{
    server.hold("/api_cotizar.php");
    TestScreen screen(form());
    press(screen);
    press(screen);
    waitForRequests(2);
    server.held[1]->send(R"({"status":"success"})");
    QTRY_COMPARE(msg(screen), u"Enviado con éxito"_s);
    server.held[0]->send("{}");
    QTRY_COMPARE(msg(screen), u"Error al cotizar"_s);
}

void CotizarViewTest::lateReplyHurtsNothing()
{
    server.hold("/api_cotizar.php");
    {
        TestScreen screen(form());
        press(screen);
        waitForRequests(1);
    }
    server.held.first()->send(R"({"status":"success"})");
    server.reply("/api_cotizar.php", R"({"status":"success"})");
    TestScreen again(form());
    QCOMPARE(msg(again), QString());
    press(again);
    QTRY_COMPARE(msg(again), u"Enviado con éxito"_s);
}

void CotizarViewTest::arrowKeysChangeTheMode()
{
    TestScreen screen(form());
    QQuickItem *const picker = screen.find(u"tipo"_s);
    screen.key(Qt::Key_Tab);
    QVERIFY(screen.named(u"Aéreo"_s)->hasActiveFocus());
    screen.key(Qt::Key_Right);
    QVERIFY(screen.named(u"Marítimo"_s)->hasActiveFocus());
    QCOMPARE(picker->property("selection").toString(), u"Marítimo"_s);
    screen.key(Qt::Key_Right);
    QCOMPARE(picker->property("selection").toString(), u"Marítimo"_s);
    screen.key(Qt::Key_Left);
    QCOMPARE(picker->property("selection").toString(), u"Aéreo"_s);
    screen.key(Qt::Key_Left);
    QCOMPARE(picker->property("selection").toString(), u"Aéreo"_s);
}

void CotizarViewTest::modeIsHeardAsAChoice()
{
    TestScreen screen(form());
    const auto heard = [&](const QString &name) { return QAccessible::queryAccessibleInterface(screen.named(name)); };
    QCOMPARE(heard(u"Aéreo"_s)->role(), QAccessible::RadioButton);
    QVERIFY(heard(u"Aéreo"_s)->state().checked);
    QVERIFY(!heard(u"Marítimo"_s)->state().checked);
    heard(u"Marítimo"_s)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(heard(u"Marítimo"_s)->state().checked);
    QVERIFY(!heard(u"Aéreo"_s)->state().checked);
}

void CotizarViewTest::everythingIsReadInOrder()
{
    TestScreen screen(form());
    QCOMPARE(screen.names(),
             QStringList({u"Cotizar Importación"_s, u"Tipo"_s, u"Aéreo"_s, u"Marítimo"_s, u"Peso (Lbs)"_s,
                          u"Valor Declarado (USD)"_s, u"Descripción del contenido"_s, u"Enviar Cotización"_s}));
}

MAROVENDA_TEST_MAIN(CotizarViewTest)
#include "tst_CotizarView.moc"
