#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

using namespace Qt::StringLiterals;

/// What the customer needs elsewhere is copied, in each of four ways, and nothing else happens.
class CopyingTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void everyWayCopies_data();
    void everyWayCopies();
    void noticeComesAndGoes();
    void nothingIsCopiedFromARowWithoutANumber();

private:
    static constexpr auto rows = R"({"paquetes":[{"tracking":"MRV 1","estado":"recibido"},{"estado":"recibido"}]})";
    /// Holds until the clipboard has a text, which a slow machine may give late, or longer than any long press.
    static void longPress(TestScreen &screen, const QQuickItem *item)
    {
        const QPoint at = TestScreen::box(item).center().toPoint();
        QTest::mousePress(&screen.window(), Qt::LeftButton, {}, at);
        (void)QTest::qWaitFor([] { return !QGuiApplication::clipboard()->text().isEmpty(); }, 3000);
        QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, at);
    }
    static QStringList actions(QQuickItem *item)
    {
        return QAccessible::queryAccessibleInterface(item)->actionInterface()->actionNames();
    }
};

void CopyingTest::everyWayCopies_data()
{
    const auto row = columns<QByteArray, QString, QString>("view", "name", "text");
    const QString address = u"Dirección: 1 Test Way\nCiudad: Miami\nEstado: Florida\nZip Code: 33166-0001\n"
                            u"Teléfono: +1 305 555 0100"_s;
    row("mailbox", "CasilleroView {}", address, u"Ana MRV-1\n"_s + address);
    row("package", "MisPaquetesView {}", u"Tracking: MRV 1, Sin descripción, RECIBIDO"_s, u"MRV 1"_s);
    row("recent package", "DashboardView { screens: ServiceScreens {} }",
        u"Tracking: MRV 1, Sin descripción, RECIBIDO"_s, u"MRV 1"_s);
    row("site", "DeveloperView {}", u"🌐 Sitio Web: corvandel.example"_s, u"https://corvandel.example/"_s);
    row("address of mail", "DeveloperView {}", u"✉️ Correo: hola@corvandel.example"_s,
        u"hola@corvandel.example"_s);
}

void CopyingTest::everyWayCopies()
{
    QFETCH(QByteArray, view);
    QFETCH(QString, name);
    QFETCH(QString, text);
    server.reply("/api_paquetes.php", rows);
    server.reply("/api_casillero.php", R"({"nombreCompleto":"Ana MRV-1"})");
    TestScreen screen(TestScreen::pushing(view));
    screen.press(u"open"_s);
    QTRY_VERIFY(screen.settledAt(2));
    QTRY_VERIFY2(screen.named(name), qUtf8Printable(screen.names().join(u" | "_s)));
    QTRY_VERIFY(actions(screen.named(name)).contains(u"Copiar"_s));
    QQuickItem *const item = screen.named(name);
    screen.scrollTo(item);
    QClipboard *const clipboard = QGuiApplication::clipboard();
    const auto copies = [&](const std::function<void()> &way) {
        clipboard->clear();
        way();
        return clipboard->text() == text;
    };
    QVERIFY(copies([&] { longPress(screen, item); }));
    QVERIFY(copies(
        [&] { QTest::mouseClick(&screen.window(), Qt::RightButton, {}, TestScreen::box(item).center().toPoint()); }));
    QVERIFY(copies([&] { QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(u"Copiar"_s); }));
    QVERIFY(copies([&] {
        for (int i = 0; i < 20 && !clipboard->text().startsWith(text); ++i) {
            screen.key(Qt::Key_Tab);
            screen.key(Qt::Key_Down);
            screen.key(Qt::Key_C, Qt::ControlModifier);
        }
    }));
    // No press has done what a tap does.
    QVERIFY(screen.settledAt(2));
    QVERIFY(opened.isEmpty());
}

void CopyingTest::noticeComesAndGoes()
{
    server.reply("/api_casillero.php", R"({"nombreCompleto":"Ana MRV-1"})");
    TestScreen screen(TestScreen::alone("CasilleroView {}"));
    QVERIFY(!screen.names().contains(u"Copiado"_s));
    const QQuickItem *const card = screen.find(u"card"_s);
    screen.tap(card);
    QVERIFY(!screen.names().contains(u"Copiado"_s));
    QGuiApplication::clipboard()->clear();
    longPress(screen, card);
    QVERIFY(screen.names().contains(u"Copiado"_s));
    const QQuickItem *const notice = screen.find(u"copied"_s);
    QVERIFY(TestScreen::box(notice).bottom() < 844 && TestScreen::box(notice).top() > 760);
    QTRY_VERIFY(!screen.names().contains(u"Copiado"_s));
}

void CopyingTest::nothingIsCopiedFromARowWithoutANumber()
{
    server.reply("/api_paquetes.php", rows);
    TestScreen screen(TestScreen::alone("MisPaquetesView {}"));
    const QString name = u"Tracking: N/A, Sin descripción, RECIBIDO"_s;
    QTRY_VERIFY(screen.named(name));
    QGuiApplication::clipboard()->clear();
    QVERIFY(!actions(screen.named(name)).contains(u"Copiar"_s));
    longPress(screen, screen.named(name));
    QVERIFY(QGuiApplication::clipboard()->text().isEmpty());
    QVERIFY(!screen.names().contains(u"Copiado"_s));
}

MAROVENDA_TEST(CopyingTest)
#include "tst_Copying.moc"
