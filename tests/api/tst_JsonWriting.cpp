#include "MarovendaTest.h"
#include "RecordTools.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using RecordTools::with;

/// What the customer's requests look like to the byte.
class JsonWritingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyRequestIsWrittenByteForByte_data();
    void everyRequestIsWrittenByteForByte();
    void requestsKeepEmptyTextsAndZeros();
    void repliesOmitAbsentFields_data();
    void repliesOmitAbsentFields();
    void textIsEscaped_data();
    void textIsEscaped();
    void everyControlCharacterIsEscaped();
    void everyCodePointReadsBack();
    void longTextsAreWrittenWhole_data();
    void longTextsAreWrittenWhole();
    void textIsEscapedWhereverItStands_data();
    void textIsEscapedWhereverItStands();
    void photoInBase64OnlyGrowsByItsSlashes();
    void wholeNumbersAreExact_data();
    void wholeNumbersAreExact();
    void doublesReadBackToTheBit_data();
    void doublesReadBackToTheBit();
    void doubleThatIsNotFiniteRefusesTheRecord_data();
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

void JsonWritingTest::everyRequestIsWrittenByteForByte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("LoginRequest") << written(LoginRequest{u"ana@marovenda.example"_s, u"Clave.1"_s})
                                  << R"({"email":"ana@marovenda.example","password":"Clave.1"})"_ba;
    QTest::newRow("RecuperarRequest") << written(RecuperarRequest{u"ana@marovenda.example"_s})
                                      << R"({"email":"ana@marovenda.example"})"_ba;
    QTest::newRow("RegistroRequest") << written(RegistroRequest{u"Ana Núñez"_s, u"a@b.example"_s, u"x\"y"_s,
                                                                u"Calle 50 / Apto. 3"_s, u"Panamá"_s})
                                     << "{\"nombre\":\"Ana Núñez\",\"email\":\"a@b.example\",\"password\":\"x\\\"y\","
                                        "\"direccion\":\"Calle 50 \\/ Apto. 3\",\"ciudad\":\"Panamá\"}"_ba;
    QTest::newRow("PerfilRequest")
        << written(PerfilRequest{42, u"Ana"_s, u"a@b.example"_s, u"Clave.1"_s, u"/9j/4AAQ+w=="_s})
        << "{\"user_id\":42,\"nombre\":\"Ana\",\"email\":\"a@b.example\",\"password\":\"Clave.1\","
           "\"avatar_base64\":\"\\/9j\\/4AAQ+w==\"}"_ba;
    QTest::newRow("AutoRequest") << written(AutoRequest{-3, u"Toyota"_s, u"Hilux"_s, u"2019"_s, u"Orlando, FL"_s})
                                 << "{\"user_id\":-3,\"marca\":\"Toyota\",\"modelo\":\"Hilux\",\"anio\":\"2019\","
                                    "\"ubicacion\":\"Orlando, FL\"}"_ba;
    QTest::newRow("CotizacionRequest")
        << written(CotizacionRequest{7, u"maritimo"_s, u"Miami, USA"_s, u"Panamá"_s, 2.5, 0, u"sofá"_s})
        << "{\"user_id\":7,\"tipo\":\"maritimo\",\"origen\":\"Miami, USA\",\"destino\":\"Panamá\",\"peso\":2.5,"
           "\"valor\":0,\"descripcion\":\"sofá\"}"_ba;
    QTest::newRow("CasilleroRequest") << written(CasilleroRequest{u"7"_s}) << R"({"user_id":"7"})"_ba;
}

void JsonWritingTest::everyRequestIsWrittenByteForByte()
{
    QFETCH(const QByteArray, bytes);
    QTEST(bytes, "expected");
}

void JsonWritingTest::requestsKeepEmptyTextsAndZeros()
{
    QCOMPARE(written(LoginRequest{}), "{\"email\":\"\",\"password\":\"\"}");
    QCOMPARE(
        written(CotizacionRequest{}),
        "{\"user_id\":0,\"tipo\":\"\",\"origen\":\"\",\"destino\":\"\",\"peso\":0,\"valor\":0,\"descripcion\":\"\"}");
    RecordTools::forEachRecord<RecordTools::Requests>([]<class R>(const R &empty) {
        const QJsonObject object = QJsonDocument::fromJson(written(empty)).object();
        QCOMPARE(std::size_t(object.size()), CodingKeys<R>::count);
    });
}

