#include "FormTest.h"
#include "MarovendaTest.h"

#include <QAbstractItemModel>
#include <QAccessible>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

/// The two list screens, each with the reply's other list beside its own.
class ListViewsTest : public FormTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { signIn(); }
    void cleanup() { ServiceTest::cleanup(); }

    void packagesAreAllShownInOrder();
    void quotationsAreAllShownInOrder();
    void absentFieldsHaveTheirFallbacks();
    void rowsOfOneIdentityAreAllShown();
    void emptyPackageListIsBlank_data();
    void emptyPackageListIsBlank();
    void emptyQuotationListSaysSo_data();
    void emptyQuotationListSaysSo();
    void emptyTextIsThereFromTheStart();
    void failureEmptiesWhatWasShown_data();
    void failureEmptiesWhatWasShown();
    void everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply_data();
    void everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply();
    void tapOnARowOpensNothing();
    void rowsAreHeardAsOneElementEach();
    void rolesAreTheFieldsOfTheRecord();
    void onlyVisibleRowsExist();
    void titleScrollsAwayAndComesBackInTheBar();
    void longTextsAreNotCut();
    void arrowKeysWalkTheRows();
    void rowsStayWhereTheyAreThroughAReply_data();
    void rowsStayWhereTheyAreThroughAReply();
    void newRowsAreSeenAtTheTop_data();
    void newRowsAreSeenAtTheTop();
    void groupKeepsItsShapeThroughAReply();

private:
    static constexpr auto listing = "/api_paquetes.php";
    static QByteArray list(const QByteArray &view)
    {
        return "NavigationContainer { root: Component { AppScreen {} } Component.onCompleted: push(list);"
               " property Component list: Component { " +
               view + " { objectName: 'list' } } }";
    }
    static QByteArray packages() { return list("MisPaquetesView"); }
    static QByteArray quotations() { return list("MisCotizacionesView"); }
    static int count(TestScreen &screen) { return screen.find(u"rows"_s)->property("count").toInt(); }
    /// What is shown below the large title.
    static QStringList rows(TestScreen &screen)
    {
        QStringList texts = screen.texts(screen.find(u"rows"_s));
        texts.removeAll(u"Mis Paquetes"_s);
        texts.removeAll(u"Mis Cotizaciones"_s);
        return texts;
    }
    static QByteArray manyPackages(int count)
    {
        QByteArrayList rows;
        for (int i = 1; i <= count; ++i)
            rows.append(R"({"tracking":"T)" + QByteArray::number(i) +
                        R"(","descripcion":"Caja","estado":"recibido"})");
        return R"({"paquetes":[)" + rows.join(',') + "]}";
    }
    static void addScreens()
    {
        QTest::addColumn<QByteArray>("view");
        QTest::newRow("packages") << QByteArray("MisPaquetesView");
        QTest::newRow("quotations") << QByteArray("MisCotizacionesView");
    }
    /// As many packages as quotations.
    static QByteArray bothLists(int count) { return numbered(1, count, "recibido"); }
    /// Packages T1, T2 ... and quotations of those numbers, of a state.
    static QByteArray numbered(int first, int last, const QByteArray &state)
    {
        QByteArrayList packages, quotations;
        for (int i = first; i <= last; ++i) {
            const QByteArray number = QByteArray::number(i);
            packages.append(R"({"tracking":"T)" + number + R"(","descripcion":"Caja","estado":")" + state + R"("})");
            quotations.append(R"({"origen":"O","descripcion":"Q)" + number + R"(","estado":")" + state + R"("})");
        }
        return R"({"paquetes":[)" + packages.join(',') + R"(],"cotizaciones":[)" + quotations.join(',') + "]}";
    }
    static void appear(TestScreen &screen) { QMetaObject::invokeMethod(screen.find(u"list"_s), "appeared"); }
    static void settle(TestScreen &screen)
    {
        QTRY_VERIFY(!screen.root()->property("moving").toBool());
        screen.settle();
    }
};

