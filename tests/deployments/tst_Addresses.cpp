#include "DeveloperViewModel.h"
#include "Links.h"
#include "Options.h"
#include "ServiceRequests.h"
#include "TestDeployment.h"

#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QStringList hosts{
    u"api.company.example"_s, u"a"_s, u"A-1.EXAMPLE"_s, u"xn--compaa-7va8r.example"_s, u"ab--cd.example"_s,
    u"1a.2b.example"_s, u"256.example"_s, u"localhost"_s, u"127.0.0.1"_s, u"127.255.255.254"_s, u"192.168.0.255"_s,
    u"[::1]"_s, u"[::]"_s, u"[2001:db8::1]"_s, u"[1:2:3:4:5:6:7:8]"_s, u"[1:2:3:4:5:6:7::]"_s, u"[::2:3:4:5:6:7:8]"_s,
    u"[::ffff:1.2.3.4]"_s, u"[1:2:3:4:5:6:1.2.3.4]"_s, QString(63, u'a') + u".example"_s,
    // Wrong ones.
    u""_s, u"."_s, u".example"_s, u"api..company"_s, u"api.company."_s, u"-a.example"_s, u"a-.example"_s,
    u"a_b.example"_s, u"xn--.example"_s, u"ñandú.example"_s, u"a b"_s, u"a%41.example"_s, u"999.1.1.1"_s,
    u"127.300.1.1"_s, u"127.1"_s, u"127.0.0.01"_s, u"1.2.3.4.5"_s, u"1"_s, u"a.1"_s, u"0x7f000001"_s, u"0X7f.1"_s,
    u"a.0x"_s, u"0.0.0.0x1"_s, u"[1:2:3:4:5:6:7:8:9]"_s, u"[1:2:3:4:5:6:7]"_s, u"[1:2:3:4:5:6:7:8::]"_s,
    u"[1:2:3:4:5:6:7::1.2.3.4]"_s, u"[1:2:3:4:5:6::1.2.3.4]"_s, u"[1::2::3]"_s, u"[:::]"_s, u"[12345::]"_s,
    u"[::1.2.3.256]"_s, u"[::1.2.3]"_s, u"[::1%25lo]"_s, u"[v1.a]"_s, u"[127.0.0.1]"_s, u"[]"_s, u"[::1"_s, u"::1"_s,
    u"ana@a.example"_s, u"@a.example"_s, QString(64, u'a') + u".example"_s, u"a."_s.repeated(127)};
const QStringList ports{u":1"_s,     u":80"_s,    u":443"_s,    u":8473"_s,  u":9999"_s,  u":10000"_s,
                        u":59999"_s, u":64999"_s, u":65499"_s,  u":65529"_s, u":65535"_s, u":"_s,
                        u":0"_s,     u":0443"_s,  u":65536"_s,  u":65540"_s, u":65600"_s, u":66000"_s,
                        u":70000"_s, u":99999"_s, u":100000"_s, u":x"_s,     u":-1"_s,    u":80:80"_s};
const QStringList paths{u"/"_s,         u"/app/"_s,     u"/app/v1/"_s, u"//"_s,        u"/a//b/"_s,
                        u"/envíos/"_s,  u"/%C3%B1/"_s,  u"/@a/"_s,     u"/a:b/"_s,     u"/a;b=c,d!$&'()*+~_-./"_s,
                        u"/日本/"_s,    u"/🙂/"_s,    u""_s,         u"/app"_s,      u"/%/"_s,
                        u"/%4/"_s,      u"/%zz/"_s,     u"/?a=/"_s,    u"/#/"_s,       u"/a b/"_s,
                        u"/\t/"_s,      u"/a\x01/"_s,   u"/a\x7f/"_s,  u"/a\u00a0/"_s, u"/a\u200e/"_s,
                        u"/a\u202e/"_s, u"/a\u2060/"_s, u"/\ufeff/"_s, u"/a\u00ad/"_s, u"/[a]/"_s,
                        u"/a|b/"_s,     u"/a\\b/"_s,    u"/a^/"_s,     u"/a\"b/"_s,    u"/<a>/"_s,
                        u"/`/"_s,       u"/{a}/"_s,     u"/ "_s,       u"/\u3000/"_s};

