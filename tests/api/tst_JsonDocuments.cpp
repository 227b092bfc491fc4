#include "MarovendaTest.h"
#include "RecordTools.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Which bytes are a document at all: RFC 8259 to the letter, also in what no record lists.
class JsonDocumentsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void onlyAMarkAndBlanksStandAroundTheObject_data();
    void onlyAMarkAndBlanksStandAroundTheObject();
    void documentCutAnywhereIsRefused();
    void malformedValueOfAnUnlistedKeyIsRefused_data();
    void malformedValueOfAnUnlistedKeyIsRefused();
    void nestingUpToALimitIsTaken_data();
    void nestingUpToALimitIsTaken();

private:
    static void expectRefused(const QByteArray &bytes)
    {
        const auto result = Json::read<LoginResponse>(bytes);
        QVERIFY2(!result, bytes.constData());
        QVERIFY2(result.error.startsWith("not JSON: "_L1), qPrintable(result.error));
        QVERIFY(result.error.size() > QLatin1String("not JSON: ").size());
    }
};

namespace {

const QByteArray mark = "\xEF\xBB\xBF";
const QByteArray success = R"({"status":"success"})";

} // namespace

void JsonDocumentsTest::onlyAMarkAndBlanksStandAroundTheObject_data()
{
    const auto row = columns<bool, QByteArray>("taken", "bytes");
    row("mark", true, mark + success);
    row("blanks around", true, " \t\r\n" + success + " \t\r\n");
    row("blanks inside", true, "{ \"status\"\t:\r\n\"success\" , \"id\" : null }");
    row("blank after a mark", true, mark + "\n" + success);
    row("many blanks", true, QByteArray(100'000, ' ') + success + QByteArray(100'000, '\n'));
    row("two marks", false, mark + mark + success);
    row("half a mark", false, "\xEF\xBB" + success);
    row("blank before a mark", false, ' ' + mark + success);
    row("UTF-16", false, QByteArray("\xFF\xFE{\0}\0", 6));
    row("nothing", false, "");
    row("null bytes", false, QByteArray());
    row("text before it", false, "Warning: mysql on line 3\n" + success);
    row("text after it", false, success + "x");
    row("second object", false, success + success);
    row("comma at the end", false, R"({"status":"success",})");
}

void JsonDocumentsTest::onlyAMarkAndBlanksStandAroundTheObject()
{
    QFETCH(const bool, taken);
    QFETCH(const QByteArray, bytes);
    if (!taken)
        return expectRefused(bytes);
    const auto result = Json::read<LoginResponse>(bytes);
    QVERIFY2(result, qPrintable(result.error));
    QCOMPARE(result.record->status, u"success"_s);
}

void JsonDocumentsTest::documentCutAnywhereIsRefused()
{
    const QByteArray whole = Json::write(RecordTools::filled<DashboardResponse>()).value();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        // A copy of its own, so that the sanitizer sees a read beyond its end.
        const QByteArray cut(whole.constData(), length);
        const auto result = Json::read<DashboardResponse>(cut);
        QVERIFY2(!result, cut.constData());
        QVERIFY2(result.error.startsWith("not JSON: "_L1), qPrintable(result.error));
    }
    QVERIFY(Json::read<DashboardResponse>(whole));
}

void JsonDocumentsTest::malformedValueOfAnUnlistedKeyIsRefused_data()
{
    QTest::addColumn<QByteArray>("token");
    const QByteArray numbers =
        "01 +1 .5 5. 1e+ - 0x10 NaN Infinity 1e400 -1e400 18446744073709551616 -9223372036854775809";
    const QByteArray others = R"(True tru truex nil "a "\x61" "\u12G4" "\" "\ud83d" "\udce6\ud83d" "\ud83d\n")";
    for (const QByteArray &token : (numbers + ' ' + others + " [1 [1,] [1:2] [{]}").split(' '))
        QTest::newRow(token.constData()) << token;
    QTest::newRow("bare zero") << QByteArray("\"a\0b\"", 5);
    QTest::newRow("Latin-1") << "\"Panam\xE1\""_ba;
    QTest::newRow("overlong slash") << "\"\xC0\xAF\""_ba;
}

void JsonDocumentsTest::malformedValueOfAnUnlistedKeyIsRefused()
{
    QFETCH(const QByteArray, token);
    expectRefused("{\"otro\":" + token + R"(,"status":"success"})");
    expectRefused(R"({"status":"success","otro":[{"a":)" + token + "}]}");
    expectRefused("{\"status\":" + token + '}');
}

void JsonDocumentsTest::nestingUpToALimitIsTaken_data()
{
    const auto row = columns<int, QByteArray, bool>("depth", "innermost", "taken");
    row("as deep as allowed", 1024, "", true);
    row("value as deep as allowed", 1023, "1", true);
    row("value deeper", 1024, "1", false);
    row("deeper", 1025, "", false);
    row("much deeper", 1'000'000, "", false);
}

void JsonDocumentsTest::nestingUpToALimitIsTaken()
{
    QFETCH(const int, depth);
    QFETCH(const QByteArray, innermost);
    QFETCH(const bool, taken);
    // The object itself is the first level.
    const QByteArray inner = QByteArray(depth - 1, '[') + innermost + QByteArray(depth - 1, ']');
    const auto result = Json::read<LoginResponse>("{\"otro\":" + inner + R"(,"status":"success"})");
    QCOMPARE(bool(result), taken);
    QCOMPARE(result.error.isEmpty(), taken);
}

MAROVENDA_TEST(JsonDocumentsTest)
#include "tst_JsonDocuments.moc"