void ListViewsTest::packagesAreAllShownInOrder()
{
    server.reply(
        listing,
        R"({"status":"error","cotizaciones":[{"origen":"O"}],"paquetes":[{"tracking":"B","descripcion":"b","estado":"en tránsito"},)"
        R"({"tracking":"A"},{"tracking":"D"},{"tracking":"C"},{"tracking":"E","fecha_recibido":"ayer"}]})");
    TestScreen screen(packages());
    QTRY_COMPARE(count(screen), 5);
    settle(screen);
    QCOMPARE(server.requests().first().path, "/api_paquetes.php?user_id=42");
    const QStringList shown = rows(screen);
    QCOMPARE(shown.first(3), QStringList({u"Tracking: B"_s, u"EN TRÁNSITO"_s, u"b"_s}));
    QCOMPARE(shown.filter(u"Tracking: "_s),
             QStringList({u"Tracking: B"_s, u"Tracking: A"_s, u"Tracking: D"_s, u"Tracking: C"_s, u"Tracking: E"_s}));
    QVERIFY(!shown.contains(u"ayer"_s));
}

void ListViewsTest::quotationsAreAllShownInOrder()
{
    server.reply(
        listing,
        R"({"paquetes":[{"tracking":"T"}],"cotizaciones":[{"origen":"O","descripcion":"d1","estado":"enviada"},)"
        R"({"descripcion":"d2"},{"descripcion":"d3"},{"descripcion":"d4"},{"descripcion":"d5"}]})");
    TestScreen screen(quotations());
    QTRY_COMPARE(count(screen), 5);
    settle(screen);
    QCOMPARE(rows(screen).first(3), QStringList({u"d1"_s, u"ENVIADA"_s, u"Origen: O"_s}));
    QCOMPARE(rows(screen).filter(QRegularExpression(u"^d\\d$"_s)),
             QStringList({u"d1"_s, u"d2"_s, u"d3"_s, u"d4"_s, u"d5"_s}));
}

void ListViewsTest::absentFieldsHaveTheirFallbacks()
{
    server.reply(listing, R"({"paquetes":[{}],"cotizaciones":[{}]})");
    TestScreen first(packages());
    QTRY_COMPARE(rows(first), QStringList({u"Tracking: N/A"_s, u"RECIBIDO"_s, u"Sin descripción"_s}));
    TestScreen second(quotations());
    QTRY_COMPARE(rows(second), QStringList({u"Cotización"_s, u"PENDIENTE"_s, u"Origen: N/A"_s}));
}

void ListViewsTest::rowsOfOneIdentityAreAllShown()
{
    server.reply(
        listing,
        R"({"paquetes":[{"tracking":"A"},{"tracking":"A"},{},{}],"cotizaciones":[{"origen":"B"},{"origen":"B"}]})");
    TestScreen first(packages());
    QTRY_COMPARE(count(first), 4);
    settle(first);
    QCOMPARE(rows(first).filter(u"Tracking: A"_s).size(), 2);
    QCOMPARE(rows(first).filter(u"Tracking: N/A"_s).size(), 2);
    const auto identity = [](TestScreen &screen, int row) {
        const auto *const model = screen.find(u"rows"_s)->property("model").value<QAbstractItemModel *>();
        return model->data(model->index(row, 0), model->roleNames().key("identity"));
    };
    QCOMPARE(identity(first, 0), identity(first, 1));
    QCOMPARE(identity(first, 2), identity(first, 3));
    TestScreen second(quotations());
    QTRY_COMPARE(count(second), 2);
    QCOMPARE(identity(second, 0).toInt(), 0);
    QCOMPARE(identity(second, 1).toInt(), 1);
}

void ListViewsTest::emptyPackageListIsBlank_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("no bytes") << QByteArray();
    QTest::newRow("not JSON") << QByteArray("oops");
    QTest::newRow("absent") << QByteArray(R"({"cotizaciones":[{}]})");
    QTest::newRow("null") << QByteArray(R"({"paquetes":null})");
    QTest::newRow("empty") << QByteArray(R"({"paquetes":[]})");
    QTest::newRow("wrong row") << QByteArray(R"({"paquetes":[{"tracking":"A"},{"tracking":1}]})");
}

