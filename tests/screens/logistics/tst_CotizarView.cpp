#include "CotizarViewModel.h"
#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;

/// What the request for a quotation has that no other form has: a choice, and numbers.
class CotizarViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void modeTravelsWithoutAccents_data();
    void modeTravelsWithoutAccents();
    void unreadableNumbersAreSentAsZero();
    void infiniteWeightIsSentWithoutABody();
    void successKeepsTheMode();
    void successIsShownBeforeTheFieldsAreEmptied();
    void arrowKeysChangeTheMode();
    void modeIsHeardAsAChoice();
};

void CotizarViewTest::modeTravelsWithoutAccents_data()
{
    const auto row = columns<QString, QString>("tipo", "sent");
    row("sea", u"Marítimo"_s, u"maritimo"_s);
    row("sea, decomposed", u"Mari\u0301timo"_s, u"maritimo"_s);
    row("sea, without accent", u"Maritimo"_s, u"aereo"_s);
    row("sea, lower case", u"marítimo"_s, u"aereo"_s);
    row("nothing", QString(), u"aereo"_s);
}

void CotizarViewTest::modeTravelsWithoutAccents()
{
    QFETCH(const QString, tipo);
    QFETCH(const QString, sent);
    CotizarViewModel viewModel;
    viewModel.tipoAssign(tipo);
    viewModel.enviarCotizacion();
    waitForRequests(1);
    QCOMPARE(this->sent("/api_cotizar.php").first().value("tipo"_L1).toString(), sent);
    // The completion still has to come.
    QTRY_COMPARE(viewModel.msgValue(), u"Error al cotizar"_s);
}

void CotizarViewTest::unreadableNumbersAreSentAsZero()
{
    const TestScreen screen("CotizarView {}");
    screen.enter(u"peso"_s, u"12,5"_s);
    screen.enter(u"valor"_s, u" 12.5"_s);
    screen.press(u"enviar"_s);
    waitForRequests(1);
    QVERIFY(server.requests().first().body.contains(R"("peso":0,"valor":0,)"));
}

void CotizarViewTest::infiniteWeightIsSentWithoutABody()
{
    server.reply("/api_cotizar.php", R"({"status":"success"})");
    const TestScreen screen("CotizarView {}");
    screen.enter(u"peso"_s, u"1e999"_s);
    screen.press(u"enviar"_s);
    QTRY_COMPARE(screen.text(u"msg"_s), u"Enviado con éxito"_s);
    QCOMPARE(server.requests().first().body, QByteArray());
}

void CotizarViewTest::successKeepsTheMode()
{
    server.reply("/api_cotizar.php", R"({"status":"success"})");
    const TestScreen screen("CotizarView {}");
    screen.tap(screen.named(u"Marítimo"_s));
    screen.press(u"enviar"_s);
    QTRY_COMPARE(screen.text(u"msg"_s), u"Enviado con éxito"_s);
    QCOMPARE(screen.find(u"tipo"_s)->property("selection").toString(), u"Marítimo"_s);
    QCOMPARE(sent("/api_cotizar.php").first().value("tipo"_L1).toString(), u"maritimo"_s);
}

void CotizarViewTest::successIsShownBeforeTheFieldsAreEmptied()
{
    server.reply("/api_cotizar.php", R"({"status":"success"})");
    CotizarViewModel viewModel;
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

void CotizarViewTest::arrowKeysChangeTheMode()
{
    const TestScreen screen("CotizarView {}");
    const auto selection = [&] { return screen.find(u"tipo"_s)->property("selection").toString(); };
    screen.key(Qt::Key_Tab);
    QVERIFY(screen.named(u"Aéreo"_s)->hasActiveFocus());
    for (int i = 0; i < 2; ++i) {
        screen.key(Qt::Key_Right);
        QVERIFY(screen.named(u"Marítimo"_s)->hasActiveFocus());
        QCOMPARE(selection(), u"Marítimo"_s);
    }
    for (int i = 0; i < 2; ++i) {
        screen.key(Qt::Key_Left);
        QCOMPARE(selection(), u"Aéreo"_s);
    }
}

void CotizarViewTest::modeIsHeardAsAChoice()
{
    const TestScreen screen("CotizarView {}");
    const auto heard = [&](const QString &name) { return QAccessible::queryAccessibleInterface(screen.named(name)); };
    QCOMPARE(heard(u"Aéreo"_s)->role(), QAccessible::RadioButton);
    QVERIFY(heard(u"Aéreo"_s)->state().checked);
    QVERIFY(!heard(u"Marítimo"_s)->state().checked);
    heard(u"Marítimo"_s)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(heard(u"Marítimo"_s)->state().checked);
    QVERIFY(!heard(u"Aéreo"_s)->state().checked);
    heard(u"Aéreo"_s)->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    QVERIFY(heard(u"Aéreo"_s)->state().checked);
}

MAROVENDA_TEST(CotizarViewTest)
#include "tst_CotizarView.moc"
