#include "MarovendaTest.h"
#include "RecordTools.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What holds for each of the thirteen records by its field list.
class RecordsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void keysAreTheFieldsInOrder_data();
    void keysAreTheFieldsInOrder();
    void keysLeadBackToTheirFields();
    void unknownTextsLeadToNoField_data();
    void unknownTextsLeadToNoField();
    void thereAreSevenRequestsAndSixReplies();
    void everyRecordIsReadAsItWasWritten();
    void everyRecordIsWrittenAsItWasRead();
    void emptyObjectIsAReplyWithoutFields();
    void recordsAreCopiesOfTheBytes();
};

namespace {

template <Record R>
QByteArrayList keysOf()
{
    QByteArrayList keys;
    for (const std::string_view key : CodingKeys<R>::names)
        keys += QByteArray(key.data(), static_cast<qsizetype>(key.size()));
    return keys;
}

template <Record R>
void addKeys(const QByteArrayList &expected)
{
    QTest::newRow(RecordTools::name<R>) << keysOf<R>() << expected;
}

} // namespace

void RecordsTest::keysAreTheFieldsInOrder_data()
{
    QTest::addColumn<QByteArrayList>("keys");
    QTest::addColumn<QByteArrayList>("expected");
    addKeys<LoginRequest>({"email", "password"});
    addKeys<LoginResponse>({"status", "message", "id", "nombre"});
    addKeys<RecuperarRequest>({"email"});
    addKeys<StandardResponse>({"status", "message"});
    addKeys<RegistroRequest>({"nombre", "email", "password", "direccion", "ciudad"});
    addKeys<PerfilRequest>({"user_id", "nombre", "email", "password", "avatar_base64"});
    addKeys<AutoRequest>({"user_id", "marca", "modelo", "anio", "ubicacion"});
    addKeys<CotizacionRequest>({"user_id", "tipo", "origen", "destino", "peso", "valor", "descripcion"});
    addKeys<CasilleroRequest>({"user_id"});
    addKeys<CasilleroResponse>({"status", "nombreCompleto", "message"});
    addKeys<DashboardResponse>({"status", "avatar", "paquetes", "cotizaciones"});
    addKeys<DashboardResponse::Paquete>({"tracking", "descripcion", "estado", "fecha_recibido"});
    addKeys<DashboardResponse::Cotizacion>({"origen", "descripcion", "estado"});
}

void RecordsTest::keysAreTheFieldsInOrder()
{
    QFETCH(const QByteArrayList, keys);
    QTEST(keys, "expected");
}

void RecordsTest::keysLeadBackToTheirFields()
{
    RecordTools::forEachRecord<RecordTools::All>([]<class R>(const R &) {
        for (std::size_t field = 0; field < CodingKeys<R>::count; ++field)
            QCOMPARE(CodingKeys<R>::find(CodingKeys<R>::names[field]), std::optional(field));
    });
    static_assert(CodingKeys<LoginResponse>::find("id") == 2);
}

void RecordsTest::unknownTextsLeadToNoField_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const QByteArray &text : {"Status"_ba, "STATUS"_ba, "statu"_ba, "status "_ba, " status"_ba, "statuses"_ba,
                                   ""_ba, "otro"_ba, "nombrecompleto"_ba, "nombre_completo"_ba, "userId"_ba})
        QTest::newRow(text.isEmpty() ? "empty" : text.constData()) << text;
    QTest::newRow("a zero after it") << QByteArray("status\0", 7);
}

void RecordsTest::unknownTextsLeadToNoField()
{
    QFETCH(const QByteArray, text);
    RecordTools::forEachRecord<RecordTools::All>([&]<class R>(const R &) {
        QVERIFY(!CodingKeys<R>::find(std::string_view(text.constData(), static_cast<std::size_t>(text.size()))));
    });
}

void RecordsTest::thereAreSevenRequestsAndSixReplies()
{
    QCOMPARE(boost::mp11::mp_size<RecordTools::Requests>::value, 7U);
    QCOMPARE(boost::mp11::mp_size<RecordTools::Replies>::value, 6U);
}

void RecordsTest::everyRecordIsReadAsItWasWritten()
{
    RecordTools::forEachRecord<RecordTools::All>([]<class R>(const R &empty) {
        const R full = RecordTools::filled<R>();
        QVERIFY2(!RecordTools::same(full, empty), RecordTools::name<R>);
        for (const R &record : {empty, full}) {
            const auto bytes = Json::write(record);
            QVERIFY2(bytes, RecordTools::name<R>);
            const auto result = Json::read<R>(*bytes);
            QVERIFY2(result, qPrintable(result.error));
            QVERIFY(result.error.isEmpty());
            QVERIFY2(RecordTools::same(*result.record, record), bytes->constData());
        }
    });
}

void RecordsTest::everyRecordIsWrittenAsItWasRead()
{
    RecordTools::forEachRecord<RecordTools::All>([]<class R>(const R &) {
        const QByteArray bytes = RecordTools::documentWithout<R>("");
        const auto result = Json::read<R>(bytes);
        QVERIFY2(result, qPrintable(result.error));
        QCOMPARE(Json::write(*result.record), std::optional(bytes));
    });
}

void RecordsTest::emptyObjectIsAReplyWithoutFields()
{
    RecordTools::forEachRecord<RecordTools::Replies>([]<class R>(const R &) {
        const auto result = Json::read<R>("{}");
        QVERIFY2(result, qPrintable(result.error));
        RecordTools::forEachField(*result.record, [](const char *key, const auto &value) { QVERIFY2(!value, key); });
    });
}

void RecordsTest::recordsAreCopiesOfTheBytes()
{
    QByteArray bytes = R"({"status":"success","paquetes":[{"tracking":"1Z"}]})";
    const auto result = Json::read<DashboardResponse>(bytes);
    bytes.fill('x');
    QCOMPARE(result.record->status, u"success"_s);
    QCOMPARE(result.record->paquetes->first().tracking, u"1Z"_s);
}

MAROVENDA_TEST_MAIN(RecordsTest)
#include "tst_Records.moc"
