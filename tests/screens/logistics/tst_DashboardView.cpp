#include "DashboardViewModel.h"
#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestDeployment.h"
#include "TestScreen.h"

#include <QAccessible>
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

    void everythingIsReadInOrder();
    void fetchesEachTimeItComesOnScreen();
    void replyIsShown_data();
    void replyIsShown();
    void countsAreNotGrouped();
    void packagesAreKnownByTrackingAndQuotationsByPosition();
    void rowsOpenTheirTracking();
    void pressGoesOnThroughAReply_data();
    void pressGoesOnThroughAReply();
    void searchOpensTheTrackingPage_data();
    void searchOpensTheTrackingPage();
    void headerFollowsTheSession();
    void signOutWritesTheNumberOnly();
    void focusedTileIsBroughtIntoView();
    void captionsOfTilesAreNotBrokenWithinAWord();
    void tappedButtonIsNotScrolledTo();

private:
    static constexpr auto listing = "/api_paquetes.php";
    inline static const QByteArray view = TestScreen::alone("DashboardView { screens: ServiceScreens {} }");

    static QByteArray packages(int count)
    {
        QByteArrayList rows;
        for (int i = 1; i <= count; ++i)
            rows.append(R"({"tracking":"T)" + QByteArray::number(i) +
                        R"(","descripcion":"Caja","estado":"en tránsito","fecha_recibido":"ayer"})");
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

    /// What a section shows below its title and its link.
    static QStringList rows(const TestScreen &screen, const QString &section)
    {
        return screen.texts(screen.find(section)).sliced(2);
    }
    static void appear(const TestScreen &screen)
    {
        QMetaObject::invokeMethod(screen.root()->property("current").value<QQuickItem *>(), "appeared");
    }
    static int count(const TestScreen &screen, const char *block)
    {
        return screen.find(QString::fromLatin1(block))->property("count").toInt();
    }
};

void DashboardViewTest::everythingIsReadInOrder()
{
    server.hold(listing);
    const TestScreen screen(view, {390, 1200});
    QStringList names{u"Foto de perfil"_s,
                      u"Hola, Ana Lucía"_s,
                      u"Bienvenido"_s,
                      u"Cerrar sesión"_s,
                      u"Mi Resumen"_s,
                      u"0 Paquetes"_s,
                      u"0 Cotizaciones"_s,
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
    QCOMPARE(screen.names(), names);
    waitForRequests(1);
    server.held.first()->send("{" + packages(1) + "," + quotations(1) + "}");
    names[5] = u"1 Paquetes"_s;
    names[6] = u"1 Cotizaciones"_s;
    names.insert(14, u"Tracking: T1, Caja, EN TRÁNSITO"_s);
    names.insert(17, u"Origen: O1, Cosa, ENVIADA"_s);
    QTRY_COMPARE(screen.names(), names);
    // No button, unlike that of a package.
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(names[17]))->role(), QAccessible::ListItem);
}

void DashboardViewTest::fetchesEachTimeItComesOnScreen()
{
    answer(packages(2) + "," + quotations(2));
    const TestScreen screen(view);
    QTRY_COMPARE(count(screen, "paqueteCount"), 2);
    QCOMPARE(server.requests().first().method, "GET");
    QCOMPARE(server.requests().first().path, "/api_paquetes.php?user_id=42");
    const QStringList shown = screen.texts();
    Session::instance().setUserId(43);
    server.hold(listing);
    appear(screen);
    appear(screen);
    waitForRequests(3);
    QCOMPARE(server.requests()[1].path, "/api_paquetes.php?user_id=43");
    // What was shown stays until a reply comes, and the last that comes is shown.
    QCOMPARE(screen.texts(), shown);
    server.held[1]->send("{" + packages(3) + "}");
    QTRY_COMPARE(count(screen, "paqueteCount"), 3);
    server.held[0]->send("{" + packages(1) + "}");
    QTRY_COMPARE(count(screen, "paqueteCount"), 1);
}

