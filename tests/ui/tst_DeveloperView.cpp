#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestDeployment.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class DeveloperViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void showsTheDesignedElements();
    void layoutHasTheDesignedMeasures();
    void cardStandsInTheMiddleAboveTheButton_data();
    void cardStandsInTheMiddleAboveTheButton();
    void linksOpenTheirAddresses_data();
    void linksOpenTheirAddresses();
    void tapAnywhereOnALinkOpensIt();
    void targetThatFormsNoLinkIsLeftOut_data();
    void targetThatFormsNoLinkIsLeftOut();
    void volverGoesBack();
    void nothingIsAskedOfTheService();
    void everythingIsReadInOrder();
    void nothingIsCut_data();
    void nothingIsCut();

private:
    static QByteArray credits() { return "DeveloperView { objectName: 'credits' }"; }
    /// The text on show that says this.
    static QQuickItem *text(TestScreen &screen, const QString &said)
    {
        QQuickItem *found = nullptr;
        const std::function<void(QQuickItem *)> look = [&](QQuickItem *item) {
            if (item->isVisible() && item->inherits("QQuickText") && item->property("text").toString() == said)
                found = item;
            for (QQuickItem *child : item->childItems())
                look(child);
        };
        look(screen.root());
        return found;
    }
    static QFont font(TestScreen &screen, const QString &said)
    {
        return text(screen, said)->property("font").value<QFont>();
    }
    static QColor color(TestScreen &screen, const QString &said)
    {
        return text(screen, said)->property("color").value<QColor>();
    }
};

static const QColor blue(0x00, 0x7A, 0xFF);
static const QColor grey(0x8E, 0x8E, 0x93);
static const QString siteName = u"🌐 Sitio Web: corvandel.example"_s;
static const QString mailName = u"✉️ Correo: hola@corvandel.example"_s;

void DeveloperViewTest::init()
{
    ServiceTest::init();
    auto &values = TestDeployment::values();
    const TestDeployment standard;
    values.developerSite = standard.developerSite;
    values.developerSiteText = standard.developerSiteText;
    values.developerEmail = standard.developerEmail;
}

void DeveloperViewTest::cleanup()
{
    const bool asked = !server.requests().isEmpty() || server.connections() > 0;
    ServiceTest::cleanup();
    QVERIFY(!asked || qstrcmp(QTest::currentTestFunction(), "volverGoesBack") == 0);
}

void DeveloperViewTest::showsTheDesignedElements()
{
    TestScreen screen(credits());
    const QStringList shown{u"Corvandel"_s,
                            u"Desarrollo de Software & IT Solutions"_s,
                            u"🌐"_s,
                            u"Sitio Web:"_s,
                            u"corvandel.example"_s,
                            u"✉️"_s,
                            u"Correo:"_s,
                            u"hola@corvandel.example"_s,
                            u"Volver al Panel"_s};
    QCOMPARE(screen.texts(), shown);
    QVERIFY(screen.root()->property("barHidden").toBool());
    QCOMPARE(screen.find(u"logo"_s)->property("name").toString(), u"corvandel"_s);
    QVERIFY(screen.find(u"divider"_s)->isVisible());
    QCOMPARE(font(screen, u"Corvandel"_s).pixelSize(), 28);
    QCOMPARE(font(screen, u"Corvandel"_s).weight(), QFont::Bold);
    QCOMPARE(font(screen, shown[1]).pixelSize(), 15);
    QCOMPARE(font(screen, shown[1]).weight(), QFont::Normal);
    QCOMPARE(color(screen, shown[1]), grey);
    for (const QString &label : {u"Sitio Web:"_s, u"Correo:"_s}) {
        QCOMPARE(font(screen, label).weight(), QFont::Bold);
        QCOMPARE(font(screen, label).pixelSize(), 17);
        QCOMPARE(color(screen, label), QColor(Qt::black));
    }
    for (const QString &target : {u"corvandel.example"_s, u"hola@corvandel.example"_s}) {
        QCOMPARE(font(screen, target).weight(), QFont::Bold);
        QCOMPARE(color(screen, target), blue);
    }
    QCOMPARE(font(screen, u"corvandel.example"_s).pixelSize(), 17);
    QCOMPARE(font(screen, u"hola@corvandel.example"_s).pixelSize(), 13);
    QCOMPARE(font(screen, u"Volver al Panel"_s).pixelSize(), 17);
    QCOMPARE(font(screen, u"Volver al Panel"_s).weight(), QFont::Bold);
    QCOMPARE(color(screen, u"Volver al Panel"_s), QColor(Qt::white));
}