void ListViewsTest::emptyPackageListIsBlank()
{
    QFETCH(QByteArray, reply);
    server.reply(listing, manyPackages(1));
    TestScreen screen(packages());
    QTRY_COMPARE(count(screen), 1);
    server.reply(listing, reply);
    appear(screen);
    QTRY_COMPARE(count(screen), 0);
    settle(screen);
    QCOMPARE(rows(screen), QStringList());
    QCOMPARE(screen.texts(), QStringList({u"Atrás"_s, u"Mis Paquetes"_s}));
}

void ListViewsTest::emptyQuotationListSaysSo_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("no bytes") << QByteArray();
    QTest::newRow("not JSON") << QByteArray("oops");
    QTest::newRow("absent") << QByteArray(R"({"paquetes":[{}]})");
    QTest::newRow("null") << QByteArray(R"({"cotizaciones":null})");
    QTest::newRow("empty") << QByteArray(R"({"cotizaciones":[]})");
    QTest::newRow("wrong row") << QByteArray(R"({"cotizaciones":[{"origen":1}]})");
}

void ListViewsTest::emptyQuotationListSaysSo()
{
    QFETCH(QByteArray, reply);
    server.reply(listing, R"({"cotizaciones":[{"origen":"B"}]})");
    TestScreen screen(quotations());
    QTRY_COMPARE(count(screen), 1);
    settle(screen);
    QVERIFY(!rows(screen).contains(u"No tienes cotizaciones registradas."_s));
    server.reply(listing, reply);
    appear(screen);
    QTRY_COMPARE(count(screen), 0);
    QTRY_COMPARE(rows(screen), QStringList({u"No tienes cotizaciones registradas."_s}));
    QVERIFY(screen.named(u"No tienes cotizaciones registradas."_s));
}

void ListViewsTest::emptyTextIsThereFromTheStart()
{
    server.hold(listing);
    TestScreen screen(quotations());
    QCOMPARE(rows(screen), QStringList({u"No tienes cotizaciones registradas."_s}));
    const auto *const text = screen.named(u"No tienes cotizaciones registradas."_s);
    QCOMPARE(text->property("color").value<QColor>(), QColor(0x8E, 0x8E, 0x93));
}

void ListViewsTest::failureEmptiesWhatWasShown_data() { addScreens(); }

void ListViewsTest::failureEmptiesWhatWasShown()
{
    QFETCH(QByteArray, view);
    server.reply(listing, bothLists(3));
    TestScreen screen(list(view));
    QTRY_COMPARE(count(screen), 3);
    server.on(listing,
              [](const ScriptedServer::Request &, const ScriptedServer::AnswerPtr &answer) { answer->close(); });
    appear(screen);
    QTRY_COMPARE(count(screen), 0);
}

void ListViewsTest::everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply_data() { addScreens(); }

void ListViewsTest::everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply()
{
    QFETCH(QByteArray, view);
    server.reply(listing, bothLists(2));
    TestScreen screen(list(view));
    QTRY_COMPARE(count(screen), 2);
    settle(screen);
    const QStringList shown = rows(screen);
    Session::instance().setUserId(43);
    server.hold(listing);
    appear(screen);
    QTRY_COMPARE(server.held.size(), 1);
    QCOMPARE(server.requests().last().path, "/api_paquetes.php?user_id=43");
    QCOMPARE(count(screen), 2);
    QCOMPARE(rows(screen), shown);
    server.held.first()->send(bothLists(3));
    QTRY_COMPARE(count(screen), 3);
}

void ListViewsTest::tapOnARowOpensNothing()
{
    server.reply(listing, manyPackages(3));
    TestScreen screen(packages());
    QTRY_COMPARE(count(screen), 3);
    settle(screen);
    screen.tap(screen.named(u"Tracking: T2, Caja, RECIBIDO"_s));
    QVERIFY(opened.isEmpty());
    QCOMPARE(screen.root()->property("depth").toInt(), 2);
}

