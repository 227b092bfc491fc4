#include "MarovendaTest.h"
#include "RecordTools.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using RecordTools::document;

namespace {

struct Token {
    const char *kind;
    const char *label;
    QByteArray text;
};

/// Values of every JSON type.
const QList<Token> tokens{
    {"text", "text", "\"7\""},        {"text", "empty text", "\"\""},
    {"number", "number", "7"},        {"number", "negative fraction", "-1.5"},
    {"number", "zero", "0"},          {"number", "number beyond int64", "18446744073709551615"},
    {"boolean", "true", "true"},      {"boolean", "false", "false"},
    {"object", "empty object", "{}"}, {"object", "object", R"({"status":"success"})"},
    {"array", "empty array", "[]"},   {"array", "array of texts", R"(["a"])"},
};

} // namespace

/// Nothing is read leniently: each field takes one type and everything else ends the whole read.
class JsonReadingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void wrongTypeFailsTheWholeRead();
    void errorsNameTheirPlace_data();
    void errorsNameTheirPlace();
    void missingAndNullAreAbsentWhereAFieldIsOptional();
    void unlistedKeysAreIgnored_data();
    void unlistedKeysAreIgnored();
    void escapedKeysAreTheSameKeys();
    void lastOfTwoKeysCounts_data();
    void lastOfTwoKeysCounts();
    void textIsReadExactly_data();
    void textIsReadExactly();
    void wholeNumbersAreExact_data();
    void wholeNumbersAreExact();
    void doublesTakeEveryNumber_data();
    void doublesTakeEveryNumber();
    void textsOfALongReplyStandAlone();
};

void JsonReadingTest::wrongTypeFailsTheWholeRead()
{
    RecordTools::forEachRecord<RecordTools::All>([]<class R>(R record) {
        RecordTools::forEachField(record, []<class T>(const char *key, T &) {
            for (const Token &token : tokens) {
                if (qstrcmp(token.kind, RecordTools::wanted<T>) == 0)
                    continue;
                const QByteArray bytes = document<R>(key, token.text);
                const auto result = Json::read<R>(bytes);
                QVERIFY2(!result, bytes.constData());
                QCOMPARE(result.error.toLatin1(),
                         QByteArray(key) + ": " + token.kind + ", must be " + RecordTools::wanted<T>);
            }
        });
    });
}

void JsonReadingTest::errorsNameTheirPlace_data()
{
    const auto row = columns<QByteArray, QString>("bytes", "error");
    QByteArray manyRows = "{\"paquetes\":[";
    for (int i = 0; i < 17; ++i)
        manyRows += "{},";
    row("eighteenth row", manyRows + R"({"tracking":7}]})", u"paquetes[17].tracking: number, must be text"_s);
    row("row that is no object", manyRows + R"("x"]})", u"paquetes[17]: text, must be object"_s);
    row("row that is null", R"({"paquetes":[{},null]})", u"paquetes[1]: null, must be object"_s);
    row("other list", R"({"cotizaciones":[{"estado":[]}]})", u"cotizaciones[0].estado: array, must be text"_s);
    row("first wrong field of several", R"({"cotizaciones":7,"avatar":7,"paquetes":7})",
        u"avatar: number, must be text"_s);
    row("top level array", "[]", u"array, must be object"_s);
    row("top level null", "null", u"null, must be object"_s);
}

void JsonReadingTest::errorsNameTheirPlace()
{
    QFETCH(const QByteArray, bytes);
    const auto result = Json::read<DashboardResponse>(bytes);
    QVERIFY(!result);
    QTEST(result.error, "error");
}

void JsonReadingTest::missingAndNullAreAbsentWhereAFieldIsOptional()
{
    RecordTools::forEachRecord<RecordTools::All>([]<class R>(R record) {
        RecordTools::forEachField(record, []<class T>(const char *key, const T &) {
            const auto absent = Json::read<R>(document<R>(key));
            const auto null = Json::read<R>(document<R>(key, "null"));
            if constexpr (requires(T value) { value.has_value(); }) {
                for (const auto &result : {absent, null}) {
                    QVERIFY2(result, qPrintable(result.error));
                    QCOMPARE(Json::write(*result.record), std::optional(document<R>(key)));
                }
            } else {
                const auto place = QLatin1String(key);
                QCOMPARE(absent.error, u"%1: missing"_s.arg(place));
                QCOMPARE(null.error, u"%1: null, must be %2"_s.arg(place, QLatin1String(RecordTools::wanted<T>)));
            }
        });
    });
}