void DeveloperViewTest::layoutHasTheDesignedMeasures()
{
    TestScreen screen(credits());
    const auto box = [&](const QString &name) { return TestScreen::box(screen.find(name)); };
    const auto textBox = [&](const QString &said) { return TestScreen::box(text(screen, said)); };
    QCOMPARE(box(u"logo"_s).size(), QSizeF(140, 140));
    QCOMPARE(box(u"logo"_s).center().x(), 195);
    QVERIFY(!screen.find(u"logo"_s)->property("cropped").toBool());
    QCOMPARE(textBox(u"Corvandel"_s).top() - box(u"logo"_s).bottom(), 24);
    QCOMPARE(textBox(u"Corvandel"_s).center().x(), 195);
    const QString tagline = u"Desarrollo de Software & IT Solutions"_s;
    QCOMPARE(textBox(tagline).top() - textBox(u"Corvandel"_s).bottom(), 6);
    QCOMPARE(box(u"card"_s).top() - textBox(tagline).bottom(), 24);
    QVERIFY(qAbs(box(u"card"_s).center().x() - 195) <= 0.5);
    QVERIFY(box(u"card"_s).left() >= 24);
    QCOMPARE(box(u"sitio"_s).top() - box(u"card"_s).top(), 20);
    QCOMPARE(box(u"divider"_s).top() - box(u"sitio"_s).bottom(), 16);
    QCOMPARE(box(u"correo"_s).top() - box(u"divider"_s).bottom(), 16);
    QCOMPARE(box(u"card"_s).bottom() - box(u"correo"_s).bottom(), 20);
    QCOMPARE(box(u"divider"_s).left() - box(u"card"_s).left(), 20);
    QCOMPARE(box(u"card"_s).right() - box(u"divider"_s).right(), 20);
    QVERIFY(qAbs(box(u"sitio"_s).center().x() - box(u"card"_s).center().x()) <= 0.5);
    QVERIFY(qAbs(box(u"correo"_s).center().x() - box(u"card"_s).center().x()) <= 0.5);
    // Side by side, since there is room.
    QVERIFY(textBox(u"corvandel.example"_s).left() >= textBox(u"Sitio Web:"_s).right() + 8);
    QCOMPARE(textBox(u"corvandel.example"_s).center().y(), textBox(u"Sitio Web:"_s).center().y());
    QCOMPARE(box(u"volver"_s), QRectF(24, 844 - 24 - 54, 390 - 48, 54));
    const auto *const fill = screen.find(u"volver"_s)->property("background").value<QQuickItem *>();
    QCOMPARE(fill->property("radius").toReal(), 20);
    QCOMPARE(fill->property("color").value<QColor>(), blue);
    QCOMPARE(screen.find(u"card"_s)->property("radius").toReal(), 20);
    const QImage drawn = screen.picture();
    const auto at = [&](QPointF point) { return drawn.pixelColor(point.toPoint()); };
    QCOMPARE(at(box(u"card"_s).center() + QPointF(0, -8)), QColor(Qt::white));
    const auto *const back = screen.find(u"card"_s)->property("background").value<QQuickItem *>();
    QCOMPARE(back->property("borderWidth").toReal(), 1);
    const QColor outline = back->property("borderColor").value<QColor>();
    QCOMPARE(outline.rgb(), grey.rgb());
    QVERIFY(qAbs(outline.alphaF() - 0.2F) < 0.01F);
    QVERIFY(at({box(u"card"_s).center().x(), box(u"card"_s).top() + 0.5}) != QColor(Qt::white));
    // Cut off at the corner.
    QCOMPARE(at(box(u"card"_s).topLeft() + QPointF(2, 2)), QColor(244, 244, 244));
    for (const QPoint point : {QPoint(3, 3), QPoint(386, 400), QPoint(3, 840)})
        QCOMPARE(drawn.pixelColor(point), QColor(244, 244, 244));
}

void DeveloperViewTest::cardStandsInTheMiddleAboveTheButton_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("phone") << QSize(390, 844);
    QTest::newRow("tall") << QSize(390, 1400);
    QTest::newRow("wide") << QSize(1280, 800);
}

void DeveloperViewTest::cardStandsInTheMiddleAboveTheButton()
{
    QFETCH(QSize, size);
    TestScreen screen(credits(), size);
    const auto box = [&](const QString &name) { return TestScreen::box(screen.find(name)); };
    // A spring above and one below, each with 24 between it and its neighbours.
    const qreal above = box(u"logo"_s).top() - 24 - 24;
    const qreal below = box(u"volver"_s).top() - 24 - (box(u"card"_s).bottom() + 24);
    QVERIFY(above > 0);
    QVERIFY2(qAbs(above - below) <= 1, qPrintable(u"%1 above, %2 below"_s.arg(above).arg(below)));
    QCOMPARE(box(u"volver"_s).bottom(), size.height() - 24);
    QVERIFY(box(u"volver"_s).width() <= 600 - 48);
    QVERIFY(qAbs(box(u"volver"_s).center().x() - size.width() / 2.0) <= 0.5);
}

