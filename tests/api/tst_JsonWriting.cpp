#include "MarovendaTest.h"
#include "RecordTools.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using RecordTools::with;

/// Texts and numbers as they are written, and read again.
class JsonWritingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void textIsEscaped_data();
    void textIsEscaped();
    void everyCodePointReadsBack();
    void longTextsAreWrittenWhole();
    void textIsEscapedWhereverItStands_data();
    void textIsEscapedWhereverItStands();
    void wholeNumbersAreExact_data();
    void wholeNumbersAreExact();
    void doublesReadBackToTheBit_data();
    void doublesReadBackToTheBit();
    void doubleThatIsNotFiniteRefusesTheRecord();

private:
    template <Record R>
    static QByteArray written(const R &record)
    {
        return Json::write(record).value_or("refused");
    }
    static QByteArray textToken(const QString &text)
    {
        const QByteArray bytes = written(RecuperarRequest{text});
        return bytes.mid(QByteArrayView(R"({"email":)").size()).chopped(1);
    }
};

void JsonWritingTest::textIsEscaped_data()
{
    const auto row = columns<QString, QByteArray>("text", "token");
    row("line breaks and tabs", u"\r\n\t\b\f"_s, R"("\r\n\t\b\f")");
    row("zero", QString(QChar(0)), R"("\u0000")");
    row("beyond the first plane", u"📦𝒳"_s, "\"\xF0\x9F\x93\xA6\xF0\x9D\x92\xB3\"");
    row("lone high surrogate", QString(QChar(0xD83D)), "\"\xEF\xBF\xBD\"");
    row("lone low surrogate", QString(QChar(0xDCE6)) + u'a', "\"\xEF\xBF\xBD\x61\"");
    row("two high surrogates", QString(QChar(0xD83D)) + u"📦"_s, "\"\xEF\xBF\xBD\xF0\x9F\x93\xA6\"");
    // As many as are looked at together.
    row("16 slashes", QString(16, u'/'), '"' + R"(\/)"_ba.repeated(16) + '"');
    row("16 quotes", QString(16, u'"'), '"' + R"(\")"_ba.repeated(16) + '"');
    row("16 backslashes", QString(16, u'\\'), '"' + R"(\\)"_ba.repeated(16) + '"');
    row("16 of two bytes", QString(16, QChar(0x80)), '"' + "\xC2\x80"_ba.repeated(16) + '"');
    row("empty", u""_s, R"("")");
    row("null", QString(), R"("")");
}

void JsonWritingTest::textIsEscaped()
{
    QFETCH(const QString, text);
    QTEST(textToken(text), "token");
}

void JsonWritingTest::everyCodePointReadsBack()
{
    QString all;
    for (char32_t point = 0; point <= QChar::LastValidCodePoint; point += point < 0x3000 ? 1 : 37) {
        if (!QChar::isSurrogate(point))
            all += QChar::fromUcs4(point);
    }
    const QByteArray bytes = written(RecuperarRequest{all});
    // The mark at its place in the middle, so that both readers keep it.
    QVERIFY(QJsonDocument::fromJson(bytes).object().value("email"_L1).toString() == all);
    QVERIFY(Json::read<RecuperarRequest>(bytes).record->email == all);
}

void JsonWritingTest::longTextsAreWrittenWhole()
{
    // Letters, accents, slashes, pairs at odd places, and letters with a rare escape; of the lengths at which the
    // writer makes new room, and those around them.
    for (const QString &piece : {u"a"_s, u"ñ"_s, u"/"_s, u"a📦"_s, u"abcdefghijklmnopqrstuvwxyz0123456789/"_s}) {
        for (const qsizetype length : {1, 16383, 16384, 16385, 32767, 32768, 32769, 49153, 200001}) {
            const QString text = u"-"_s + piece.repeated(length / piece.size() + 1);
            const QJsonObject read = QJsonDocument::fromJson(written(RecuperarRequest{text})).object();
            QVERIFY2(read.value("email"_L1).toString() == text, qUtf8Printable(piece));
        }
    }
}