void JsonReadingTest::unlistedKeysAreIgnored_data()
{
    QTest::addColumn<QByteArray>("token");
    for (const Token &token : tokens)
        QTest::newRow(token.label) << token.text;
    QTest::newRow("deep") << QByteArray(500, '[') + QByteArray(500, ']');
    QTest::newRow("nested listed keys") << R"({"status":7,"id":{"id":[7]},"paquetes":"x"})"_ba;
    QTest::newRow("a double's largest") << "1.7976931348623157e308"_ba;
    QTest::newRow("smaller than a double") << "1e-400"_ba;
}

void JsonReadingTest::unlistedKeysAreIgnored()
{
    QFETCH(const QByteArray, token);
    RecordTools::forEachRecord<RecordTools::All>([&]<class R>(const R &) {
        const QByteArray good = document<R>();
        const R expected = Json::read<R>(good).record.value();
        const QByteArray first = "{\"otro\":" + token + ',' + good.mid(1);
        const QByteArray last = good.chopped(1) + ",\"\":" + token + ",\"Status\":" + token + '}';
        for (const QByteArray &bytes : {first, last}) {
            const auto result = Json::read<R>(bytes);
            QVERIFY2(result, qPrintable(result.error));
            QVERIFY2(RecordTools::same(*result.record, expected), bytes.constData());
        }
    });
}

void JsonReadingTest::escapedKeysAreTheSameKeys()
{
    QCOMPARE(Json::read<LoginResponse>(R"({"st\u0061tus":"success"})").record->status, u"success"_s);
    QCOMPARE(Json::read<LoginResponse>(R"({"st\u0061tus":7})").error, u"status: number, must be text"_s);
    QVERIFY(!Json::read<LoginResponse>(R"({"status\u0000":7})").record->status);
}

void JsonReadingTest::lastOfTwoKeysCounts_data()
{
    const auto row = columns<QByteArray, std::optional<QString>>("bytes", "id");
    row("two texts", R"({"id":"1","id":"2"})", std::optional(u"2"_s));
    row("apart", R"({"id":"1","status":"success","id":"2"})", std::optional(u"2"_s));
    row("wrong, then right", R"({"id":1,"id":"2"})", std::optional(u"2"_s));
    row("text, then null", R"({"id":"1","id":null})", std::optional<QString>());
    row("null, then text", R"({"id":null,"id":"2"})", std::optional(u"2"_s));
}

void JsonReadingTest::lastOfTwoKeysCounts()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const std::optional<QString>, id);
    const auto result = Json::read<LoginResponse>(bytes);
    QVERIFY2(result, qPrintable(result.error));
    QVERIFY(result.record->id == id);
    QCOMPARE(Json::read<LoginResponse>(R"({"id":"2","id":1})").error, u"id: number, must be text"_s);
}

void JsonReadingTest::textIsReadExactly_data()
{
    const auto row = columns<QByteArray, QString>("token", "text");
    row("empty", R"("")", u""_s);
    row("escapes", R"("\"\\\/\b\f\n\r\t")", u"\"\\/\b\f\n\r\t"_s);
    row("beyond the first plane", "\"📦\"", u"📦"_s);
    row("escaped pair", R"("\ud83d\uDCE6")", u"📦"_s);
    row("zero inside", R"("a\u0000b")", QString::fromLatin1("a\0b", 3));
    row("mark at the start", "\"\xEF\xBB\xBF\x61\"", u"\uFEFFa"_s);
    row("escaped mark at the start", R"("\ufeffa")", u"\uFEFFa"_s);
    row("last code point", "\"\xF4\x8F\xBF\xBF\"", QString::fromUcs4(U"\U0010FFFF"));
}

void JsonReadingTest::textIsReadExactly()
{
    QFETCH(const QByteArray, token);
    QFETCH(const QString, text);
    const auto result =
        Json::read<DashboardResponse>("{\"status\":" + token + R"(,"paquetes":[{"estado":)" + token + "}]}");
    QVERIFY2(result, qPrintable(result.error));
    QCOMPARE(result.record->status, text);
    QCOMPARE(result.record->paquetes->first().estado, text);
}