void DashboardViewTest::replyIsShown_data()
{
    const auto row = columns<QByteArray, int, int, QStringList, QStringList>(
        "reply", "paqueteCount", "cotizacionCount", "packageRows", "quotationRows");
    const auto package = [](const QString &tracking, const QString &detail = u"Caja"_s,
                            const QString &badge = u"EN TRÁNSITO"_s) {
        return QStringList{u"📦"_s, u"Tracking: "_s + tracking, detail, badge};
    };
    const auto quotation = [](const QString &origen, const QString &detail = u"Cosa"_s,
                              const QString &badge = u"ENVIADA"_s) {
        return QStringList{u"📄"_s, u"Origen: "_s + origen, detail, badge};
    };
    row("the first three", "{" + packages(5) + "," + quotations(4) + "}", 5, 4,
        package(u"T1"_s) + package(u"T2"_s) + package(u"T3"_s),
        quotation(u"O1"_s) + quotation(u"O2"_s) + quotation(u"O3"_s));
    row("fewer, whatever the status", R"({"status":"error",)" + packages(2) + "," + quotations(1) + "}", 2, 1,
        package(u"T1"_s) + package(u"T2"_s), quotation(u"O1"_s));
    row("no packages", "{" + quotations(1) + "}", 0, 1, {}, quotation(u"O1"_s));
    row("no quotations", R"({"cotizaciones":[],)" + packages(1) + "}", 1, 0, package(u"T1"_s), {});
    row("no bytes", "", 0, 0, {}, {});
    row("absent fields, some of them twice", R"({"paquetes":[{},{}],"cotizaciones":[{},{}]})", 2, 2,
        package(u"N/A"_s, u"Sin descripción"_s, u"RECIBIDO"_s) +
            package(u"N/A"_s, u"Sin descripción"_s, u"RECIBIDO"_s),
        quotation(u"N/A"_s, u"Sin descripción"_s, u"PENDIENTE"_s) +
            quotation(u"N/A"_s, u"Sin descripción"_s, u"PENDIENTE"_s));
    // An empty text is no text on show.
    row("empty fields", R"({"paquetes":[{"tracking":"","descripcion":"","estado":""}]})", 1, 0,
        {u"📦"_s, u"Tracking: "_s}, {});
    row("markup", R"({"paquetes":[{"tracking":"<i>1</i>","descripcion":"<a href='x'>y</a>","estado":"ß &amp;"}]})", 1,
        0, package(u"<i>1</i>"_s, u"<a href='x'>y</a>"_s, u"SS &AMP;"_s), {});
}

void DashboardViewTest::replyIsShown()
{
    QFETCH(const QByteArray, reply);
    answer(packages(7) + "," + quotations(7));
    const TestScreen screen(view);
    QTRY_COMPARE(count(screen, "paqueteCount"), 7);
    server.reply(listing, reply);
    appear(screen);
    QFETCH(const int, paqueteCount);
    QTRY_COMPARE(count(screen, "paqueteCount"), paqueteCount);
    QTEST(count(screen, "cotizacionCount"), "cotizacionCount");
    QTEST(rows(screen, u"recentPackages"_s), "packageRows");
    QTEST(rows(screen, u"recentQuotes"_s), "quotationRows");
    const std::function<void(QQuickItem *)> checkPlain = [&](QQuickItem *item) {
        if (item->inherits("QQuickText"))
            QCOMPARE(item->property("textFormat").toInt(), int(Qt::PlainText));
        for (QQuickItem *child : item->childItems())
            checkPlain(child);
    };
    checkPlain(screen.root());
}

