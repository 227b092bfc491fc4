#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "TestDeployment.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

class DeveloperViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { ServiceTest::cleanup(); }

    void tapAnywhereOnALinkOpensItsAddress();
    void targetThatFormsNoLinkIsLeftOut_data();
    void targetThatFormsNoLinkIsLeftOut();
    void volverGoesBack();
    void everythingIsReadInOrder();
    void longLinksAreNotCut();

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
};

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

void DeveloperViewTest::tapAnywhereOnALinkOpensItsAddress()
{
    TestScreen screen(credits());
    for (const QString &part : {u"🌐"_s, u"Sitio Web:"_s, u"corvandel.example"_s})
        screen.tap(text(screen, part));
    // Between label and target too.
    const QRectF box = TestScreen::box(text(screen, u"corvandel.example"_s));
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, QPointF(box.left() - 4, box.center().y()).toPoint());
    QCOMPARE(opened, QList<QUrl>(4, QUrl(u"https://corvandel.example/"_s)));
    screen.tap(screen.named(mailName));
    QCOMPARE(opened.last(), QUrl(u"mailto:hola@corvandel.example"_s));
}

void DeveloperViewTest::targetThatFormsNoLinkIsLeftOut_data()
{
    const auto row = columns<QString, QString, bool, bool>("site", "mail", "siteShown", "mailShown");
    const QString goodMail = u"hola@corvandel.example"_s;
    const QString goodSite = u"https://corvandel.example/"_s;
    row("malformed host", u"https://[corvandel"_s, goodMail, false, true);
    row("no site", QString(), goodMail, false, true);
    row("no mail", goodSite, QString(), true, false);
    row("neither", u"https://["_s, QString(), false, false);
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
    QCOMPARE(screen.texts().contains(u"Sitio Web:"_s), siteShown);
    QCOMPARE(screen.texts().contains(u"Correo:"_s), mailShown);
    QCOMPARE(screen.named(siteName) != nullptr, siteShown);
    QCOMPARE(screen.named(mailName) != nullptr, mailShown);
    QVERIFY(screen.find(u"divider"_s)->isVisible());
}

void DeveloperViewTest::volverGoesBack()
{
    TestScreen screen(TestScreen::pushing("DeveloperView {}"));
    screen.tap(screen.find(u"open"_s));
    QTRY_VERIFY(screen.settledAt(2));
    QVERIFY(!screen.named(u"Atrás"_s));
    screen.tap(screen.named(u"Volver al Panel"_s));
    QTRY_VERIFY(screen.settledAt(1));
}

void DeveloperViewTest::everythingIsReadInOrder()
{
    TestScreen screen(credits());
    const QStringList order{u"Corvandel"_s, u"Desarrollo de Software & IT Solutions"_s, siteName, mailName,
                            u"Volver al Panel"_s};
    QCOMPARE(screen.names(), order);
    QCOMPARE(screen.tabStops(3), order.sliced(2));
}

void DeveloperViewTest::longLinksAreNotCut()
{
    const QSize size(320, 480);
    const QString site = u"un-nombre-muy-largo-sin-fin-que-no-cabe-en-una-linea-de-ningun-telefono.example"_s;
    const QString mail = u"una.direccion.bastante.larga.de.correo@"_s + site;
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
    // Links shrink before they take more lines.
    QCOMPARE(text(screen, site)->property("lineCount").toInt(), 3);
    // Nothing lies over anything else, and all of it can be reached.
    QVERIFY(TestScreen::box(screen.find(u"volver"_s)).top() >= card.bottom() + 24);
    screen.tap(screen.named(u"✉️ Correo: "_s + mail));
    QCOMPARE(opened.value(0).path(), mail);
    screen.scrollTo(screen.find(u"volver"_s));
    QVERIFY(TestScreen::box(screen.find(u"volver"_s)).bottom() <= size.height());
}

MAROVENDA_TEST(DeveloperViewTest)
#include "tst_DeveloperView.moc"