void JsonWritingTest::repliesOmitAbsentFields_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("nothing") << written(LoginResponse{}) << "{}"_ba;
    using Paquete = DashboardResponse::Paquete;
    using Cotizacion = DashboardResponse::Cotizacion;
    QTest::newRow("first") << written(with(&LoginResponse::status, u"success"_s)) << R"({"status":"success"})"_ba;
    QTest::newRow("middle") << written(with(&LoginResponse::id, u"42"_s)) << R"({"id":"42"})"_ba;
    QTest::newRow("some") << written(with(&LoginResponse::status, u"success"_s, &LoginResponse::nombre, u""_s))
                          << R"({"status":"success","nombre":""})"_ba;
    QTest::newRow("empty list") << written(with(&DashboardResponse::paquetes, QList<Paquete>()))
                                << R"({"paquetes":[]})"_ba;
    const auto paquete = with(&Paquete::tracking, u"1Z"_s, &Paquete::fecha_recibido, u"2024-01-02"_s);
    const auto cotizacion = with(&Cotizacion::descripcion, u"sofá"_s);
    QTest::newRow("rows") << written(with(&DashboardResponse::avatar, u"a/b"_s, &DashboardResponse::paquetes,
                                          QList{paquete, Paquete()}, &DashboardResponse::cotizaciones,
                                          QList{cotizacion}))
                          << "{\"avatar\":\"a\\/b\",\"paquetes\":[{\"tracking\":\"1Z\",\"fecha_recibido\":"
                             "\"2024-01-02\"},{}],\"cotizaciones\":[{\"descripcion\":\"sofá\"}]}"_ba;
}

void JsonWritingTest::repliesOmitAbsentFields() { everyRequestIsWrittenByteForByte(); }

void JsonWritingTest::textIsEscaped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("token");

    QTest::newRow("slash") << u"a/b//"_s << R"("a\/b\/\/")"_ba;
    QTest::newRow("quote") << u"\"a\""_s << R"("\"a\"")"_ba;
    QTest::newRow("backslash") << u"\\/\\"_s << R"("\\\/\\")"_ba;
    QTest::newRow("line breaks and tabs") << u"\r\n\t\b\f"_s << R"("\r\n\t\b\f")"_ba;
    QTest::newRow("zero") << QString(QChar(0)) << R"("\u0000")"_ba;
    QTest::newRow("delete stands for itself") << u"\u007f"_s << "\"\x7f\""_ba;
    QTest::newRow("accents") << u"ñÑáü€"_s << "\"ñÑáü€\""_ba;
    QTest::newRow("combining") << u"n\u0303"_s << "\"n\xCC\x83\""_ba;
    QTest::newRow("beyond the first plane") << u"📦𝒳"_s << "\"\xF0\x9F\x93\xA6\xF0\x9D\x92\xB3\""_ba;
    QTest::newRow("line separators") << u"\u2028\u2029"_s << "\"\xE2\x80\xA8\xE2\x80\xA9\""_ba;
    QTest::newRow("byte-order mark") << u"\uFEFFa"_s << "\"\xEF\xBB\xBF\x61\""_ba;
    QTest::newRow("lone high surrogate") << QString(QChar(0xD83D)) << "\"\xEF\xBF\xBD\""_ba;
    QTest::newRow("lone low surrogate") << QString(QChar(0xDCE6)) + u'a' << "\"\xEF\xBF\xBD\x61\""_ba;
    QTest::newRow("two high surrogates") << QString(QChar(0xD83D)) + u"📦"_s << "\"\xEF\xBF\xBD\xF0\x9F\x93\xA6\""_ba;
    QTest::newRow("empty") << u""_s << R"("")"_ba;
    QTest::newRow("null") << QString() << R"("")"_ba;
}

void JsonWritingTest::textIsEscaped()
{
    QFETCH(const QString, text);
    QTEST(textToken(text), "token");
}