/// Changes one or two characters.
QString misspelt(QString address, QRandomGenerator &random)
{
    static const QString characters = u"/:.[]@?#%-_0195afgx \\^|\tñ\u200e"_s;
    for (auto times = random.bounded(1, 3); times > 0 && !address.isEmpty(); --times) {
        const auto at = random.bounded(address.size());
        const QChar other = characters[random.bounded(characters.size())];
        switch (random.bounded(3)) {
        case 0:
            address.insert(at, other);
            break;
        case 1:
            address[at] = other;
            break;
        default:
            address.remove(at, 1);
        }
    }
    return address;
}

QStringList generated()
{
    QStringList all{u""_s,
                    u"https://"_s,
                    u"https:///"_s,
                    u"api.company.example"_s,
                    u"HTTPS://a.example/"_s,
                    u"ftp://a.example/"_s,
                    u"https:/a.example/"_s,
                    u" https://a.example/"_s,
                    u"https://a.example/ "_s,
                    u"http://LOCALHOST/"_s};
    for (const QString &host : hosts) {
        all << u"https://"_s + host + u'/' << u"http://"_s + host + u'/' << u"http://"_s + host + u":8080/a/"_s;
        for (const QString &port : ports.mid(9, 5))
            all << u"https://"_s + host + port + u'/';
    }
    for (const QString &port : ports)
        all << u"https://a.example"_s + port + u"/app/"_s << u"https://[::1]"_s + port + u'/'
            << u"http://127.0.0.1"_s + port + u'/';
    for (const QString &path : paths)
        all << u"https://a.example"_s + path << u"https://a.example:8443"_s + path << u"https://[::1]"_s + path;
    QRandomGenerator random(1);
    for (int i = 0; i < 400; ++i)
        all << misspelt(u"https://"_s + hosts[random.bounded(20)] + ports[random.bounded(11)] +
                            paths[random.bounded(12)],
                        random);
    return all;
}

/// Reasons; empty for an address that is right.
QStringList verdictsOfCMake(const QString &kind, const QStringList &addresses)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"addresses"_s));
    if (!file.open(QIODevice::WriteOnly) || file.write(addresses.join(u'\n').toUtf8() + '\n') < 0)
        return {};
    file.close();
    QProcess::execute(QStringLiteral(MAROVENDA_CMAKE),
                      {u"-DSOURCE=" MAROVENDA_SOURCE ""_s, u"-DADDRESSES="_s + file.fileName(), u"-DKIND="_s + kind,
                       u"-DVERDICTS="_s + folder.filePath(u"verdicts"_s), u"-P"_s,
                       QStringLiteral(MAROVENDA_SOURCE "/tests/deployments/verdicts.cmake")});
    QFile verdicts(folder.filePath(u"verdicts"_s));
    if (!verdicts.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(verdicts.readAll()).chopped(1).split(u'\n');
}

} // namespace

class AddressesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void configuringCheckerAndAppAgree();
    void linksLeadWhereTheyAreWritten();
    void mailGoesToTheAddress();

private:
    static void appAccepts(const QString &address);
};

/// The address is used as it is written, and passwords are not sent in the clear.
void AddressesTest::appAccepts(const QString &address)
{
    const auto request = ServiceRequests::post(address, u"api_x.php"_s, {});
    QVERIFY(request);
    const QUrl &url = request->url;
    const QString host =
        address.section(u'/', 2, 2).remove(QRegularExpression(u":[0-9]*$"_s)).remove(u'[').remove(u']');
    if (host.contains(u':'))
        QCOMPARE(QHostAddress(url.host()), QHostAddress(host));
    else
        QCOMPARE(url.host(QUrl::FullyEncoded), host.toLower());
    QVERIFY(url.port() == -1 || address.contains(u":%1/"_s.arg(url.port())));
    QVERIFY(url.port() != 0);
    QCOMPARE(url.path(QUrl::FullyDecoded),
             QUrl::fromPercentEncoding(u'/' + address.section(u'/', 3).toUtf8() + "api_x.php"));
    QVERIFY(!url.hasQuery() && !url.hasFragment() && url.userInfo().isEmpty());
    if (url.scheme() == "http"_L1)
        QVERIFY(url.host() == "localhost"_L1 || QHostAddress(url.host()).isLoopback());
    else
        QCOMPARE(Links::fromText(address + u"1Z 9"_s).host(), url.host());
}

