#include "DashboardViewModel.h"
#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestDeployment.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QBuffer>
#include <QGuiApplication>
#include <QScopeGuard>
#include <QTest>

using namespace Qt::StringLiterals;

class DashboardViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ServiceTest::init();
        Session::instance().setUserId(42);
        Session::instance().setUserNombre(u"Ana Lucía"_s);
        TestDeployment::values().trackingUrl = u"https://track.example/"_s;
    }
    void cleanup() { ServiceTest::cleanup(); }

    void showsEverythingBeforeTheReply();
    void fetchesEachTimeItComesOnScreen();
    void whatWasShownStaysUntilTheReply();
    void fetchesForWhoeverIsStored_data();
    void fetchesForWhoeverIsStored();
    void countsAreNotGrouped_data();
    void countsAreNotGrouped();
    void countsAllAndShowsTheFirstThree();
    void fewerThanThreeAreAllShown();
    void missingListsCountZero_data();
    void missingListsCountZero();
    void failedFetchClearsWhatWasShown();
    void laterReplyWins();
    void absentFieldsHaveTheirFallbacks();
    void emptyFieldsStayEmpty();
    void badgesAreInUpperCaseWithTheirColours();
    void rowsOfOneTrackingAreAllShown();
    void packagesAreKnownByTrackingAndQuotationsByPosition();
    void packageRowOpensItsTracking();
    void tapGoesOnThroughAReply_data();
    void tapGoesOnThroughAReply();
    void focusStaysOnTheRowThroughAReply_data();
    void focusStaysOnTheRowThroughAReply();
    void quotationRowDoesNothing();
    void searchOpensTheTrackingPage_data();
    void searchOpensTheTrackingPage();
    void malformedTrackingAddressDoesNothing();
    void searchLeavesTheFieldAlone();
    void greetingFollowsTheStoredName();
    void photoComesFromTheStoreAlone();
    void signOutWritesTheNumberOnly();
    void lateReplyAfterSignOutHurtsNothing();
    void focusedTileIsBroughtIntoView();
    void captionsOfTilesAreNotBrokenWithinAWord_data();
    void captionsOfTilesAreNotBrokenWithinAWord();
    void tappedButtonIsNotScrolledTo();
    void everythingIsReadInOrder();
    void markupFromTheServiceIsShownAsItStands();
    void nothingIsCut_data();
    void nothingIsCut();

private:
    static constexpr auto listing = "/api_paquetes.php";

    static QByteArray dashboard()
    {
        return "NavigationContainer { root: Component { DashboardView { screens: ServiceScreens {} } } }";
    }
    static QByteArray packages(int count)
    {
        QByteArrayList rows;
        for (int i = 1; i <= count; ++i)
            rows.append(R"({"tracking":"T)" + QByteArray::number(i) + R"(","descripcion":"Caja )" +
                        QByteArray::number(i) + R"(","estado":"en tránsito","fecha_recibido":"ayer"})");
        return R"("paquetes":[)" + rows.join(',') + "]";
    }
    static QByteArray quotations(int count)
    {
        QByteArrayList rows;
        for (int i = 1; i <= count; ++i)
            rows.append(R"({"origen":"O)" + QByteArray::number(i) + R"(","descripcion":"Cosa","estado":"enviada"})");
        return R"("cotizaciones":[)" + rows.join(',') + "]";
    }
    void answer(const QByteArray &fields) { server.reply(listing, "{" + fields + "}"); }

    static QStringList rows(TestScreen &screen, const QString &section)
    {
        return screen.texts(screen.find(section)).sliced(2); // title and link
    }
    static void appear(TestScreen &screen)
    {
        QMetaObject::invokeMethod(screen.root()->property("current").value<QQuickItem *>(), "appeared");
    }
    static int count(TestScreen &screen, const char *block)
    {
        return screen.find(QString::fromLatin1(block))->property("count").toInt();
    }
};

void DashboardViewTest::showsEverythingBeforeTheReply()
{
    server.hold(listing);
    TestScreen screen(dashboard());
    const QStringList shown{u"Hola, Ana Lucía"_s,
                            u"Bienvenido"_s,
                            u"Mi Resumen"_s,
                            u"0"_s,
                            u"Paquetes"_s,
                            u"0"_s,
                            u"Cotizaciones"_s,
                            u"Casillero"_s,
                            u"Cotizar"_s,
                            u"Autos"_s,
                            u"Perfil"_s,
                            u"Dev"_s,
                            u"Envíos Recientes"_s,
                            u"Ver todos"_s,
                            u"Mis Cotizaciones"_s,
                            u"Ver todas"_s,
                            u"Rastreo de Paquetes"_s,
                            u"Número de tracking..."_s,
                            u"Buscar"_s};
    QCOMPARE(screen.texts(), shown);
}