void ListViewsTest::rowsAreHeardAsOneElementEach()
{
    server.reply(
        listing,
        R"({"paquetes":[{"tracking":"A","descripcion":"x","estado":"recibido"}],"cotizaciones":[{"origen":"O","descripcion":"x","estado":"enviada"}]})");
    TestScreen first(packages());
    QTRY_COMPARE(count(first), 1);
    settle(first);
    QTRY_COMPARE(first.names(),
                 QStringList({u"Atrás"_s, u"Mis Paquetes"_s, u"Mis Paquetes"_s, u"Tracking: A, x, RECIBIDO"_s}));
    QCOMPARE(QAccessible::queryAccessibleInterface(first.named(u"Tracking: A, x, RECIBIDO"_s))->role(),
             QAccessible::ListItem);
    TestScreen second(quotations());
    QTRY_VERIFY(second.named(u"x, ENVIADA, Origen: O"_s));
}

void ListViewsTest::rolesAreTheFieldsOfTheRecord()
{
    TestScreen first(packages());
    TestScreen second(quotations());
    const auto roles = [](TestScreen &screen) {
        const auto *const model = screen.find(u"rows"_s)->property("model").value<QAbstractItemModel *>();
        QByteArrayList names = model->roleNames().values();
        std::sort(names.begin(), names.end());
        return names;
    };
    QCOMPARE(roles(first), QByteArrayList({"descripcion", "estado", "fecha_recibido", "identity", "tracking"}));
    QCOMPARE(roles(second), QByteArrayList({"descripcion", "estado", "identity", "origen"}));
}

void ListViewsTest::onlyVisibleRowsExist()
{
    server.reply(listing, manyPackages(100'000));
    TestScreen screen(packages());
    QTRY_COMPARE_WITH_TIMEOUT(count(screen), 100'000, 60'000);
    settle(screen);
    QQuickItem *const list = screen.find(u"rows"_s);
    const auto items = [&] { return list->property("contentItem").value<QQuickItem *>()->childItems().size(); };
    QVERIFY2(items() < 60, qPrintable(QString::number(items())));
    QMetaObject::invokeMethod(list, "positionViewAtEnd");
    QTRY_VERIFY(rows(screen).contains(u"Tracking: T100000"_s));
    QVERIFY2(items() < 60, qPrintable(QString::number(items())));
    QMetaObject::invokeMethod(list, "positionViewAtBeginning");
    QTRY_VERIFY(rows(screen).contains(u"Tracking: T1"_s));
}

void ListViewsTest::titleScrollsAwayAndComesBackInTheBar()
{
    server.reply(listing, manyPackages(60));
    TestScreen screen(packages());
    QTRY_COMPARE(count(screen), 60);
    settle(screen);
    QQuickItem *const list = screen.find(u"rows"_s);
    const QRectF area = TestScreen::box(list);
    // Which of the titles are in the bar, and which in view below it.
    const auto titles = [&] {
        QStringList found;
        const std::function<void(const QQuickItem *)> look = [&](const QQuickItem *item) {
            if (!item->isVisible())
                return;
            const QRectF box = TestScreen::box(item);
            if (item->inherits("QQuickText") && item->property("text").toString() == u"Mis Paquetes"_s) {
                if (box.bottom() <= area.top())
                    found.append(list->isAncestorOf(item) ? u"scrolled away"_s : u"bar"_s);
                else
                    found.append(list->isAncestorOf(item) && box.top() >= area.top() ? u"large"_s : u"elsewhere"_s);
            }
            for (const QQuickItem *child : item->childItems())
                look(child);
        };
        look(screen.root());
        found.removeAll(u"scrolled away"_s);
        return found;
    };
    QCOMPARE(titles(), QStringList(u"large"_s));
    list->setProperty("contentY", list->property("originY").toReal() + 400);
    QTRY_COMPARE(titles(), QStringList(u"bar"_s));
    QVERIFY(screen.named(u"Mis Paquetes"_s));
    list->setProperty("contentY", list->property("originY").toReal());
    QTRY_COMPARE(titles(), QStringList(u"large"_s));
}

void ListViewsTest::longTextsAreNotCut()
{
    server.reply(listing, R"({"paquetes":[{"tracking":")" + QByteArray(70, '7') + R"(","descripcion":")" +
                              QByteArray("Repuestos electrónicos ").repeated(10) +
                              R"(","estado":"pendiente de documentación aduanera"}]})");
    TestScreen screen(packages(), {320, 480});
    QTRY_COMPARE(count(screen), 1);
    settle(screen);
    const std::function<void(const QQuickItem *)> check = [&](const QQuickItem *item) {
        if (item->inherits("QQuickText") && item->isVisible()) {
            const QRectF box = TestScreen::box(item);
            QVERIFY(box.left() >= 0 && box.right() <= 320.5);
            QVERIFY(item->property("contentWidth").toReal() <= item->width() + 1);
            QVERIFY(!item->property("truncated").toBool());
        }
        for (const QQuickItem *child : item->childItems())
            check(child);
    };
    check(screen.find(u"rows"_s));
}