void AddressesTest::configuringCheckerAndAppAgree()
{
    const QStringList addresses = generated();
    const QStringList verdicts = verdictsOfCMake(u"base_url"_s, addresses);
    QCOMPARE(verdicts.size(), addresses.size());
    qsizetype accepted = 0;
    for (qsizetype i = 0; i < addresses.size(); ++i) {
        const QString said = Check::troubleWithBase(addresses[i]);
        const QString wanted =
            verdicts[i].isEmpty() ? QString() : u"it must %1, as in https://api.example/."_s.arg(verdicts[i]);
        QVERIFY2(said == wanted, qPrintable(addresses[i] + u": "_s + said + u" | "_s + verdicts[i]));
        if (said.isEmpty()) {
            ++accepted;
            appAccepts(addresses[i]);
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(addresses[i]));
        }
    }
    QVERIFY(accepted > 150 && addresses.size() - accepted > 400);
}

void AddressesTest::linksLeadWhereTheyAreWritten()
{
    QStringList sites{u"https://corvandel.example"_s};
    for (const QString &end :
         paths + QStringList{u"/a?b=[1]&c=%20#d"_s, u"?a"_s, u"#a"_s, u"/?a b"_s, u"/#\u200e"_s, u"/?<"_s})
        sites << sites[0] + end << u"https://127.0.0.1:8443"_s + end << u"http://127.0.0.1"_s + end;
    const QStringList verdicts = verdictsOfCMake(u"site"_s, sites);
    QCOMPARE(verdicts.size(), sites.size());
    QVERIFY(verdicts.count(QString()) > 30);
    for (qsizetype i = 0; i < sites.size(); ++i) {
        if (!verdicts[i].isEmpty())
            continue;
        TestDeployment::values().developerSite = sites[i];
        const QUrl link = DeveloperViewModel().sitio();
        QVERIFY2(link.isValid() && link.scheme() == "https"_L1, qPrintable(sites[i]));
        QCOMPARE(link, QUrl(sites[i], QUrl::StrictMode));
    }
}

void AddressesTest::mailGoesToTheAddress()
{
    QStringList mails;
    for (const char *const name :
         {"a", "soporte+app", "o'neill.a", "a/b",  "100%", "%41", "a?b", "a#b", "a&b=c", "{a}|`^~!$*_-",
          "",  ".a",          "a.",        "a..b", "a b",  "a@b", "ñ",   "a,b", "a:b",   "<a>"})
        for (const char *const domain : {"company.example", "a-1.b.CO", "x.museum", "localhost", "-a.example",
                                         "a..example", "127.0.0.1", "[::1]", "a.example?cc=b"})
            mails << QString::fromUtf8(name) + u'@' + QString::fromLatin1(domain);
    const QStringList verdicts = verdictsOfCMake(u"mail"_s, mails);
    QCOMPARE(verdicts.size(), mails.size());
    QCOMPARE(verdicts.count(QString()), 10 * 3);
    for (qsizetype i = 0; i < mails.size(); ++i) {
        if (!verdicts[i].isEmpty())
            continue;
        TestDeployment::values().developerEmail = mails[i];
        const QUrl link = DeveloperViewModel().correo();
        QCOMPARE(link.scheme(), u"mailto"_s);
        QCOMPARE(link.path(QUrl::FullyDecoded), mails[i]);
        QVERIFY(!link.hasQuery() && !link.hasFragment());
    }
}

QTEST_GUILESS_MAIN(AddressesTest)
#include "tst_Addresses.moc"