void DashboardViewTest::fetchesEachTimeItComesOnScreen()
{
    answer(packages(1));
    TestScreen screen(dashboard());
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "GET");
    QCOMPARE(server.requests().first().path, "/api_paquetes.php?user_id=42");
    QCOMPARE(server.requests().first().header("Content-Type"), QByteArray());
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
    Session::instance().setUserId(43);
    answer(packages(2));
    appear(screen);
    waitForRequests(2);
    QCOMPARE(server.requests()[1].path, "/api_paquetes.php?user_id=43");
    QTRY_COMPARE(count(screen, "paqueteCount"), 2);
}

void DashboardViewTest::whatWasShownStaysUntilTheReply()
{
    answer(packages(2) + "," + quotations(2));
    TestScreen screen(dashboard());
    QTRY_COMPARE(count(screen, "paqueteCount"), 2);
    const QStringList shown = screen.texts();
    server.hold(listing);
    appear(screen);
    QTRY_COMPARE(server.held.size(), 1);
    QCOMPARE(screen.texts(), shown);
    server.held.first()->send("{" + packages(1) + "}");
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
    QCOMPARE(count(screen, "cotizacionCount"), 0);
}

void DashboardViewTest::fetchesForWhoeverIsStored_data()
{
    QTest::addColumn<qint64>("id");
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("nobody") << qint64(0) << QByteArray("/api_paquetes.php?user_id=0");
    QTest::newRow("negative") << qint64(-3) << QByteArray("/api_paquetes.php?user_id=-3");
    QTest::newRow("largest") << std::numeric_limits<qint64>::max()
                             << QByteArray("/api_paquetes.php?user_id=9223372036854775807");
}

void DashboardViewTest::fetchesForWhoeverIsStored()
{
    QFETCH(qint64, id);
    QFETCH(QByteArray, path);
    Session::instance().setUserId(id);
    TestScreen screen(dashboard());
    waitForRequests(1);
    QCOMPARE(server.requests().first().path, path);
}

void DashboardViewTest::countsAreNotGrouped_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("1,234 here") << QLocale(QLocale::Spanish, QLocale::Panama);
    QTest::newRow("1.234 here") << QLocale(QLocale::German, QLocale::Germany);
}

void DashboardViewTest::countsAreNotGrouped()
{
    QFETCH(QLocale, locale);
    const auto restore = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(locale);
    QVERIFY(locale.toString(1234) != u"1234"_s);
    answer(packages(1234) + "," + quotations(4321));
    TestScreen screen(dashboard());
    QTRY_COMPARE(screen.texts(screen.find(u"paqueteCount"_s)), QStringList({u"1234"_s, u"Paquetes"_s}));
    QCOMPARE(screen.texts(screen.find(u"cotizacionCount"_s)), QStringList({u"4321"_s, u"Cotizaciones"_s}));
    QVERIFY(screen.named(u"1234 Paquetes"_s));
    QVERIFY(screen.named(u"4321 Cotizaciones"_s));
}

void DashboardViewTest::countsAllAndShowsTheFirstThree()
{
    answer(packages(5) + "," + quotations(4));
    TestScreen screen(dashboard());
    QTRY_COMPARE(count(screen, "paqueteCount"), 5);
    QCOMPARE(count(screen, "cotizacionCount"), 4);
    QCOMPARE(rows(screen, u"recentPackages"_s),
             QStringList({u"📦"_s, u"Tracking: T1"_s, u"Caja 1"_s, u"EN TRÁNSITO"_s, u"📦"_s, u"Tracking: T2"_s,
                          u"Caja 2"_s, u"EN TRÁNSITO"_s, u"📦"_s, u"Tracking: T3"_s, u"Caja 3"_s, u"EN TRÁNSITO"_s}));
    QCOMPARE(rows(screen, u"recentQuotes"_s),
             QStringList({u"📄"_s, u"Origen: O1"_s, u"Cosa"_s, u"ENVIADA"_s, u"📄"_s, u"Origen: O2"_s, u"Cosa"_s,
                          u"ENVIADA"_s, u"📄"_s, u"Origen: O3"_s, u"Cosa"_s, u"ENVIADA"_s}));
    QVERIFY(!screen.texts().contains(u"ayer"_s));
}

