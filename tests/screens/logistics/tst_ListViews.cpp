#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QAbstractItemModel>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

/// The two list screens, each with the reply's other list beside its own.
class ListViewsTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ServiceTest::init();
        Session::instance().setUserId(42);
    }

    void allRowsAreShownInOrder_data();
    void allRowsAreShownInOrder();
    void replyWithoutRowsEmptiesTheList_data();
    void replyWithoutRowsEmptiesTheList();
    void everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply_data();
    void everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply();
    void titleComesInTheBarWhenItHasScrolledAway_data();
    void titleComesInTheBarWhenItHasScrolledAway();
    void rowsAreHeardInOrderWhereverTheyAreScrolled();
    void keysWalkTheRows();
    void rowsStayWhereTheyAreThroughAReply_data();
    void rowsStayWhereTheyAreThroughAReply();
    void newRowsAreSeenAtTheTop_data();
    void newRowsAreSeenAtTheTop();
    void groupKeepsItsShapeThroughAReply();

private:
    static constexpr auto listing = "/api_paquetes.php";
    inline static const QString none = u"No tienes cotizaciones registradas."_s;
    static QByteArray list(const QByteArray &view)
    {
        return "NavigationContainer { root: Component { AppScreen {} } Component.onCompleted: push(list);"
               " property Component list: Component { " +
               view + " { objectName: 'list' } } }";
    }
    static int count(TestScreen &screen) { return screen.find(u"rows"_s)->property("count").toInt(); }
    /// What is shown below the large title.
    static QStringList rows(TestScreen &screen)
    {
        QStringList texts = screen.texts(screen.find(u"rows"_s));
        texts.removeAll(u"Mis Paquetes"_s);
        texts.removeAll(u"Mis Cotizaciones"_s);
        return texts;
    }
    static void addScreens()
    {
        QTest::addColumn<QByteArray>("view");
        QTest::newRow("packages") << QByteArray("MisPaquetesView");
        QTest::newRow("quotations") << QByteArray("MisCotizacionesView");
    }
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

void ListViewsTest::allRowsAreShownInOrder_data()
{
    const auto row = columns<QByteArray, QString, QString, QVariantList>("view", "shown", "heard", "identities");
    row("packages", "MisPaquetesView",
        u"Tracking: B|EN TRÁNSITO|b|Tracking: A|RECIBIDO|Sin descripción|Tracking: A|RECIBIDO|Sin descripción|"
        "Tracking: N/A|RECIBIDO|Sin descripción"_s,
        u"Tracking: B, b, EN TRÁNSITO|Tracking: A, Sin descripción, RECIBIDO|"
        "Tracking: A, Sin descripción, RECIBIDO|Tracking: N/A, Sin descripción, RECIBIDO"_s,
        {u"B"_s, u"A"_s, u"A"_s, QVariant()});
    row("quotations", "MisCotizacionesView",
        u"b|ENVIADA|Origen: O|a|PENDIENTE|Origen: O|Cotización|PENDIENTE|Origen: N/A"_s,
        u"b, ENVIADA, Origen: O|a, PENDIENTE, Origen: O|Cotización, PENDIENTE, Origen: N/A"_s, {0, 1, 2});
}

void ListViewsTest::allRowsAreShownInOrder()
{
    QFETCH(const QByteArray, view);
    QFETCH(const QString, shown);
    QFETCH(const QString, heard);
    QFETCH(const QVariantList, identities);
    server.reply(listing,
                 R"({"status":"error","paquetes":[{"tracking":"B","descripcion":"b","estado":"en tránsito",)"
                 R"("fecha_recibido":"ayer"},{"tracking":"A"},{"tracking":"A"},{}],"cotizaciones":[)"
                 R"({"origen":"O","descripcion":"b","estado":"enviada"},{"origen":"O","descripcion":"a"},{}]})");
    TestScreen screen(list(view));
    QTRY_COMPARE(rows(screen), shown.split(u'|'));
    settle(screen);
    QCOMPARE(server.requests().first().path, "/api_paquetes.php?user_id=42");
    // The way back, the title and the list come before them.
    QTRY_COMPARE(screen.names().sliced(3), heard.split(u'|'));
    const auto *const model = screen.find(u"rows"_s)->property("model").value<QAbstractItemModel *>();
    QVariantList found;
    for (int row = 0; row < model->rowCount(); ++row)
        found.append(model->data(model->index(row, 0), model->roleNames().key("identity")));
    QCOMPARE(found, identities);
}

void ListViewsTest::replyWithoutRowsEmptiesTheList_data()
{
    const auto row = columns<QByteArray, QByteArray, QStringList>("view", "reply", "shown");
    for (const QByteArray &view : {"MisPaquetesView"_ba, "MisCotizacionesView"_ba}) {
        const bool packages = view == "MisPaquetesView";
        const QStringList shown = packages ? QStringList() : QStringList(none);
        row(view + ": no bytes", view, "", shown);
        row(view + ": other list", view, packages ? R"({"cotizaciones":[{}]})" : R"({"paquetes":[{}]})", shown);
        row(view + ": empty", view, R"({"paquetes":[],"cotizaciones":[]})", shown);
    }
}

void ListViewsTest::replyWithoutRowsEmptiesTheList()
{
    QFETCH(const QByteArray, view);
    QFETCH(const QByteArray, reply);
    QFETCH(const QStringList, shown);
    server.reply(listing, numbered(1, 2, "recibido"));
    TestScreen screen(list(view));
    QTRY_COMPARE(count(screen), 2);
    settle(screen);
    QVERIFY(!rows(screen).contains(none));
    server.reply(listing, reply);
    appear(screen);
    QTRY_COMPARE(count(screen), 0);
    QTRY_COMPARE(rows(screen), shown);
}