void DashboardViewTest::countsAreNotGrouped()
{
    const auto restore = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Panama));
    QCOMPARE(QLocale().toString(1234), u"1,234"_s);
    answer(packages(1234) + "," + quotations(4321));
    const TestScreen screen(view);
    QTRY_COMPARE(screen.texts(screen.find(u"paqueteCount"_s)), QStringList({u"1234"_s, u"Paquetes"_s}));
    QCOMPARE(screen.texts(screen.find(u"cotizacionCount"_s)), QStringList({u"4321"_s, u"Cotizaciones"_s}));
    QVERIFY(screen.named(u"1234 Paquetes"_s));
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

void DashboardViewTest::rowsOpenTheirTracking()
{
    answer(R"("paquetes":[{"tracking":" MRV  1 "},{},{"tracking":""}],)" + quotations(1));
    const TestScreen screen(view);
    QTRY_COMPARE(count(screen, "paqueteCount"), 3);
    for (const QString &row : {u"Tracking: N/A, Sin descripción, RECIBIDO"_s,
                               u"Tracking: , Sin descripción, RECIBIDO"_s, u"Origen: O1, Cosa, ENVIADA"_s})
        screen.tap(screen.named(row));
    QVERIFY(opened.isEmpty());
    screen.tap(screen.named(u"Tracking:  MRV  1 , Sin descripción, RECIBIDO"_s));
    QCOMPARE(opened, QList<QUrl>({QUrl(u"https://track.example/MRV%20%201"_s)}));
}

void DashboardViewTest::pressGoesOnThroughAReply_data()
{
    const auto add = columns<bool, QByteArray, bool>("byKey", "reply", "opens");
    for (const bool byKey : {false, true}) {
        const auto row = [&](const QByteArray &name, const QByteArray &rows, bool opens = true) {
            add((byKey ? "key: " : "finger: ") + name, byKey, rows, opens);
        };
        row("same rows", R"([{"tracking":"A"},{"tracking":"B"},{"tracking":"C"}])");
        row("the row says something else",
            R"([{"tracking":"A"},{"tracking":"B","estado":"entregado"},{"tracking":"C"}])");
        row("another above it", R"([{"tracking":"D"},{"tracking":"B"},{"tracking":"C"}])");
        row("none below it", R"([{"tracking":"A"},{"tracking":"B"}])");
        row("it moves down", R"([{"tracking":"D"},{"tracking":"A"},{"tracking":"B"}])");
        row("it goes", R"([{"tracking":"A"},{"tracking":"C"}])", false);
    }
}

void DashboardViewTest::pressGoesOnThroughAReply()
{
    QFETCH(const bool, byKey);
    QFETCH(const QByteArray, reply);
    QFETCH(const bool, opens);
    answer(R"("paquetes":[{"tracking":"A"},{"tracking":"B"},{"tracking":"C"}])");
    const TestScreen screen(view);
    QTRY_COMPARE(count(screen, "paqueteCount"), 3);
    const QPointer<QQuickItem> row = screen.named(u"Tracking: B, Sin descripción, RECIBIDO"_s);
    screen.scrollTo(row);
    const QPoint finger = TestScreen::box(row).center().toPoint();
    if (byKey) {
        row->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyPress(&screen.window(), Qt::Key_Space);
    } else {
        QTest::mousePress(&screen.window(), Qt::LeftButton, {}, finger);
    }
    QVERIFY(row->property("down").toBool());
    answer(R"("paquetes":)" + reply + "," + quotations(1));
    appear(screen);
    QTRY_COMPARE(count(screen, "cotizacionCount"), 1);
    screen.settle();
    QCOMPARE(!row.isNull(), opens);
    if (byKey && row) {
        QVERIFY(row->hasActiveFocus());
        QVERIFY(row->property("visualFocus").toBool());
    }
    if (byKey)
        QTest::keyRelease(&screen.window(), Qt::Key_Space);
    else
        QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, finger);
    QCOMPARE(opened, opens ? QList<QUrl>({QUrl(u"https://track.example/B"_s)}) : QList<QUrl>());
}