void DashboardViewTest::fewerThanThreeAreAllShown()
{
    answer(packages(2) + "," + quotations(1));
    TestScreen screen(dashboard());
    QTRY_COMPARE(rows(screen, u"recentPackages"_s).size(), 2 * 4);
    QCOMPARE(rows(screen, u"recentQuotes"_s).size(), 4);
}

void DashboardViewTest::missingListsCountZero_data()
{
    QTest::addColumn<QByteArray>("fields");
    QTest::addColumn<int>("paquetes");
    QTest::addColumn<int>("cotizaciones");
    QTest::newRow("no packages") << quotations(2) << 0 << 2;
    QTest::newRow("null packages") << R"("paquetes":null,)" + quotations(2) << 0 << 2;
    QTest::newRow("empty packages") << R"("paquetes":[],)" + quotations(2) << 0 << 2;
    QTest::newRow("no quotations") << packages(2) << 2 << 0;
    QTest::newRow("status is not looked at") << R"("status":"error",)" + packages(2) << 2 << 0;
}

void DashboardViewTest::missingListsCountZero()
{
    QFETCH(QByteArray, fields);
    QFETCH(int, paquetes);
    QFETCH(int, cotizaciones);
    answer(fields);
    TestScreen screen(dashboard());
    QTRY_COMPARE(count(screen, "paqueteCount"), paquetes);
    QTRY_COMPARE(count(screen, "cotizacionCount"), cotizaciones);
    QCOMPARE(rows(screen, u"recentPackages"_s).size(), paquetes * 4);
    QCOMPARE(rows(screen, u"recentQuotes"_s).size(), cotizaciones * 4);
}

void DashboardViewTest::failedFetchClearsWhatWasShown()
{
    const QByteArrayList failures{"", "<html>", R"({"paquetes":[{"tracking":1}]})", R"({"paquetes":"none"})"};
    for (const QByteArray &failure : failures) {
        answer(packages(5) + "," + quotations(4));
        TestScreen screen(dashboard());
        QTRY_COMPARE(count(screen, "paqueteCount"), 5);
        const QStringList before = screen.texts();
        const qsizetype requests = server.requests().size();
        server.on(listing, [&, asked = false](const auto &, const ScriptedServer::AnswerPtr &answer) mutable {
            // Another try would wait here for ever.
            if (!std::exchange(asked, true))
                answer->send(failure);
        });
        appear(screen);
        QTRY_COMPARE(count(screen, "paqueteCount"), 0);
        QTRY_COMPARE(exchangesInFlight(), 0);
        QCOMPARE(server.requests().size(), requests + 1);
        QCOMPARE(count(screen, "cotizacionCount"), 0);
        QVERIFY(rows(screen, u"recentPackages"_s).isEmpty());
        QVERIFY(rows(screen, u"recentQuotes"_s).isEmpty());
        QCOMPARE(screen.texts().size(), before.size() - 24);
    }
}

void DashboardViewTest::laterReplyWins()
{
    server.hold(listing);
    TestScreen screen(dashboard());
    appear(screen);
    waitForRequests(2);
    server.held[1]->send("{" + packages(2) + "}");
    QTRY_COMPARE(count(screen, "paqueteCount"), 2);
    server.held[0]->send("{" + packages(1) + "}");
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
}

void DashboardViewTest::absentFieldsHaveTheirFallbacks()
{
    answer(R"("paquetes":[{}],"cotizaciones":[{}])");
    TestScreen screen(dashboard());
    QTRY_COMPARE(rows(screen, u"recentPackages"_s),
                 QStringList({u"📦"_s, u"Tracking: N/A"_s, u"Sin descripción"_s, u"RECIBIDO"_s}));
    QCOMPARE(rows(screen, u"recentQuotes"_s),
             QStringList({u"📄"_s, u"Origen: N/A"_s, u"Sin descripción"_s, u"PENDIENTE"_s}));
    screen.tap(screen.named(u"Tracking: N/A, Sin descripción, RECIBIDO"_s));
    QVERIFY(opened.isEmpty());
}

