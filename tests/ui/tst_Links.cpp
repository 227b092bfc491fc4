#include "Links.h"
#include "MarovendaTest.h"

#include <QDesktopServices>
#include <QTest>

using namespace Qt::StringLiterals;

class LinksTest : public QObject {
    Q_OBJECT
public:
    Q_INVOKABLE void opened(const QUrl &url) { m_opened.append(url); }

private Q_SLOTS:
    void init();
    void cleanup();
    void onlyAddressesOfHttpsAndMailtoLeave_data();
    void onlyAddressesOfHttpsAndMailtoLeave();

private:
    QList<QUrl> m_opened;
};

static const QStringList schemes{u"https"_s, u"http"_s, u"mailto"_s, u"file"_s, u"tel"_s, u"javascript"_s};

void LinksTest::init()
{
    m_opened.clear();
    for (const QString &scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, this, "opened");
}

void LinksTest::cleanup()
{
    for (const QString &scheme : schemes)
        QDesktopServices::unsetUrlHandler(scheme);
}

void LinksTest::onlyAddressesOfHttpsAndMailtoLeave_data()
{
    const auto row = columns<QString, QByteArray>("text", "address");
    row("plain", u"https://track.example/MRV-1"_s, "https://track.example/MRV-1");
    row("blanks", u"https://track.example/MRV 1 2"_s, "https://track.example/MRV%201%202");
    row("accents", u"https://track.example/ñ"_s, "https://track.example/%C3%B1");
    row("query", u"https://track.example/a?b=c#d"_s, "https://track.example/a?b=c#d");
    row("escaped", u"https://track.example/%41%2F"_s, "https://track.example/A%2F");
    row("stray percent", u"https://track.example/100%"_s, "https://track.example/100%25");
    row("mail", u"mailto:hola@corvandel.example"_s, "mailto:hola@corvandel.example");
    row("no host", u"https:///MRV-1"_s, "");
    row("malformed host", u"https://[track.example/MRV-1"_s, "");
    row("malformed port", u"https://track.example:port/MRV-1"_s, "");
    row("relative", u"MRV-1"_s, "");
    row("empty", QString(), "");
    for (const char *other : {"http://track.example/1", "file:///etc/passwd", "javascript:alert(1)", "tel:123"})
        row(other, QString::fromLatin1(other), "");
}

void LinksTest::onlyAddressesOfHttpsAndMailtoLeave()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, address);
    const QUrl url = Links::fromText(text);
    QCOMPARE(url.toEncoded(), address);
    Links::open(QUrl(text));
    QCOMPARE(m_opened.size(), address.isEmpty() ? 0 : 1);
}

MAROVENDA_TEST(LinksTest)
#include "tst_Links.moc"
