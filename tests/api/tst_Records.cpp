#include "MarovendaTest.h"
#include "RecordTools.h"

#include <QTest>

using namespace Qt::StringLiterals;
using RecordTools::with;

/// What holds for every record by its field list, and what each looks like to the byte.
class RecordsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void keysLeadBackToTheirFields();
    void everyRecordIsReadAsItWasWritten();
    void recordIsWrittenByteForByte_data();
    void recordIsWrittenByteForByte();
};

void RecordsTest::keysLeadBackToTheirFields()
{
    RecordTools::forEachRecord<RecordTools::All>([]<class R>(const R &) {
        for (std::size_t field = 0; field < CodingKeys<R>::count; ++field)
            QCOMPARE(CodingKeys<R>::find(CodingKeys<R>::names[field]), std::optional(field));
        for (const std::string_view unknown :
             {"Status", "statu", "status ", "statuses", "", "nombrecompleto", "userId"})
            QVERIFY(!CodingKeys<R>::find(unknown));
    });
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

void RecordsTest::recordIsWrittenByteForByte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");
    const auto add = []<Record R>(const R &record, const QByteArray &expected) {
        QTest::addRow("%s %s", RecordTools::name<R>, expected.constData()) << Json::write(record).value() << expected;
    };
    using Paquete = DashboardResponse::Paquete;
    using Cotizacion = DashboardResponse::Cotizacion;
    const QString email = u"a@b.example"_s;

    add(LoginRequest{email, u"Clave.1"_s}, R"({"email":"a@b.example","password":"Clave.1"})");
    add(LoginRequest{}, R"({"email":"","password":""})");
    add(RecuperarRequest{email}, R"({"email":"a@b.example"})");
    add(RegistroRequest{u"Ana Núñez"_s, email, u"x\"y"_s, u"Calle 50 / Apto. 3"_s, u"Panamá"_s},
        "{\"nombre\":\"Ana Núñez\",\"email\":\"a@b.example\",\"password\":\"x\\\"y\","
        "\"direccion\":\"Calle 50 \\/ Apto. 3\",\"ciudad\":\"Panamá\"}");
    add(PerfilRequest{42, u"Ana"_s, email, u"Clave.1"_s, u"/9j/4AAQ+w=="_s},
        "{\"user_id\":42,\"nombre\":\"Ana\",\"email\":\"a@b.example\",\"password\":\"Clave.1\","
        "\"avatar_base64\":\"\\/9j\\/4AAQ+w==\"}");
    add(AutoRequest{-3, u"Toyota"_s, u"Hilux"_s, u"2019"_s, u"Orlando, FL"_s},
        R"({"user_id":-3,"marca":"Toyota","modelo":"Hilux","anio":"2019","ubicacion":"Orlando, FL"})");
    add(CotizacionRequest{7, u"maritimo"_s, u"Miami, USA"_s, u"Panamá"_s, 2.5, 0, u"sofá"_s},
        "{\"user_id\":7,\"tipo\":\"maritimo\",\"origen\":\"Miami, USA\",\"destino\":\"Panamá\",\"peso\":2.5,"
        "\"valor\":0,\"descripcion\":\"sofá\"}");
    add(CotizacionRequest{},
        R"({"user_id":0,"tipo":"","origen":"","destino":"","peso":0,"valor":0,"descripcion":""})");
    add(CasilleroRequest{u"7"_s}, R"({"user_id":"7"})");
    add(LoginResponse{u"success"_s, u"m"_s, u"42"_s, u"Ana"_s},
        R"({"status":"success","message":"m","id":"42","nombre":"Ana"})");
    add(with(&LoginResponse::id, u"42"_s), R"({"id":"42"})");
    add(with(&LoginResponse::status, u"success"_s, &LoginResponse::nombre, u""_s),
        R"({"status":"success","nombre":""})");
    add(StandardResponse{u"success"_s, u"m"_s}, R"({"status":"success","message":"m"})");
    add(CasilleroResponse{u"success"_s, u"Ana Núñez"_s, u"m"_s},
        R"({"status":"success","nombreCompleto":"Ana Núñez","message":"m"})");
    add(DashboardResponse{u"success"_s, u"a/b"_s,
                          QList{Paquete{u"1Z"_s, u"sofá"_s, u"RECIBIDO"_s, u"2024-01-02"_s}, Paquete()},
                          QList{Cotizacion{u"Miami"_s, u"sofá"_s, u"PENDIENTE"_s}}},
        "{\"status\":\"success\",\"avatar\":\"a\\/b\",\"paquetes\":[{\"tracking\":\"1Z\",\"descripcion\":\"sofá\","
        "\"estado\":\"RECIBIDO\",\"fecha_recibido\":\"2024-01-02\"},{}],\"cotizaciones\":[{\"origen\":\"Miami\","
        "\"descripcion\":\"sofá\",\"estado\":\"PENDIENTE\"}]}");
    add(with(&DashboardResponse::paquetes, QList<Paquete>()), R"({"paquetes":[]})");
    add(DashboardResponse{}, "{}");
}

void RecordsTest::recordIsWrittenByteForByte()
{
    QFETCH(const QByteArray, bytes);
    QTEST(bytes, "expected");
}

MAROVENDA_TEST(RecordsTest)
#include "tst_Records.moc"