void DashboardViewTest::emptyFieldsStayEmpty()
{
    answer(R"("paquetes":[{"tracking":"","descripcion":"","estado":""}])");
    TestScreen screen(dashboard());
    QTRY_COMPARE(rows(screen, u"recentPackages"_s), QStringList({u"📦"_s, u"Tracking: "_s}));
    screen.tap(screen.named(u"Tracking: , , "_s));
    QVERIFY(opened.isEmpty());
}

void DashboardViewTest::badgesAreInUpperCaseWithTheirColours()
{
    answer(R"("paquetes":[{"estado":"en tránsito ñ ß"}],"cotizaciones":[{"estado":"rechazada"}])");
    TestScreen screen(dashboard());
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
    QCOMPARE(rows(screen, u"recentPackages"_s).last(), u"EN TRÁNSITO Ñ SS"_s);
    const auto colour = [&](const QString &section, const QString &text) {
        QColor found;
        const std::function<void(QQuickItem *)> look = [&](QQuickItem *item) {
            if (item->property("text").toString() == text && item->inherits("QQuickText"))
                found = item->property("color").value<QColor>();
            for (QQuickItem *child : item->childItems())
                look(child);
        };
        look(screen.find(section));
        return found;
    };
    QCOMPARE(colour(u"recentPackages"_s, u"EN TRÁNSITO Ñ SS"_s), QColor(0x34, 0xC7, 0x59));
    QCOMPARE(colour(u"recentQuotes"_s, u"RECHAZADA"_s), QColor(0x00, 0x7A, 0xFF));
}

void DashboardViewTest::rowsOfOneTrackingAreAllShown()
{
    answer(R"("paquetes":[{"tracking":"A"},{"tracking":"A"},{}],"cotizaciones":[{"origen":"B"},{"origen":"B"}])");
    TestScreen screen(dashboard());
    QTRY_COMPARE(rows(screen, u"recentPackages"_s).size(), 3 * 4);
    QCOMPARE(rows(screen, u"recentQuotes"_s).size(), 2 * 4);
}

void DashboardViewTest::packagesAreKnownByTrackingAndQuotationsByPosition()
{
    answer(R"("paquetes":[{"tracking":"A"},{"tracking":"A"},{}],"cotizaciones":[{"origen":"B"},{"origen":"B"}])");
    DashboardViewModel viewModel;
    viewModel.cargarDatos();
    QTRY_COMPARE(viewModel.paqueteCount(), 3);
    const auto identities = [](const QAbstractItemModel *model) {
        QVariantList all;
        for (int row = 0; row < model->rowCount(); ++row)
            all.append(model->data(model->index(row, 0), model->roleNames().key("identity")));
        return all;
    };
    QCOMPARE(identities(viewModel.paquetesRecientes()), QVariantList({u"A"_s, u"A"_s, QVariant()}));
    QCOMPARE(identities(viewModel.cotizacionesRecientes()), QVariantList({0, 1}));
}

void DashboardViewTest::packageRowOpensItsTracking()
{
    answer(R"("paquetes":[{"tracking":" MRV  1 "},{"tracking":"N/A"}])");
    TestScreen screen(dashboard());
    QTRY_VERIFY(screen.named(u"Tracking: N/A, Sin descripción, RECIBIDO"_s));
    screen.tap(screen.named(u"Tracking: N/A, Sin descripción, RECIBIDO"_s));
    QVERIFY(opened.isEmpty());
    screen.tap(screen.named(u"Tracking:  MRV  1 , Sin descripción, RECIBIDO"_s));
    QCOMPARE(opened, QList<QUrl>({QUrl(u"https://track.example/MRV%20%201"_s)}));
}

void DashboardViewTest::tapGoesOnThroughAReply_data()
{
    QTest::addColumn<QByteArray>("tracking");
    QTest::addColumn<bool>("opens");
    QTest::newRow("same rows") << QByteArray(R"([{"tracking":"A"},{"tracking":"B"},{"tracking":"C"}])") << true;
    QTest::newRow("it says something else")
        << QByteArray(
               R"([{"tracking":"A"},{"tracking":"B","descripcion":"x","estado":"entregado"},{"tracking":"C"}])")
        << true;
    QTest::newRow("another above it") << QByteArray(R"([{"tracking":"D"},{"tracking":"B"},{"tracking":"C"}])")
                                      << true;
    QTest::newRow("others below it") << QByteArray(R"([{"tracking":"A"},{"tracking":"B"},{"tracking":"D"}])") << true;
    QTest::newRow("none below it") << QByteArray(R"([{"tracking":"A"},{"tracking":"B"}])") << true;
    QTest::newRow("it moves away") << QByteArray(R"([{"tracking":"D"},{"tracking":"A"},{"tracking":"B"}])") << true;
    QTest::newRow("it goes") << QByteArray(R"([{"tracking":"A"},{"tracking":"C"}])") << false;
}