void DeveloperViewTest::linksOpenTheirAddresses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("site") << siteName << QByteArray("https://corvandel.example/");
    QTest::newRow("mail") << mailName << QByteArray("mailto:hola@corvandel.example");
}

void DeveloperViewTest::linksOpenTheirAddresses()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, address);
    TestScreen screen(credits());
    QQuickItem *const link = screen.named(name);
    QVERIFY(link);
    QCOMPARE(QAccessible::queryAccessibleInterface(link)->role(), QAccessible::Button);
    screen.tap(link);
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened.first().toEncoded(), address);
    link->forceActiveFocus();
    screen.key(Qt::Key_Return);
    screen.key(Qt::Key_Space);
    QAccessible::queryAccessibleInterface(link)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
    QCOMPARE(opened, QList<QUrl>(4, QUrl::fromEncoded(address)));
    // The screen itself stays as it was.
    QVERIFY(screen.named(u"Volver al Panel"_s));
}

void DeveloperViewTest::tapAnywhereOnALinkOpensIt()
{
    TestScreen screen(credits());
    for (const QString &part : {u"🌐"_s, u"Sitio Web:"_s, u"corvandel.example"_s})
        screen.tap(text(screen, part));
    QCOMPARE(opened, QList<QUrl>(3, QUrl(u"https://corvandel.example/"_s)));
    // Between label and target too.
    const QRectF box = TestScreen::box(text(screen, u"corvandel.example"_s));
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, QPointF(box.left() - 4, box.center().y()).toPoint());
    QCOMPARE(opened.size(), 4);
}

void DeveloperViewTest::targetThatFormsNoLinkIsLeftOut_data()
{
    QTest::addColumn<QString>("site");
    QTest::addColumn<QString>("mail");
    QTest::addColumn<bool>("siteShown");
    QTest::addColumn<bool>("mailShown");
    const QString goodMail = u"hola@corvandel.example"_s;
    const QString goodSite = u"https://corvandel.example/"_s;
    QTest::newRow("malformed host") << u"https://[corvandel"_s << goodMail << false << true;
    QTest::newRow("malformed port") << u"https://corvandel.example:x/"_s << goodMail << false << true;
    QTest::newRow("no site") << QString() << goodMail << false << true;
    QTest::newRow("no mail") << goodSite << QString() << true << false;
    QTest::newRow("neither") << u"https://["_s << QString() << false << false;
}

void DeveloperViewTest::targetThatFormsNoLinkIsLeftOut()
{
    QFETCH(QString, site);
    QFETCH(QString, mail);
    QFETCH(bool, siteShown);
    QFETCH(bool, mailShown);
    TestDeployment::values().developerSite = site;
    TestDeployment::values().developerEmail = mail;
    TestScreen screen(credits());
    QCOMPARE(screen.find(u"sitio"_s)->isVisible(), siteShown);
    QCOMPARE(screen.find(u"correo"_s)->isVisible(), mailShown);
    QCOMPARE(screen.texts().contains(u"Sitio Web:"_s), siteShown);
    QCOMPARE(screen.texts().contains(u"Correo:"_s), mailShown);
    QCOMPARE(screen.named(siteName) != nullptr, siteShown);
    QCOMPARE(screen.named(mailName) != nullptr, mailShown);
    QVERIFY(screen.find(u"divider"_s)->isVisible());
    const QRectF card = TestScreen::box(screen.find(u"card"_s));
    const QRectF divider = TestScreen::box(screen.find(u"divider"_s));
    QCOMPARE(card.left(), 24);
    QCOMPARE(card.right(), 390 - 24);
    QCOMPARE(divider.left() - card.left(), 20);
    QCOMPARE(card.right() - divider.right(), 20);
    QCOMPARE(divider.top() - card.top() == 20, !siteShown);
    QCOMPARE(card.bottom() - divider.bottom() == 20, !mailShown);
}