void ListViewsTest::arrowKeysWalkTheRows()
{
    server.reply(listing, manyPackages(40));
    TestScreen screen(packages());
    QTRY_COMPARE(count(screen), 40);
    settle(screen);
    QQuickItem *const list = screen.find(u"rows"_s);
    list->forceActiveFocus(Qt::TabFocusReason);
    for (int i = 0; i < 30; ++i)
        screen.key(Qt::Key_Down);
    QCOMPARE(list->property("currentIndex").toInt(), 29);
    QTRY_VERIFY(rows(screen).contains(u"Tracking: T30"_s));
}

void ListViewsTest::rowsStayWhereTheyAreThroughAReply_data()
{
    QTest::addColumn<QByteArray>("view");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<QByteArray>("state");
    QTest::newRow("same packages") << QByteArray("MisPaquetesView") << 1 << 60 << QByteArray("recibido");
    QTest::newRow("packages of another state") << QByteArray("MisPaquetesView") << 1 << 60 << QByteArray("x");
    QTest::newRow("packages above") << QByteArray("MisPaquetesView") << -1 << 60 << QByteArray("recibido");
    QTest::newRow("packages below") << QByteArray("MisPaquetesView") << 1 << 70 << QByteArray("recibido");
    QTest::newRow("fewer packages above") << QByteArray("MisPaquetesView") << 4 << 60 << QByteArray("recibido");
    QTest::newRow("fewer packages below") << QByteArray("MisPaquetesView") << 1 << 50 << QByteArray("recibido");
    QTest::newRow("same quotations") << QByteArray("MisCotizacionesView") << 1 << 60 << QByteArray("recibido");
    QTest::newRow("quotations of another state") << QByteArray("MisCotizacionesView") << 1 << 60 << QByteArray("x");
    QTest::newRow("more quotations") << QByteArray("MisCotizacionesView") << 1 << 70 << QByteArray("recibido");
}