void DashboardViewTest::tapGoesOnThroughAReply()
{
    QFETCH(QByteArray, tracking);
    QFETCH(bool, opens);
    answer(R"("paquetes":[{"tracking":"A"},{"tracking":"B"},{"tracking":"C"}])");
    TestScreen screen(dashboard());
    QTRY_COMPARE(count(screen, "paqueteCount"), 3);
    const QQuickItem *const row = screen.named(u"Tracking: B, Sin descripción, RECIBIDO"_s);
    screen.scrollTo(row);
    const QPoint finger = TestScreen::box(row).center().toPoint();
    QTest::mousePress(&screen.window(), Qt::LeftButton, {}, finger);
    QVERIFY(row->property("down").toBool());
    answer(R"("paquetes":)" + tracking + "," + quotations(1));
    appear(screen);
    QTRY_COMPARE(count(screen, "cotizacionCount"), 1);
    screen.settle();
    QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, finger);
    QCOMPARE(opened, opens ? QList<QUrl>({QUrl(u"https://track.example/B"_s)}) : QList<QUrl>());
}

void DashboardViewTest::focusStaysOnTheRowThroughAReply_data()
{
    QTest::addColumn<QByteArray>("tracking");
    QTest::addColumn<QString>("name");
    const QString same = u"Tracking: B, Sin descripción, RECIBIDO"_s;
    QTest::newRow("same rows") << QByteArray(R"([{"tracking":"A"},{"tracking":"B"},{"tracking":"C"}])") << same;
    QTest::newRow("it says something else")
        << QByteArray(R"([{"tracking":"A"},{"tracking":"B","estado":"entregado"}])")
        << u"Tracking: B, Sin descripción, ENTREGADO"_s;
    QTest::newRow("it moves down") << QByteArray(R"([{"tracking":"D"},{"tracking":"A"},{"tracking":"B"}])") << same;
    QTest::newRow("it moves up") << QByteArray(R"([{"tracking":"B"},{"tracking":"C"}])") << same;
}

void DashboardViewTest::focusStaysOnTheRowThroughAReply()
{
    QFETCH(QByteArray, tracking);
    QFETCH(QString, name);
    answer(R"("paquetes":[{"tracking":"A"},{"tracking":"B"},{"tracking":"C"}])");
    TestScreen screen(dashboard());
    QTRY_COMPARE(count(screen, "paqueteCount"), 3);
    screen.named(u"Tracking: B, Sin descripción, RECIBIDO"_s)->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyPress(&screen.window(), Qt::Key_Space);
    answer(R"("paquetes":)" + tracking + "," + quotations(1));
    appear(screen);
    QTRY_COMPARE(count(screen, "cotizacionCount"), 1);
    screen.settle();
    const QQuickItem *const row = screen.named(name);
    QVERIFY(row);
    QVERIFY(row->hasActiveFocus());
    QVERIFY(row->property("visualFocus").toBool());
    QTest::keyRelease(&screen.window(), Qt::Key_Space);
    QCOMPARE(opened, QList<QUrl>({QUrl(u"https://track.example/B"_s)}));
}

void DashboardViewTest::quotationRowDoesNothing()
{
    answer(quotations(1));
    TestScreen screen(dashboard());
    QTRY_VERIFY(screen.named(u"Origen: O1, Cosa, ENVIADA"_s));
    QQuickItem *const row = screen.named(u"Origen: O1, Cosa, ENVIADA"_s);
    QCOMPARE(QAccessible::queryAccessibleInterface(row)->role(), QAccessible::ListItem);
    screen.tap(row);
    QVERIFY(opened.isEmpty());
    QVERIFY(!row->hasActiveFocus());
}

