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
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("plain") << u"https://track.example/MRV-1"_s << QByteArray("https://track.example/MRV-1");
    QTest::newRow("blanks") << u"https://track.example/MRV 1 2"_s << QByteArray("https://track.example/MRV%201%202");
    QTest::newRow("accents") << u"https://track.example/ñ"_s << QByteArray("https://track.example/%C3%B1");
    QTest::newRow("query") << u"https://track.example/a?b=c#d"_s << QByteArray("https://track.example/a?b=c#d");
    QTest::newRow("escaped") << u"https://track.example/%41%2F"_s << QByteArray("https://track.example/A%2F");
    QTest::newRow("stray percent") << u"https://track.example/100%"_s << QByteArray("https://track.example/100%25");
    QTest::newRow("mail") << u"mailto:hola@corvandel.example"_s << QByteArray("mailto:hola@corvandel.example");
    QTest::newRow("no host") << u"https:///MRV-1"_s << QByteArray();
    QTest::newRow("malformed host") << u"https://[track.example/MRV-1"_s << QByteArray();
    QTest::newRow("malformed port") << u"https://track.example:port/MRV-1"_s << QByteArray();
    QTest::newRow("relative") << u"MRV-1"_s << QByteArray();
    QTest::newRow("empty") << QString() << QByteArray();
    for (const char *other : {"http://track.example/1", "file:///etc/passwd", "javascript:alert(1)", "tel:123"})
        QTest::newRow(other) << QString::fromLatin1(other) << QByteArray();
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
