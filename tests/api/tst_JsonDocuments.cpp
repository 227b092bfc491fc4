#include "MarovendaTest.h"
#include "RecordTools.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Which bytes are a document at all: RFC 8259 to the letter, also in what no record lists.
class JsonDocumentsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void oneByteOrderMarkIsSkipped();
    void moreThanOneMarkIsRefused_data();
    void moreThanOneMarkIsRefused();
    void blanksAroundTheObjectAreFine_data();
    void blanksAroundTheObjectAreFine();
    void documentCutAnywhereIsRefused();
    void whatIsNotJsonIsRefused_data();
    void whatIsNotJsonIsRefused();
    void malformedValueOfAnUnlistedKeyIsRefused_data();
    void malformedValueOfAnUnlistedKeyIsRefused();
    void nestingUpToALimitIsTaken_data();
    void nestingUpToALimitIsTaken();
    void readingTakesOnlyTheBytesGiven();
    void failedReadLeavesNoRecord();

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

constexpr auto mark = "\xEF\xBB\xBF";
constexpr auto success = R"({"status":"success"})";

} // namespace

void JsonDocumentsTest::oneByteOrderMarkIsSkipped()
{
    QCOMPARE(Json::read<LoginResponse>(mark + QByteArray(success)).record.value().status, u"success"_s);
}

void JsonDocumentsTest::moreThanOneMarkIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("two") << QByteArray(mark) + mark + success;
    QTest::newRow("three") << QByteArray(mark) + mark + mark + success;
    QTest::newRow("only a mark") << QByteArray(mark);
    QTest::newRow("half a mark") << QByteArray("\xEF\xBB") + success;
    QTest::newRow("blank before it") << QByteArray(" ") + mark + success;
    QTest::newRow("after the object") << QByteArray(success) + mark;
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE{\0}\0", 6);
    QTest::newRow("UTF-16, big end first") << QByteArray("\xFE\xFF\0{\0}", 6);
}

void JsonDocumentsTest::moreThanOneMarkIsRefused()
{
    QFETCH(const QByteArray, bytes);
    expectRefused(bytes);
}

void JsonDocumentsTest::blanksAroundTheObjectAreFine_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("around") << QByteArray(" \t\r\n") + success + " \t\r\n";
    QTest::newRow("inside") << "{ \"status\"\t:\r\n\"success\" , \"id\" : null }"_ba;
    QTest::newRow("after a mark") << QByteArray(mark) + "\n" + success;
    QTest::newRow("long") << QByteArray(100'000, ' ') + success + QByteArray(100'000, '\n');
}

void JsonDocumentsTest::blanksAroundTheObjectAreFine()
{
    QFETCH(const QByteArray, bytes);
    const auto result = Json::read<LoginResponse>(bytes);
    QVERIFY2(result, qPrintable(result.error));
    QCOMPARE(result.record->status, u"success"_s);
}

void JsonDocumentsTest::documentCutAnywhereIsRefused()
{
    const QByteArray whole = Json::write(RecordTools::filled<DashboardResponse>()).value();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        // A copy of its own, so that reading beyond its end is seen.
        const QByteArray cut(whole.constData(), length);
        const auto result = Json::read<DashboardResponse>(cut);
        QVERIFY2(!result, cut.constData());
        QVERIFY2(result.error.startsWith("not JSON: "_L1), qPrintable(result.error));
    }
    QVERIFY(Json::read<DashboardResponse>(whole));
}

void JsonDocumentsTest::whatIsNotJsonIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << ""_ba;
    QTest::newRow("null bytes") << QByteArray();
    QTest::newRow("blanks") << " \n"_ba;
    QTest::newRow("text before it") << QByteArray("Warning: mysql on line 3\n") + success;
    QTest::newRow("page") << "<!DOCTYPE html><html></html>"_ba;
    QTest::newRow("text after it") << QByteArray(success) + "x";
    QTest::newRow("second object") << QByteArray(success) + success;
    QTest::newRow("brace after it") << QByteArray(success) + "}";
    QTest::newRow("comma after it") << QByteArray(success) + ",";
    QTest::newRow("zero after it") << QByteArray(success) + QByteArray(1, 0);
    QTest::newRow("comma at the end") << R"({"status":"success",})"_ba;
    QTest::newRow("comma at the start") << R"({,"status":"success"})"_ba;
    QTest::newRow("two commas") << R"({"status":"success",,"id":"1"})"_ba;
    QTest::newRow("no colon") << R"({"status" "success"})"_ba;
    QTest::newRow("two colons") << R"({"status"::"success"})"_ba;
    QTest::newRow("no value") << R"({"status":})"_ba;
    QTest::newRow("no key") << R"({:"success"})"_ba;
    QTest::newRow("key alone") << R"({"status"})"_ba;
    QTest::newRow("bare key") << R"({status:"success"})"_ba;
    QTest::newRow("number as key") << R"({1:"success"})"_ba;
    QTest::newRow("single quotes") << "{'status':'success'}"_ba;
    QTest::newRow("comment") << R"({"status":"success"/*a*/})"_ba;
    QTest::newRow("line comment") << QByteArray(success) + "//a";
    QTest::newRow("wrong bracket") << R"({"status":"success"])"_ba;
    QTest::newRow("form feed between") << "{\f}"_ba;
    QTest::newRow("no-break space between") << "{\xC2\xA0}"_ba;
}