void DashboardViewTest::searchOpensTheTrackingPage_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("number") << u"MRV-1"_s << QByteArray("https://track.example/MRV-1");
    QTest::newRow("blanks around") << u" \tMRV-1\u00A0 "_s << QByteArray("https://track.example/MRV-1");
    QTest::newRow("line breaks around") << u"\u2028MRV-1\u2029"_s << QByteArray("https://track.example/MRV-1");
    QTest::newRow("blank inside") << u"MRV 1"_s << QByteArray("https://track.example/MRV%201");
    QTest::newRow("blanks inside") << u" MRV  1 \u00A0 2 "_s
                                   << QByteArray("https://track.example/MRV%20%201%20%C2%A0%202");
    QTest::newRow("no escaping of its own") << u"a/b?c=d&e#f"_s << QByteArray("https://track.example/a/b?c=d&e#f");
    QTest::newRow("lower case is a number") << u"n/a"_s << QByteArray("https://track.example/n/a");
    QTest::newRow("empty") << QString() << QByteArray();
    QTest::newRow("blank") << u"  \t "_s << QByteArray();
    QTest::newRow("absent") << u"N/A"_s << QByteArray();
    QTest::newRow("absent with blanks") << u" N/A "_s << QByteArray();
}

void DashboardViewTest::searchOpensTheTrackingPage()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, address);
    TestScreen screen(dashboard());
    screen.type(screen.find(u"trackingText"_s), text);
    screen.tap(screen.find(u"buscar"_s));
    QCOMPARE(opened.size(), address.isEmpty() ? 0 : 1);
    if (!address.isEmpty())
        QCOMPARE(opened.first().toEncoded(), address);
}

void DashboardViewTest::malformedTrackingAddressDoesNothing()
{
    TestDeployment::values().trackingUrl = u"https://[track.example/"_s;
    TestScreen screen(dashboard());
    screen.type(screen.find(u"trackingText"_s), u"MRV-1"_s);
    screen.tap(screen.find(u"buscar"_s));
    QVERIFY(opened.isEmpty());
}

void DashboardViewTest::searchLeavesTheFieldAlone()
{
    TestScreen screen(dashboard());
    QQuickItem *const field = screen.find(u"trackingText"_s);
    screen.type(field, u" MRV-1 "_s);
    screen.key(Qt::Key_Return);
    QVERIFY(opened.isEmpty());
    screen.tap(screen.find(u"buscar"_s));
    QCOMPARE(field->property("text").toString(), u" MRV-1 "_s);
    screen.tap(screen.find(u"buscar"_s));
    QCOMPARE(opened.size(), 2);
}

void DashboardViewTest::greetingFollowsTheStoredName()
{
    TestScreen screen(dashboard());
    QQuickItem *const greeting = screen.find(u"greeting"_s);
    Session::instance().setUserNombre(u"Bruno"_s);
    QCOMPARE(greeting->property("text").toString(), u"Hola, Bruno"_s);
    Session::instance().setUserNombre({});
    QCOMPARE(greeting->property("text").toString(), u"Hola, "_s);
}

void DashboardViewTest::photoComesFromTheStoreAlone()
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(&buffer, "PNG"));

    answer(R"("avatar":")" + png.toBase64() + R"(",)" + packages(1));
    TestScreen screen(dashboard());
    QQuickItem *const photo = screen.find(u"photo"_s);
    QCOMPARE(photo->size(), QSizeF(50, 50));
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
    QVERIFY(!photo->property("decoded").toBool());
    QCOMPARE(Session::instance().userAvatarData(), QByteArray());
    Session::instance().setUserAvatarData(png);
    QTRY_VERIFY(photo->property("decoded").toBool());
    Session::instance().setUserAvatarData("not a picture");
    QTRY_VERIFY(!photo->property("decoded").toBool());
}

void DashboardViewTest::signOutWritesTheNumberOnly()
{
    Session &session = Session::instance();
    session.setUserEmail(u"ana@x"_s);
    session.setUserAvatarData("photo");
    TestScreen screen(dashboard());
    screen.tap(screen.find(u"cerrarSesion"_s));
    QCOMPARE(session.userId(), 0);
    QCOMPARE(session.userNombre(), u"Ana Lucía"_s);
    QCOMPARE(session.userEmail(), u"ana@x"_s);
    QCOMPARE(session.userAvatarData(), "photo");
    QCOMPARE(server.requests().size(), 1);
}

