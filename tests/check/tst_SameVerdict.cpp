#include "MarovendaTest.h"
#include "Exchange.h"
#include "Json.h"
#include "JsonTrouble.h"
#include "Records.h"

#include <QTest>

#include <random>

using namespace Qt::StringLiterals;
using Check::findJsonTrouble;

namespace {

/// What JSON is made of, and what breaks it.
const QByteArrayList pieces =
    R"({ } [ ] , : \ null true -0 1.5 1e5 1e400 99999999999999999999 \u00f1 \ud83d \udc00 \ud83d\ude00 0 . e)"_ba
        .split(' ') +
    QByteArrayList{"\"", " ", "\n", "\x01", "ñ", "\xC3", "\xED\xA0\x80", "\xF0\x9F\x93\xA6"};

} // namespace

/// What marovenda-check says of a reply is what the app's reader makes of it, whatever the bytes.
class SameVerdictTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void troubleIsFoundWhereTheReaderRefuses_data();
    void troubleIsFoundWhereTheReaderRefuses();
    void troubleIsFoundInMutatedDocuments();
    void replyThatTakesFiveSecondsIsAWarning();

private:
    static bool isJson(const QByteArray &bytes)
    {
        Json::Reading reading;
        simdjson::dom::parser parser;
        Json::Element root;
        return Json::parse(QByteArrayView(bytes), reading, parser, root);
    }

    /// A few bytes of a document changed, dropped, doubled or swapped for what JSON is made of.
    QByteArray mutated(QByteArray bytes)
    {
        const int changes = 1 + pick(3);
        for (int i = 0; i < changes && !bytes.isEmpty(); ++i) {
            const qsizetype at = pick(static_cast<int>(bytes.size()));
            switch (pick(4)) {
            case 0:
                bytes.remove(at, 1 + pick(3));
                break;
            case 1:
                bytes.insert(at, pieces[pick(static_cast<int>(pieces.size()))]);
                break;
            case 2:
                bytes[at] = static_cast<char>(pick(256));
                break;
            default:
                bytes.replace(at, 1, pieces[pick(static_cast<int>(pieces.size()))]);
            }
        }
        return bytes;
    }

    int pick(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }

    // The same documents each time.
    std::mt19937 m_random{1}; // NOLINT(cert-msc32-c,cert-msc51-cpp)
};

namespace {

const QByteArray listing =
    R"({"status":"success","avatar":null,"paquetes":[{"tracking":"A1","descripcion":"Ñandú \u00f1 \ud83d\udce6",)"
    R"("estado":"recibido","fecha_recibido":"2026"},{"peso":-1.5e3,"x":[true,false,{}]}],"cotizaciones":[]} )";

} // namespace

void SameVerdictTest::troubleIsFoundWhereTheReaderRefuses_data()
{
    QTest::addColumn<QByteArray>("bytes");
    for (int depth = 1022; depth <= 1026; ++depth) {
        QTest::addRow("%d arrays", depth) << QByteArray(depth, '[') + QByteArray(depth, ']');
        QTest::addRow("%d objects", depth) << QByteArray("{\"a\":").repeated(depth) + "1" + QByteArray(depth, '}');
    }
    const QByteArray numbers =
        "0 -0 - 01 1. .5 1.5 1e 1e+ 1E-5 1e308 1.8e308 -1e309 1e-999 9223372036854775808 18446744073709551615 "
        "18446744073709551616 -9223372036854775808 -9223372036854775809 +1 0x10 Infinity";
    const QByteArray texts = R"("\u00e" "\uD800" "\uDC00" "\uD800\u0041" "\uD83D\uDE00" "\x41" "\ "\u "open)";
    const QByteArray utf8 = "\"\x7F\" \"\xC0\x80\" \"\xE0\x9F\xBF\" \"\xED\x9F\xBF\" \"\xED\xA0\x80\" "
                            "\"\xF4\x8F\xBF\xBF\" \"\xF4\x90\x80\x80\" \"\xE2\x82\" \"\xC3";
    for (const QByteArray &token : (numbers + ' ' + texts + ' ' + utf8).split(' '))
        QTest::newRow(token.toPercentEncoding().constData()) << token;
    for (const QByteArray &bytes :
         {""_ba, " "_ba, "1 "_ba, "{}\f"_ba, "\xEF\xBB\xBF"_ba, "\xEF\xBB\xBF{}"_ba, "\xEF\xBB{}"_ba})
        QTest::addRow("'%s'", bytes.toPercentEncoding().constData()) << bytes;
    QTest::newRow("zero inside") << QByteArray("{}\0", 3);
    QTest::newRow("zero in a text") << QByteArray("\"\0\"", 3);
    QTest::newRow("all") << listing;
}

void SameVerdictTest::troubleIsFoundWhereTheReaderRefuses()
{
    QFETCH(const QByteArray, bytes);
    QCOMPARE(!findJsonTrouble(bytes).has_value(), isJson(bytes));
}

void SameVerdictTest::troubleIsFoundInMutatedDocuments()
{
    int refused = 0;
    constexpr int tries = 40'000;
    for (int i = 0; i < tries; ++i) {
        const QByteArray bytes = mutated(listing);
        const bool good = isJson(bytes);
        const auto trouble = findJsonTrouble(bytes);
        QVERIFY2(trouble.has_value() != good, bytes.toPercentEncoding(" \"{}[]:,\\").constData());
        if (trouble)
            QVERIFY(trouble->offset >= 0 && trouble->offset <= bytes.size() && !trouble->what.isEmpty());
        refused += !good;
    }
    // Both kinds must have been tried.
    QVERIFY(refused > tries / 10 && refused < tries - tries / 10);
}

void SameVerdictTest::replyThatTakesFiveSecondsIsAWarning()
{
    Check::Exchange exchange;
    exchange.reply.body = "{}";
    exchange.reply.status = 200;
    exchange.usable = true;
    Check::Findings findings;
    exchange.milliseconds = 4999;
    Check::judgeTransport(exchange, findings);
    QCOMPARE(findings.count(Check::Severity::Warning), 0);
    exchange.milliseconds = 5000;
    Check::judgeTransport(exchange, findings);
    QCOMPARE(findings.sorted().first().what, u"5.0 s until the reply; the app shows no progress"_s);
}

MAROVENDA_TEST(SameVerdictTest)
#include "tst_SameVerdict.moc"