void JsonDocumentsTest::whatIsNotJsonIsRefused() { moreThanOneMarkIsRefused(); }

void JsonDocumentsTest::malformedValueOfAnUnlistedKeyIsRefused_data()
{
    QTest::addColumn<QByteArray>("token");
    for (const char *number : {"01",
                               "-01",
                               "+1",
                               ".5",
                               "5.",
                               "1e",
                               "1e+",
                               "-",
                               "--1",
                               "1.e5",
                               "0x10",
                               "1_000",
                               "1,5",
                               "NaN",
                               "nan",
                               "Infinity",
                               "-Infinity",
                               "1e400",
                               "-1e400",
                               "18446744073709551616",
                               "-9223372036854775809",
                               "1 2"})
        QTest::newRow(number) << QByteArray(number);
    for (const char *word : {"True", "TRUE", "tru", "truex", "nul", "NULL", "nil", "undefined", "falsey", "abc"})
        QTest::newRow(word) << QByteArray(word);
    for (const char *text : {R"("a)", R"("\x61")", R"("\u12")", R"("\u12G4")", R"("\")", R"("\a")", R"("\U0061")",
                             R"("\ud83d")", R"("\udce6")", R"("\udce6\ud83d")", R"("\ud83da")", R"("\ud83d\n")"})
        QTest::newRow(text) << QByteArray(text);
    QTest::newRow("bare line break") << "\"a\nb\""_ba;
    QTest::newRow("bare tab") << "\"a\tb\""_ba;
    QTest::newRow("bare zero") << QByteArray("\"a\0b\"", 5);
    QTest::newRow("not UTF-8") << "\"\xFF\""_ba;
    QTest::newRow("Latin-1") << "\"Panam\xE1\""_ba;
    QTest::newRow("overlong slash") << "\"\xC0\xAF\""_ba;
    QTest::newRow("overlong zero") << "\"\xC0\x80\""_ba;
    QTest::newRow("lone continuation") << "\"\x80\""_ba;
    QTest::newRow("cut sequence") << "\"\xE2\x82\""_ba;
    QTest::newRow("surrogate in UTF-8") << "\"\xED\xA0\xBD\""_ba;
    QTest::newRow("beyond the last code point") << "\"\xF4\x90\x80\x80\""_ba;
    QTest::newRow("open array") << "[1"_ba;
    QTest::newRow("array with a comma at its end") << "[1,]"_ba;
    QTest::newRow("array with a colon") << "[1:2]"_ba;
    QTest::newRow("crossed brackets") << "[{]}"_ba;
}

void JsonDocumentsTest::malformedValueOfAnUnlistedKeyIsRefused()
{
    QFETCH(const QByteArray, token);
    expectRefused("{\"otro\":" + token + R"(,"status":"success"})");
    expectRefused(R"({"status":"success","otro":)" + token + '}');
    expectRefused(R"({"status":"success","otro":[{"a":)" + token + "}]}");
    expectRefused("{\"status\":" + token + '}');
}

void JsonDocumentsTest::nestingUpToALimitIsTaken_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<QByteArray>("innermost");
    QTest::addColumn<bool>("taken");
    QTest::newRow("1000") << 1000 << ""_ba << true;
    QTest::newRow("as deep as allowed") << 1024 << ""_ba << true;
    QTest::newRow("value as deep as allowed") << 1023 << "1"_ba << true;
    QTest::newRow("value deeper") << 1024 << "1"_ba << false;
    QTest::newRow("deeper") << 1025 << ""_ba << false;
    QTest::newRow("much deeper") << 1'000'000 << ""_ba << false;
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

void JsonDocumentsTest::readingTakesOnlyTheBytesGiven()
{
    const QByteArray more = QByteArray(success) + "and more";
    QVERIFY(Json::read<LoginResponse>(QByteArrayView(more).first(qsizetype(qstrlen(success)))));
    QVERIFY(!Json::read<LoginResponse>(more));
}

void JsonDocumentsTest::failedReadLeavesNoRecord()
{
    const auto result =
        Json::read<DashboardResponse>(R"({"status":"success","paquetes":[{"tracking":"1Z"},{"estado":7}]})");
    QVERIFY(!result.record);
    QVERIFY(!result);
    QCOMPARE(result.error, u"paquetes[1].estado: number, must be text"_s);
}

MAROVENDA_TEST_MAIN(JsonDocumentsTest)
#include "tst_JsonDocuments.moc"