void DashboardViewTest::lateReplyAfterSignOutHurtsNothing()
{
    server.hold(listing);
    TestScreen screen("Loader { sourceComponent: app.someoneSignedIn ? screens.dashboard : screens.login;"
                      " MarovendaAppViewModel { id: app } FirstScreens { id: screens } }");
    waitForRequests(1);
    screen.tap(screen.find(u"cerrarSesion"_s));
    QVERIFY(screen.all(u"paqueteCount"_s).isEmpty());
    const QStringList login = screen.texts();
    server.held.first()->send(R"({"avatar":"AAAA",)" + packages(3) + "," + quotations(3) + "}");
    QTRY_COMPARE(exchangesInFlight(), 0);
    screen.settle();
    QCOMPARE(screen.texts(), login);
    QCOMPARE(Session::instance().userId(), 0);
    QCOMPARE(Session::instance().userNombre(), u"Ana Lucía"_s);
    QCOMPARE(Session::instance().userAvatarData(), QByteArray());
    // Nor does the next customer see anything of it.
    Session::instance().setUserId(43);
    waitForRequests(2);
    QCOMPARE(count(screen, "paqueteCount"), 0);
    QVERIFY(rows(screen, u"recentPackages"_s).isEmpty());
    server.held[1]->send("{" + packages(1) + "}");
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
}

void DashboardViewTest::focusedTileIsBroughtIntoView()
{
    TestScreen screen("NavigationContainer { root: Component { DashboardView { screens: ServiceScreens {} } } }");
    const auto inView = [&](const QString &tile) {
        const QRectF box = TestScreen::box(screen.named(tile));
        return box.left() >= 24 - 0.5 && box.right() <= 366 + 0.5;
    };
    QVERIFY(!inView(u"Dev"_s));
    screen.named(u"Dev"_s)->forceActiveFocus(Qt::TabFocusReason);
    QVERIFY(inView(u"Dev"_s));
    QVERIFY(!inView(u"Casillero"_s));
    screen.named(u"Casillero"_s)->forceActiveFocus(Qt::TabFocusReason);
    QVERIFY(inView(u"Casillero"_s));
    // With its ring; without one the first tile stands at the edge.
    QVERIFY(screen.find(u"tileScroll"_s)->property("contentX").toReal() < -4);
    screen.find(u"cerrarSesion"_s)->forceActiveFocus(Qt::TabFocusReason);
    QCOMPARE(screen.find(u"tileScroll"_s)->property("contentX").toReal(), 0);
}

void DashboardViewTest::captionsOfTilesAreNotBrokenWithinAWord_data()
{
    QTest::addColumn<double>("textScale");
    for (const double scale : {1.0, 1.3, 2.0, 3.0})
        QTest::addRow("%.1f", scale) << scale;
}

void DashboardViewTest::captionsOfTilesAreNotBrokenWithinAWord()
{
    QFETCH(double, textScale);
    const QFont before = QGuiApplication::font();
    QFont font = before;
    font.setPointSizeF(9 * textScale);
    QGuiApplication::setFont(font);
    const auto restore = qScopeGuard([&] { QGuiApplication::setFont(before); });
    TestScreen screen(dashboard());
    for (const QString &caption : {u"Casillero"_s, u"Cotizar"_s, u"Autos"_s, u"Perfil"_s, u"Dev"_s}) {
        const QQuickItem *const tile = screen.named(caption);
        const QList<QQuickItem *> parts = tile->property("contentItem").value<QQuickItem *>()->childItems();
        const QQuickItem *const text = parts.last();
        QCOMPARE(text->property("text").toString(), caption);
        QCOMPARE(text->property("lineCount").toInt(), 1);
        // No wider than the word needs.
        const qreal word = text->property("contentWidth").toReal();
        QVERIFY2(tile->width() == 64 || tile->width() <= word + 1, qUtf8Printable(caption));
        QVERIFY(tile->width() >= 64);
    }
}

void DashboardViewTest::tappedButtonIsNotScrolledTo()
{
    // Two pixels of the button are in view when it is tapped: it stays there, and so it is pressed.
    TestScreen screen(dashboard(), {390, 480});
    QQuickItem *const button = screen.find(u"buscar"_s);
    QQuickItem *area = button->parentItem();
    while (!area->inherits("QQuickFlickable"))
        area = area->parentItem();
    screen.type(screen.find(u"trackingText"_s), u"MRV-1"_s);
    screen.scrollTo(button);
    area->setProperty("contentY", area->property("contentY").toReal() + TestScreen::box(button).top() - 478);
    screen.settle();
    const QRectF box = TestScreen::box(button);
    QCOMPARE(box.top(), 478);
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, QPoint(int(box.center().x()), 479));
    QTRY_COMPARE(opened.size(), 1);
    // A reply that changes the height moves nothing to it either.
    screen.find(u"cerrarSesion"_s)->forceActiveFocus(Qt::TabFocusReason);
    screen.settle();
    const qreal away = 100;
    area->setProperty("contentY", away);
    answer(packages(3) + "," + quotations(3));
    QMetaObject::invokeMethod(screen.root()->property("current").value<QQuickItem *>(), "appeared");
    QTRY_COMPARE(count(screen, "paqueteCount"), 3);
    screen.settle();
    QCOMPARE(area->property("contentY").toReal(), away);
}

