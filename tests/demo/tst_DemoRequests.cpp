#include "DemoTest.h"

#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

class DemoRequestsTest : public DemoTest {
    Q_OBJECT

private Q_SLOTS:
    void seedIsAsPromised();
    void seedIsTheSameEachTime();
    void listsForUnknownCustomer();
    void refusesListing_data();
    void refusesListing();
    void keepsAQuotationOnTop();
    void refusesQuotation();
    void keepsAVehicleRequest();
};

void DemoRequestsTest::seedIsAsPromised()
{
    const auto ana = listing(1);
    QCOMPARE(ana.status, u"success"_s);
    QVERIFY(!ana.avatar);
    QCOMPARE(ana.paquetes->size(), 230);
    QCOMPARE(ana.cotizaciones->size(), 12);
    QCOMPARE(ana.paquetes->first().tracking, u"MRV-100230"_s);
    QCOMPARE(ana.paquetes->last().tracking, u"MRV-100001"_s);
    QSet<QString> trackings, states;
    int untracked = 0, undescribed = 0, stateless = 0, undated = 0;
    for (const auto &package : *ana.paquetes) {
        untracked += !package.tracking;
        undescribed += !package.descripcion;
        stateless += !package.estado;
        undated += !package.fecha_recibido;
        trackings.insert(package.tracking.value_or(QString()));
        states.insert(package.estado.value_or(QString()));
    }
    QVERIFY(untracked > 0 && undescribed > 0 && stateless > 0 && undated > 0);
    QCOMPARE(trackings.size(), 230 - untracked); // one stands twice, and "" for all without
    QVERIFY(states.size() >= 6);
    for (int row = 0; row < 10; ++row)
        QVERIFY(ana.paquetes->at(row).tracking);

    const auto bruno = listing(2);
    QCOMPARE(bruno.paquetes->size(), 2);
    QCOMPARE(bruno.paquetes->at(0).tracking, u"MRV-200002"_s);
    QCOMPARE(bruno.paquetes->at(1).tracking, u"MRV-200001"_s);
    QCOMPARE(bruno.cotizaciones->size(), 1);
    const auto carla = listing(3);
    QCOMPARE(carla.status, u"success"_s);
    QVERIFY(carla.paquetes && carla.paquetes->isEmpty());
    QVERIFY(carla.cotizaciones && carla.cotizaciones->isEmpty());
}

void DemoRequestsTest::seedIsTheSameEachTime()
{
    const QByteArray first = get(m_port, "api_paquetes.php?user_id=1").body;
    m_path = m_directory->filePath(u"other.sqlite"_s);
    restart();
    QCOMPARE(get(m_port, "api_paquetes.php?user_id=1").body, first);
}

void DemoRequestsTest::listsForUnknownCustomer()
{
    for (const qint64 id : {qint64(99), qint64(0), qint64(-3), std::numeric_limits<qint64>::min()}) {
        const auto reply = listing(id);
        QCOMPARE(reply.status, u"error"_s);
        QVERIFY(reply.paquetes->isEmpty() && reply.cotizaciones->isEmpty());
    }
}

void DemoRequestsTest::refusesListing_data()
{
    QTest::addColumn<QByteArray>("query");
    for (const char *query :
         {"", "?", "?user_id=", "?user_id=uno", "?user_id=1&user_id=2", "?user_id=1.0", "?user_id=+1", "?user_id=01",
          "?user_id=9223372036854775808", "?user_id=%00", "?userid=1"})
        QTest::newRow(*query ? query : "none") << QByteArray(query);
}

void DemoRequestsTest::refusesListing()
{
    QFETCH(QByteArray, query);
    const auto reply = get(m_port, "api_paquetes.php" + query);
    QVERIFY(reply.refused(400));
    QVERIFY(reply.message().startsWith(u"Solicitud no válida: user_id: "_s));
}

void DemoRequestsTest::keepsAQuotationOnTop()
{
    const QString description = u"Sofá de \"cuero\"\n– 3 piezas / ñandú 🛋"_s;
    const CotizacionRequest request{2, u"maritimo"_s, u"Miami, USA"_s, u"Panamá"_s, 2.5, 0, description};
    QVERIFY(post(m_port, "api_cotizar.php", request).good());
    const auto all = *listing(2).cotizaciones;
    QCOMPARE(all.size(), 2);
    QCOMPARE(all[0].origen, u"Miami, USA"_s);
    QCOMPARE(all[0].descripcion, description);
    QCOMPARE(all[0].estado, u"pendiente"_s);
    QCOMPARE(listing(3).cotizaciones->size(), 0);
}

void DemoRequestsTest::refusesQuotation()
{
    const auto send = [&](qint64 id, const QString &tipo, double peso) {
        return post(m_port, "api_cotizar.php", CotizacionRequest{id, tipo, u"a"_s, u"b"_s, peso, 1, {}});
    };
    QCOMPARE(send(99, u"aereo"_s, 1).message(), u"No encontramos a ese cliente"_s);
    QCOMPARE(send(3, u"Aereo"_s, 1).message(), u"Elige envío aéreo o marítimo"_s);
    QCOMPARE(send(3, u"aereo"_s, -1).message(), u"El peso y el valor no pueden ser negativos"_s);
    QVERIFY(listing(3).cotizaciones->isEmpty());
    QVERIFY(send(3, u"aereo"_s, 0).good());
}

void DemoRequestsTest::keepsAVehicleRequest()
{
    QVERIFY(post(m_port, "api_auto.php", AutoRequest{3, u"Škoda"_s, u"Ñ"_s, u"2019"_s, u"Miami"_s}).good());
    QVERIFY(!post(m_port, "api_auto.php", AutoRequest{99, u"a"_s, u"b"_s, u"c"_s, u"d"_s}).good());
    QCOMPARE(countOf("SELECT count(*) FROM vehicle_requests WHERE customer = 3 AND anio = '2019'"), 1);
}

QTEST_GUILESS_MAIN(DemoRequestsTest)
#include "tst_DemoRequests.moc"