void DeveloperViewTest::volverGoesBack()
{
    Session::instance().setUserId(42);
    TestScreen screen("NavigationContainer { root: Component { DashboardView { objectName: 'home'; screens: "
                      "ServiceScreens {} } } }");
    for (const bool byKey : {false, true}) {
        screen.tap(screen.named(u"Dev"_s));
        QTRY_VERIFY(screen.settledAt(2));
        QVERIFY(screen.named(u"Corvandel"_s));
        QVERIFY(!screen.named(u"Atrás"_s));
        if (byKey) {
            screen.named(u"Volver al Panel"_s)->forceActiveFocus();
            screen.key(Qt::Key_Return);
        } else {
            screen.tap(screen.named(u"Volver al Panel"_s));
        }
        QTRY_VERIFY(screen.settledAt(1));
        QVERIFY(screen.find(u"home"_s)->isVisible());
        QTRY_VERIFY(screen.all(u"volver"_s).isEmpty());
    }
    QVERIFY(opened.isEmpty());
}

void DeveloperViewTest::nothingIsAskedOfTheService()
{
    TestScreen screen(credits());
    screen.tap(screen.named(siteName));
    screen.tap(screen.named(mailName));
    screen.tap(screen.named(u"Volver al Panel"_s));
    // The connections of a request would have come by the time that another one has.
    QTcpSocket other;
    QSignalSpy connected(&other, &QTcpSocket::connected);
    other.connectToHost(u"127.0.0.1"_s, server.port());
    QTRY_VERIFY(connected.size() == 1 && server.connections() > 0);
    QCOMPARE(server.connections(), 1);
    QVERIFY(server.requests().isEmpty());
    server.clear();
}

void DeveloperViewTest::everythingIsReadInOrder()
{
    TestScreen screen(credits());
    const QStringList order{u"Corvandel"_s, u"Desarrollo de Software & IT Solutions"_s, siteName, mailName,
                            u"Volver al Panel"_s};
    QCOMPARE(screen.names(), order);
    QStringList walked;
    for (int i = 0; i < 3; ++i) {
        screen.key(Qt::Key_Tab);
        walked.append(
            QAccessible::queryAccessibleInterface(screen.window().activeFocusItem())->text(QAccessible::Name));
    }
    QCOMPARE(walked, order.sliced(2));
}

void DeveloperViewTest::nothingIsCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("site");
    QTest::addColumn<QString>("mail");
    const QString longSite = u"un-nombre-muy-largo-sin-fin-que-no-cabe-en-una-linea-de-ningun-telefono.example"_s;
    const QString longMail = u"una.direccion.bastante.larga.de.correo@"_s + longSite;
    for (const QSize size : {QSize(320, 480), QSize(390, 844), QSize(1280, 800)}) {
        QTest::addRow("short, %d wide", size.width())
            << size << u"corvandel.example"_s << u"hola@corvandel.example"_s;
        QTest::addRow("long, %d wide", size.width()) << size << longSite << longMail;
    }
}

void DeveloperViewTest::nothingIsCut()
{
    QFETCH(QSize, size);
    QFETCH(QString, site);
    QFETCH(QString, mail);
    TestDeployment::values().developerSiteText = site;
    TestDeployment::values().developerEmail = mail;
    TestScreen screen(credits(), size);
    const QRectF card = TestScreen::box(screen.find(u"card"_s));
    QVERIFY(card.left() >= 24 && card.right() <= size.width() - 24);
    for (const QString &said : screen.texts()) {
        const QQuickItem *const item = text(screen, said);
        const QRectF box = TestScreen::box(item);
        QVERIFY2(box.left() >= 24 && box.right() <= size.width() - 24, qUtf8Printable(said));
        QVERIFY2(!item->property("truncated").toBool(), qUtf8Printable(said));
        QVERIFY2(item->property("contentWidth").toReal() <= box.width() + 0.5, qUtf8Printable(said));
        QVERIFY2(item->property("contentHeight").toReal() <= box.height() + 0.5, qUtf8Printable(said));
    }
    for (const QString &said : {u"Sitio Web:"_s, site, u"Correo:"_s, mail}) {
        const QRectF box = TestScreen::box(text(screen, said));
        QVERIFY2(box.left() >= card.left() + 20 && box.right() <= card.right() - 20, qUtf8Printable(said));
    }
    // Nothing lies over anything else, and all of it can be reached.
    QVERIFY(TestScreen::box(screen.find(u"volver"_s)).top() >= card.bottom() + 24);
    screen.tap(screen.named(u"✉️ Correo: "_s + mail));
    QCOMPARE(opened.value(0).path(), mail);
    screen.scrollTo(screen.find(u"volver"_s));
    QVERIFY(TestScreen::box(screen.find(u"volver"_s)).bottom() <= size.height());
}

MAROVENDA_TEST_MAIN(DeveloperViewTest)
#include "tst_DeveloperView.moc"