void DashboardViewTest::everythingIsReadInOrder()
{
    answer(packages(1) + "," + quotations(1));
    TestScreen screen(dashboard(), {390, 1200});
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
    const QStringList order{u"Foto de perfil"_s,
                            u"Hola, Ana Lucía"_s,
                            u"Bienvenido"_s,
                            u"Cerrar sesión"_s,
                            u"Mi Resumen"_s,
                            u"1 Paquetes"_s,
                            u"1 Cotizaciones"_s,
                            u"Casillero"_s,
                            u"Cotizar"_s,
                            u"Autos"_s,
                            u"Perfil"_s,
                            u"Dev"_s,
                            u"Envíos Recientes"_s,
                            u"Ver todos"_s,
                            u"Tracking: T1, Caja 1, EN TRÁNSITO"_s,
                            u"Mis Cotizaciones"_s,
                            u"Ver todas"_s,
                            u"Origen: O1, Cosa, ENVIADA"_s,
                            u"Rastreo de Paquetes"_s,
                            u"Número de tracking..."_s,
                            u"Buscar"_s};
    QCOMPARE(screen.names(), order);
}

void DashboardViewTest::markupFromTheServiceIsShownAsItStands()
{
    Session::instance().setUserNombre(u"<b>Ana</b>"_s);
    answer(R"("paquetes":[{"tracking":"<i>1</i>","descripcion":"<a href='x'>y</a>","estado":"&amp;"}])");
    TestScreen screen(dashboard());
    QTRY_COMPARE(rows(screen, u"recentPackages"_s),
                 QStringList({u"📦"_s, u"Tracking: <i>1</i>"_s, u"<a href='x'>y</a>"_s, u"&AMP;"_s}));
    const std::function<void(QQuickItem *)> check = [&](QQuickItem *item) {
        if (item->inherits("QQuickText"))
            QCOMPARE(item->property("textFormat").toInt(), int(Qt::PlainText));
        for (QQuickItem *child : item->childItems())
            check(child);
    };
    check(screen.root());
}

void DashboardViewTest::nothingIsCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("narrow") << QSize(320, 480);
    QTest::newRow("phone") << QSize(390, 844);
    QTest::newRow("wide") << QSize(1280, 800);
}

void DashboardViewTest::nothingIsCut()
{
    QFETCH(QSize, size);
    Session::instance().setUserNombre(u"María Fernanda Montserrat del Carmen Echeverría-Gutiérrez"_s);
    answer(R"("paquetes":[{"tracking":")" + QByteArray(60, '7') + R"(","descripcion":")" +
           QByteArray("Repuestos electrónicos ").repeated(6) +
           R"(","estado":"pendiente de documentación aduanera"}])");
    TestScreen screen(dashboard(), size);
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
    screen.settle();
    const QRectF window{QPointF(), QSizeF(size)};
    const std::function<void(const QQuickItem *)> check = [&](const QQuickItem *item) {
        if (item->objectName() == u"tiles"_s)
            return; // scrolls sideways
        if (item->inherits("QQuickText") && item->isVisible()) {
            const QRectF box = TestScreen::box(item);
            const QByteArray what = item->property("text").toString().toUtf8();
            QVERIFY2(box.left() >= 0 && box.right() <= window.right() + 0.5, what.constData());
            QVERIFY2(item->property("contentWidth").toReal() <= item->width() + 1, what.constData());
            QVERIFY2(!item->property("truncated").toBool() || what.startsWith("N\u00FAmero"), what.constData());
        }
        for (const QQuickItem *child : item->childItems())
            check(child);
    };
    check(screen.root());
    QVERIFY(screen.find(u"summary"_s)->width() <= 600 - 48);
}

MAROVENDA_TEST_MAIN(DashboardViewTest)
#include "tst_DashboardView.moc"