void JsonWritingTest::everyControlCharacterIsEscaped()
{
    for (char16_t unit = 0; unit < 0x20; ++unit) {
        const QByteArray token = textToken(QString(QChar(unit)));
        QVERIFY2(token.startsWith("\"\\"), token.constData());
        for (const char byte : token)
            QVERIFY2(byte >= 0x20, token.constData());
    }
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

void JsonWritingTest::longTextsAreWrittenWhole_data()
{
    QTest::addColumn<QString>("piece");
    QTest::newRow("letters") << u"a"_s;
    QTest::newRow("accents") << u"ñ"_s;
    QTest::newRow("control characters") << u"\u0001"_s;
    QTest::newRow("slashes") << u"/"_s;
    QTest::newRow("pairs") << u"📦"_s;
    QTest::newRow("pairs at odd places") << u"a📦"_s;
    QTest::newRow("letters with a rare escape") << u"abcdefghijklmnopqrstuvwxyz0123456789/"_s;
}

void JsonWritingTest::longTextsAreWrittenWhole()
{
    QFETCH(const QString, piece);
    // The lengths at which the writer makes new room, and those around them.
    for (const qsizetype length : {1, 16383, 16384, 16385, 32767, 32768, 32769, 49153, 200001}) {
        const QString text = u"-"_s + piece.repeated(length / piece.size() + 1);
        QVERIFY(QJsonDocument::fromJson(written(RecuperarRequest{text})).object().value("email"_L1).toString() ==
                text);
    }
}

void JsonWritingTest::textIsEscapedWhereverItStands_data()
{
    QTest::addColumn<QString>("character");
    QTest::addColumn<QByteArray>("written");
    const auto add = [](const QString &character, const char *written) {
        QTest::newRow(written) << character << QByteArray(written);
    };
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

void JsonWritingTest::photoInBase64OnlyGrowsByItsSlashes()
{
    QByteArray photo(qsizetype(3) * 1024 * 1024, Qt::Uninitialized);
    for (qsizetype i = 0; i < photo.size(); ++i)
        photo[i] = static_cast<char>((i * 2654435761U) >> 13);
    const QByteArray base64 = photo.toBase64();
    const QByteArray bytes = written(with(&PerfilRequest::avatar_base64, QString::fromLatin1(base64)));
    const QByteArray expected = written(PerfilRequest{}).chopped(2) + QByteArray(base64).replace('/', "\\/") + "\"}";
    QVERIFY(base64.contains('/'));
    QVERIFY(bytes == expected);
}

void JsonWritingTest::wholeNumbersAreExact_data()
{
    QTest::addColumn<qint64>("number");
    QTest::addColumn<QByteArray>("token");
    QTest::newRow("least") << std::numeric_limits<qint64>::min() << "-9223372036854775808"_ba;
    QTest::newRow("most") << std::numeric_limits<qint64>::max() << "9223372036854775807"_ba;
    QTest::newRow("zero") << qint64(0) << "0"_ba;
    QTest::newRow("minus one") << qint64(-1) << "-1"_ba;
    QTest::newRow("beyond a double's whole numbers") << qint64(9007199254740993) << "9007199254740993"_ba;
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
    for (const double number : {0.0,
                                1.0,
                                2.5,
                                0.1,
                                0.3,
                                1.0 / 3,
                                2.0 / 3,
                                3.141592653589793,
                                100.0,
                                1e15,
                                1e16,
                                1e17,
                                1e21,
                                1e22,
                                1e23,
                                123456789012345680.0,
                                9007199254740991.0,
                                9007199254740992.0,
                                9007199254740994.0,
                                9223372036854775808.0,
                                18446744073709551616.0,
                                1e-5,
                                1e-6,
                                1e-7,
                                1e308,
                                5e-324,
                                2.2250738585072011e-308,
                                1.7976931348623157e308,
                                Limits::min(),
                                Limits::denorm_min(),
                                Limits::max(),
                                Limits::epsilon(),
                                0.1 + 0.2,
                                45.359237}) {
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

void JsonWritingTest::doubleThatIsNotFiniteRefusesTheRecord_data()
{
    QTest::addColumn<double>("number");
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("minus not a number") << -std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("signalling") << std::bit_cast<double>(quint64(0x7FF0000000000001));
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
    QTest::newRow("minus infinity") << -std::numeric_limits<double>::infinity();
}

void JsonWritingTest::doubleThatIsNotFiniteRefusesTheRecord()
{
    QFETCH(const double, number);
    QVERIFY(!Json::write(with(&CotizacionRequest::peso, number)));
    QVERIFY(!Json::write(with(&CotizacionRequest::valor, number)));
    QVERIFY(!Json::write(with(&CotizacionRequest::peso, number, &CotizacionRequest::valor, number)));
    QVERIFY(Json::write(with(&CotizacionRequest::peso, 1)));
}

MAROVENDA_TEST_MAIN(JsonWritingTest)
#include "tst_JsonWriting.moc"