void ListViewsTest::rowsStayWhereTheyAreThroughAReply()
{
    QFETCH(QByteArray, view);
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(QByteArray, state);
    server.reply(listing, numbered(1, 60, "recibido"));
    TestScreen screen(list(view));
    QTRY_COMPARE(count(screen), 60);
    settle(screen);
    QQuickItem *const rows = screen.find(u"rows"_s);
    rows->forceActiveFocus(Qt::TabFocusReason);
    rows->setProperty("highlightMoveVelocity", 100'000);
    for (int i = 0; i < 30; ++i)
        screen.key(Qt::Key_Down);
    const QPointer<QQuickItem> current = rows->property("currentItem").value<QQuickItem *>();
    QCOMPARE(rows->property("currentIndex").toInt(), 29);
    QTRY_COMPARE(TestScreen::box(current).bottom(), TestScreen::box(rows).bottom());
    screen.settle();
    const QRectF before = TestScreen::box(current);
    const qreal scrolled = rows->property("contentY").toReal() - rows->property("originY").toReal();
    server.reply(listing, numbered(first, last, state));
    const QString badge = QString::fromUtf8(state).toUpper();
    appear(screen);
    waitForRequests(2);
    QTRY_COMPARE(exchangesInFlight(), 0);
    QTRY_COMPARE(count(screen), last - first + 1);
    QTRY_COMPARE(rows->property("currentItem").value<QQuickItem *>()->property("badge").toString(), badge);
    screen.settle();
    QVERIFY(current);
    QCOMPARE(rows->property("currentItem").value<QQuickItem *>(), current.data());
    QCOMPARE(rows->property("currentIndex").toInt(), 30 - first);
    QCOMPARE(TestScreen::box(current), before);
    // As far from the top as rows have come or gone there.
    QCOMPARE(rows->property("contentY").toReal() - rows->property("originY").toReal(),
             scrolled + (1 - first) * current->height());
}

void ListViewsTest::newRowsAreSeenAtTheTop_data()
{
    QTest::addColumn<int>("current");
    QTest::newRow("no row walked to") << -1;
    QTest::newRow("first row walked to") << 0;
    QTest::newRow("third row walked to") << 2;
}

void ListViewsTest::newRowsAreSeenAtTheTop()
{
    QFETCH(int, current);
    server.reply(listing, numbered(3, 60, "recibido"));
    TestScreen screen(packages());
    QTRY_COMPARE(count(screen), 58);
    settle(screen);
    QQuickItem *const rows = screen.find(u"rows"_s);
    rows->forceActiveFocus(Qt::TabFocusReason);
    for (int i = 0; i <= current; ++i)
        screen.key(Qt::Key_Down);
    screen.settle();
    const QRectF title = TestScreen::box(screen.named(u"Mis Paquetes"_s));
    const QRectF place = TestScreen::box(screen.named(u"Tracking: T3, Caja, RECIBIDO"_s));
    server.reply(listing, numbered(1, 60, "recibido"));
    appear(screen);
    QTRY_COMPARE(count(screen), 60);
    screen.settle();
    QTRY_COMPARE(TestScreen::box(screen.named(u"Tracking: T1, Caja, RECIBIDO"_s)), place);
    QCOMPARE(TestScreen::box(screen.named(u"Mis Paquetes"_s)), title);
    QCOMPARE(rows->property("currentIndex").toInt(), current < 0 ? current : current + 2);
}

void ListViewsTest::groupKeepsItsShapeThroughAReply()
{
    TestScreen screen(packages());
    // Rows of these numbers, each with whether it begins and whether it ends the group.
    const auto shape = [&] {
        QStringList found;
        for (const QQuickItem *row :
             screen.find(u"rows"_s)->property("contentItem").value<QQuickItem *>()->childItems()) {
            if (row->isVisible() && row->property("first").isValid())
                found.append(row->property("headline").toString().mid(10) +
                             (row->property("first").toBool() ? u" first"_s : QString()) +
                             (row->property("last").toBool() ? u" last"_s : QString()) +
                             (screen.find(u"separator"_s, row)->isVisible() ? QString() : u" plain"_s));
        }
        found.sort();
        return found;
    };
    const auto show = [&](int first, int last) {
        server.reply(listing, numbered(first, last, "recibido"));
        appear(screen);
        QTRY_COMPARE(count(screen), last - first + 1);
        screen.settle();
        // Heard from top to bottom, and nothing of what has gone.
        QStringList heard{u"Atrás"_s, u"Mis Paquetes"_s, u"Mis Paquetes"_s};
        for (int i = first; i <= last; ++i)
            heard.append(u"Tracking: T%1, Caja, RECIBIDO"_s.arg(i));
        QCOMPARE(screen.names(), heard);
    };
    QTRY_COMPARE(exchangesInFlight(), 0);
    settle(screen);
    show(2, 3);
    QCOMPARE(shape(), QStringList({u"T2 first"_s, u"T3 last plain"_s}));
    show(1, 3);
    QCOMPARE(shape(), QStringList({u"T1 first"_s, u"T2"_s, u"T3 last plain"_s}));
    show(1, 5);
    QCOMPARE(shape(), QStringList({u"T1 first"_s, u"T2"_s, u"T3"_s, u"T4"_s, u"T5 last plain"_s}));
    show(3, 4);
    QCOMPARE(shape(), QStringList({u"T3 first"_s, u"T4 last plain"_s}));
    show(4, 4);
    QCOMPARE(shape(), QStringList({u"T4 first last plain"_s}));
}

MAROVENDA_TEST_MAIN(ListViewsTest)
#include "tst_ListViews.moc"