void JsonReadingTest::wholeNumbersAreExact_data()
{
    const auto row = columns<QByteArray, std::optional<qint64>>("token", "number");
    const auto add = [&row](const char *token, std::optional<qint64> number) { row(token, token, number); };
    add("0", 0);
    add("-0", 0);
    add("-1", -1);
    add("9007199254740993", 9007199254740993);
    add("9223372036854775807", std::numeric_limits<qint64>::max());
    add("-9223372036854775808", std::numeric_limits<qint64>::min());
    add("9223372036854775808", {});
    add("18446744073709551615", {});
    add("1.5", {});
    add("-0.1", {});
    add("1e300", {});
}

void JsonReadingTest::wholeNumbersAreExact()
{
    QFETCH(const QByteArray, token);
    QFETCH(const std::optional<qint64>, number);
    const auto result = Json::read<AutoRequest>(document<AutoRequest>("user_id", token));
    QCOMPARE(bool(result), number.has_value());
    if (number)
        QCOMPARE(result.record->user_id, *number);
    else
        QCOMPARE(result.error, u"user_id: number, must be a whole number of 64 bits"_s);
}

void JsonReadingTest::doublesTakeEveryNumber_data()
{
    const auto row = columns<QByteArray, double>("token", "number");
    const auto add = [&row](const char *token, double number) { row(token, token, number); };
    add("0", 0);
    add("-0.0", -0.0);
    add("2.5", 2.5);
    add("0.1", 0.1);
    add("1E2", 100);
    add("18446744073709551615", 18446744073709551615.0);
    add("1.7976931348623157e308", std::numeric_limits<double>::max());
    add("5e-324", std::numeric_limits<double>::denorm_min());
    add("0.1000000000000000055511151231257827021181583404541015625", 0.1);
}

void JsonReadingTest::doublesTakeEveryNumber()
{
    QFETCH(const QByteArray, token);
    QFETCH(const double, number);
    const auto result = Json::read<CotizacionRequest>(document<CotizacionRequest>("peso", token));
    QVERIFY2(result, qPrintable(result.error));
    QCOMPARE(std::bit_cast<quint64>(result.record->peso), std::bit_cast<quint64>(number));
}

void JsonReadingTest::textsOfALongReplyStandAlone()
{
    // Of all lengths around what shares memory and what does not, of letters of one to four bytes, marks and nothing.
    const QList<QString> letters{u"a"_s,      u"\u00f1"_s,      u"\u20ac"_s, QString::fromUcs4(U"\U0001f4e6", 1),
                                 u"\ufeff"_s, QString(QChar(0))};
    QList<QString> texts;
    for (int i = 0; i < 5000; ++i)
        texts.append(letters[i % letters.size()].repeated(i % 97) + QString::number(i));
    for (const int length : {2047, 2048, 2049, 4096, 70'000})
        texts.append(u"x"_s.repeated(length));
    DashboardResponse written;
    written.paquetes.emplace();
    for (const QString &text : texts)
        written.paquetes->append({text, std::nullopt, QString(), text.last(1)});

    auto read = Json::readAndFree<DashboardResponse>(Json::write(written).value());
    QVERIFY2(read, qPrintable(read.error));
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const auto &row = read.record->paquetes->at(i);
        QCOMPARE(row.tracking, texts[i]);
        QCOMPARE(row.descripcion, std::nullopt);
        QCOMPARE(row.estado, QString());
        QCOMPARE(row.fecha_recibido, texts[i].last(1));
        QCOMPARE(row.tracking->utf16()[row.tracking->size()], 0);
    }
    // Changing one changes no other, and one outlives all others.
    QString changed = *read.record->paquetes->at(1000).tracking;
    const QString kept = *read.record->paquetes->at(1001).tracking;
    changed[0] = u'#';
    changed += u" and more"_s;
    QCOMPARE(read.record->paquetes->at(1000).tracking, texts[1000]);
    QCOMPARE(kept, texts[1001]);
    read.record.reset();
    QCOMPARE(kept, texts[1001]);
    QString last = kept;
    last += QString(100'000, u'y');
    QVERIFY(last.startsWith(texts[1001]) && last.size() == texts[1001].size() + 100'000);
}

MAROVENDA_TEST(JsonReadingTest)
#include "tst_JsonReading.moc"