void JsonWritingTest::textIsEscapedWhereverItStands_data()
{
    const auto row = columns<QString, QByteArray>("character", "written");
    const auto add = [&row](const QString &character, const char *written) { row(written, character, written); };
    add(u"\""_s, R"(\")");
    add(u"\\"_s, R"(\\)");
    add(u"/"_s, R"(\/)");
    add(u"\x1F"_s, R"(\u001f)");
    add(u"\x7F"_s, "\x7F");
    add(u"é"_s, "é");
    add(u"\u2028"_s, "\u2028");
    add(u"😀"_s, "😀");
}

void JsonWritingTest::textIsEscapedWhereverItStands()
{
    // Plain text is written several units at a time.
    QFETCH(const QString, character);
    QFETCH(const QByteArray, written);
    for (qsizetype length = 0; length <= 50; ++length) {
        for (qsizetype at = 0; at <= length; ++at) {
            const QString text = QString(at, u'a') + character + QString(length - at, u'z');
            QCOMPARE(textToken(text), '"' + QByteArray(at, 'a') + written + QByteArray(length - at, 'z') + '"');
        }
    }
}

void JsonWritingTest::wholeNumbersAreExact_data()
{
    const auto row = columns<qint64, QByteArray>("number", "token");
    row("least", std::numeric_limits<qint64>::min(), "-9223372036854775808");
    row("most", std::numeric_limits<qint64>::max(), "9223372036854775807");
    row("zero", qint64(0), "0");
    row("minus one", qint64(-1), "-1");
    row("beyond a double's whole numbers", qint64(9007199254740993), "9007199254740993");
}

void JsonWritingTest::wholeNumbersAreExact()
{
    QFETCH(const qint64, number);
    QFETCH(const QByteArray, token);
    const QByteArray bytes = written(with(&AutoRequest::user_id, number));
    QVERIFY2(bytes.startsWith("{\"user_id\":" + token + ','), bytes.constData());
    QCOMPARE(Json::read<AutoRequest>(bytes).record->user_id, number);
}

void JsonWritingTest::doublesReadBackToTheBit_data()
{
    using Limits = std::numeric_limits<double>;
    QTest::addColumn<double>("number");
    for (const double number : {0.0, 2.5, 0.1, 1e15, 1e16, 1e17, 1e21, 1e23, 9007199254740994.0, 0x1p63, 0x1p64})
        QTest::addRow("%.17g", number) << number;
    for (const double number : {1e-5, 1e-7, Limits::min(), Limits::denorm_min(), Limits::max()}) {
        QTest::addRow("%.17g", number) << number;
        QTest::addRow("%.17g", -number) << -number;
    }
    // Spread over all exponents.
    quint64 bits = 0x0123456789ABCDEF;
    for (int i = 0; i < 300; ++i) {
        bits = bits * 6364136223846793005U + 1442695040888963407U;
        if (const auto number = std::bit_cast<double>(bits); std::isfinite(number))
            QTest::addRow("%.17g", number) << number;
    }
}

void JsonWritingTest::doublesReadBackToTheBit()
{
    QFETCH(const double, number);
    const auto request = with(&CotizacionRequest::peso, number, &CotizacionRequest::valor, -number);
    const QByteArray bytes = written(request);
    QVERIFY2(RecordTools::same(Json::read<CotizacionRequest>(bytes).record.value(), request), bytes.constData());
    QCOMPARE(std::bit_cast<quint64>(QJsonDocument::fromJson(bytes).object().value("peso"_L1).toDouble() + 0.0),
             std::bit_cast<quint64>(number + 0.0));
}

void JsonWritingTest::doubleThatIsNotFiniteRefusesTheRecord()
{
    using Limits = std::numeric_limits<double>;
    for (const double number : {Limits::quiet_NaN(), -Limits::quiet_NaN(), std::bit_cast<double>(0x7FF0000000000001),
                                Limits::infinity(), -Limits::infinity()}) {
        QVERIFY(!Json::write(with(&CotizacionRequest::peso, number)));
        QVERIFY(!Json::write(with(&CotizacionRequest::valor, number)));
        QVERIFY(!Json::write(with(&CotizacionRequest::peso, number, &CotizacionRequest::valor, number)));
    }
    QVERIFY(Json::write(with(&CotizacionRequest::peso, 1)));
}

MAROVENDA_TEST(JsonWritingTest)
#include "tst_JsonWriting.moc"