void DashboardViewTest::searchOpensTheTrackingPage_data()
{
    const auto row = columns<QString, QByteArray>("text", "number");
    row("blanks around", u" \tMRV-1\u00A0\u2029"_s, "MRV-1");
    row("blanks inside", u" MRV  1 \u00A0 2 "_s, "MRV%20%201%20%C2%A0%202");
    row("no escaping of its own", u"a/b?c=d&e#f"_s, "a/b?c=d&e#f");
    row("lower case is a number", u"n/a"_s, "n/a");
    row("empty", QString(), "");
    row("blank", u"  \t "_s, "");
    row("absent, blanks around", u" N/A "_s, "");
}

void DashboardViewTest::searchOpensTheTrackingPage()
{
    QFETCH(const QString, text);
    QFETCH(const QByteArray, number);
    const TestScreen screen(view);
    screen.enter(u"trackingText"_s, text);
    screen.key(Qt::Key_Return);
    QVERIFY(opened.isEmpty());
    for (int press = 1; press <= 2; ++press) {
        screen.press(u"buscar"_s);
        QCOMPARE(opened.size(), number.isEmpty() ? 0 : press);
        QCOMPARE(screen.text(u"trackingText"_s), text);
    }
    if (!number.isEmpty())
        QCOMPARE(opened.first().toEncoded(), "https://track.example/" + number);
}

void DashboardViewTest::headerFollowsTheSession()
{
    const TestScreen screen(view);
    const auto photo = [&] { return screen.find(u"photo"_s)->property("photo").toByteArray(); };
    QCOMPARE(photo(), QByteArray());
    Session::instance().setUserNombre({});
    QCOMPARE(screen.text(u"greeting"_s), u"Hola, "_s);
    Session::instance().setUserAvatarData("photo");
    QCOMPARE(photo(), "photo");
}

void DashboardViewTest::signOutWritesTheNumberOnly()
{
    Session &session = Session::instance();
    session.setUserEmail(u"ana@x"_s);
    session.setUserAvatarData("photo");
    const TestScreen screen(view);
    screen.press(u"cerrarSesion"_s);
    QCOMPARE(session.userId(), 0);
    QCOMPARE(session.userNombre(), u"Ana Lucía"_s);
    QCOMPARE(session.userEmail(), u"ana@x"_s);
    QCOMPARE(session.userAvatarData(), "photo");
}

void DashboardViewTest::focusedTileIsBroughtIntoView()
{
    const TestScreen screen(view);
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

void DashboardViewTest::captionsOfTilesAreNotBrokenWithinAWord()
{
    for (const double textScale : {1.0, 3.0}) {
        const TextScale scale(textScale);
        const TestScreen screen(view);
        for (const QString &caption : {u"Casillero"_s, u"Cotizar"_s, u"Autos"_s, u"Perfil"_s, u"Dev"_s}) {
            const QQuickItem *const tile = screen.named(caption);
            const QQuickItem *const text = tile->property("contentItem").value<QQuickItem *>()->childItems().last();
            QCOMPARE(text->property("text").toString(), caption);
            QCOMPARE(text->property("lineCount").toInt(), 1);
            // No wider than the word needs.
            const qreal word = text->property("contentWidth").toReal();
            QVERIFY2(tile->width() >= 64 && tile->width() <= std::max(word + 1, 64.0), qUtf8Printable(caption));
        }
    }
}

void DashboardViewTest::tappedButtonIsNotScrolledTo()
{
    // Two pixels of the button are in view when it is tapped: it stays there, and so it is pressed.
    const TestScreen screen(view, {390, 480});
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
    appear(screen);
    QTRY_COMPARE(count(screen, "paqueteCount"), 3);
    screen.settle();
    QCOMPARE(area->property("contentY").toReal(), away);
}

MAROVENDA_TEST(DashboardViewTest)
#include "tst_DashboardView.moc"