void ListViewsTest::everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply_data() { addScreens(); }

void ListViewsTest::everyShowingFetchesAgainAndKeepsTheRowsUntilTheReply()
{
    QFETCH(const QByteArray, view);
    server.hold(listing);
    TestScreen screen(list(view));
    QCOMPARE(rows(screen), view == "MisPaquetesView" ? QStringList() : QStringList(none));
    QTRY_COMPARE(server.held.size(), 1);
    server.held.first()->send(numbered(1, 2, "recibido"));
    QTRY_COMPARE(count(screen), 2);
    settle(screen);
    const QStringList shown = rows(screen);
    Session::instance().setUserId(43);
    appear(screen);
    QTRY_COMPARE(server.held.size(), 2);
    QCOMPARE(server.requests().last().path, "/api_paquetes.php?user_id=43");
    QCOMPARE(rows(screen), shown);
    server.held.last()->send(numbered(1, 3, "recibido"));
    QTRY_COMPARE(count(screen), 3);
}

void ListViewsTest::titleComesInTheBarWhenItHasScrolledAway_data() { addScreens(); }

void ListViewsTest::titleComesInTheBarWhenItHasScrolledAway()
{
    QFETCH(const QByteArray, view);
    server.reply(listing, numbered(1, 60, "recibido"));
    TestScreen screen(list(view));
    QTRY_COMPARE(count(screen), 60);
    settle(screen);
    QQuickItem *const list = screen.find(u"rows"_s);
    const auto bar = [&] {
        QStringList texts = screen.texts();
        for (const QString &each : screen.texts(list))
            texts.removeOne(each);
        return texts;
    };
    const QString title = view == "MisPaquetesView" ? u"Mis Paquetes"_s : u"Mis Cotizaciones"_s;
    QCOMPARE(bar(), QStringList(u"Atrás"_s));
    list->setProperty("contentY", list->property("originY").toReal() + 400);
    QTRY_COMPARE(bar(), QStringList({u"Atrás"_s, title}));
    list->setProperty("contentY", list->property("originY").toReal());
    QTRY_COMPARE(bar(), QStringList(u"Atrás"_s));
}

void ListViewsTest::rowsAreHeardInOrderWhereverTheyAreScrolled()
{
    server.reply(listing, numbered(100, 300, "recibido"));
    TestScreen screen(list("MisPaquetesView"));
    QTRY_COMPARE(count(screen), 201);
    settle(screen);
    QList<int> places{2000, 1900, 1300, 0, 5000, 1200};
    for (int y = 1190; y > 700; y -= 10)
        places.append(y);
    for (const int y : std::as_const(places)) {
        screen.find(u"rows"_s)->setProperty("contentY", y);
        screen.settle();
        // The way back and the list come before them; the title too, if it has not scrolled away.
        QStringList heard = screen.names().filter(u"Tracking"_s);
        QVERIFY(heard.size() > 5);
        const QStringList found = heard;
        heard.sort();
        QCOMPARE(found, heard);
    }
}

void ListViewsTest::keysWalkTheRows()
{
    server.reply(listing, numbered(1, 60, "recibido"));
    TestScreen screen(list("MisPaquetesView"));
    QTRY_COMPARE(count(screen), 60);
    settle(screen);
    QQuickItem *const rows = screen.find(u"rows"_s);
    rows->forceActiveFocus(Qt::TabFocusReason);
    const auto walk = [&](Qt::Key key) {
        screen.key(key);
        return rows->property("currentIndex").toInt();
    };
    const int page = static_cast<int>(rows->height()) / 80;
    QCOMPARE(walk(Qt::Key_Down), 0);
    QCOMPARE(walk(Qt::Key_PageDown), page);
    QCOMPARE(walk(Qt::Key_End), 59);
    QCOMPARE(walk(Qt::Key_PageUp), 59 - page);
    QCOMPARE(walk(Qt::Key_Home), 0);
    QKeyEvent home(QEvent::KeyPress, Qt::Key_Home, {});
    QCoreApplication::sendEvent(&screen.window(), &home);
    QVERIFY(home.isAccepted());
    // A finger pulls a long list beyond its ends.
    QCOMPARE(rows->property("boundsBehavior").toInt(), 3);
}

void ListViewsTest::rowsStayWhereTheyAreThroughAReply_data()
{
    const auto row = columns<QByteArray, int, int, QByteArray>("view", "first", "last", "state");
    row("packages of another state", "MisPaquetesView", 1, 60, "x");
    row("packages above", "MisPaquetesView", -1, 60, "recibido");
    row("packages below", "MisPaquetesView", 1, 70, "recibido");
    row("fewer packages above", "MisPaquetesView", 4, 60, "recibido");
    row("fewer packages below", "MisPaquetesView", 1, 50, "recibido");
    row("quotations of another state", "MisCotizacionesView", 1, 60, "x");
    row("more quotations", "MisCotizacionesView", 1, 70, "recibido");
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
    TestScreen screen(list("MisPaquetesView"));
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
    QCOMPARE(screen.names().filter(u"Tracking"_s).first(), u"Tracking: T1, Caja, RECIBIDO"_s);
    QCOMPARE(TestScreen::box(screen.named(u"Mis Paquetes"_s)), title);
    QCOMPARE(rows->property("currentIndex").toInt(), current < 0 ? current : current + 2);
}

void ListViewsTest::groupKeepsItsShapeThroughAReply()
{
    TestScreen screen(list("MisPaquetesView"));
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

MAROVENDA_TEST(ListViewsTest)
#include "tst_ListViews.moc"
