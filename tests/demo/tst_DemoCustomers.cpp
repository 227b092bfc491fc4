#include "DemoTest.h"
#include "Seed.h"

#include <QTest>

using namespace Qt::StringLiterals;

class DemoCustomersTest : public DemoTest {
    Q_OBJECT

private Q_SLOTS:
    void signsIn();
    void signsInWhateverTheCaseOfTheMail();
    void refusesWrongPassword();
    void recoveryAnswersTheSameForAll();
    void registers();
    void refusesRegistration_data();
    void refusesRegistration();
    void savesTheProfile();
    void leavesEmptyProfileFieldsAsTheyAre();
    void refusesProfile_data();
    void refusesProfile();
    void tellsTheMailbox();
};

void DemoCustomersTest::signsIn()
{
    int id = 0;
    for (const auto &customer : demoCustomers()) {
        const auto reply = login(customer.email, customer.password);
        QCOMPARE(reply.status, u"success"_s);
        QCOMPARE(reply.id, QString::number(++id));
        QCOMPARE(reply.nombre, customer.nombre);
    }
    QCOMPARE(id, 3);
}

void DemoCustomersTest::signsInWhateverTheCaseOfTheMail()
{
    QCOMPARE(login(u"  ANA@Marovenda.Example\n"_s, u"Casillero#1"_s).status, u"success"_s);
    QCOMPARE(login(u"ana@marovenda.example"_s, u"casillero#1"_s).status, u"error"_s);
}

void DemoCustomersTest::refusesWrongPassword()
{
    for (const auto &email : {u"ana@marovenda.example"_s, u"nadie@marovenda.example"_s, QString()}) {
        for (const auto &password : {u"Casillero#2"_s, QString()}) {
            const auto reply = login(email, password);
            QCOMPARE(reply.status, u"error"_s);
            QCOMPARE(reply.message, u"Correo o contraseña incorrectos"_s);
            QVERIFY(!reply.id && !reply.nombre);
        }
    }
}

void DemoCustomersTest::recoveryAnswersTheSameForAll()
{
    const auto known = post(m_port, "api_recuperar.php", RecuperarRequest{u"ana@marovenda.example"_s});
    const auto unknown = post(m_port, "api_recuperar.php", RecuperarRequest{u"nadie@marovenda.example"_s});
    QVERIFY(known.good());
    QCOMPARE(known.message(), u"Si el correo está registrado, recibirás un enlace"_s);
    QCOMPARE(known.body, unknown.body);
    QCOMPARE(countOf("SELECT count(*) FROM recovery_requests"), 2);
}

void DemoCustomersTest::registers()
{
    const RegistroRequest request{u"Íñigo Peña"_s, u" Inigo@Example.com "_s, u"Clave/ñ1"_s, u"Calle 1"_s, u"Colón"_s};
    const auto reply = post(m_port, "api_registro.php", request).as<LoginResponse>();
    QCOMPARE(reply.status, u"success"_s);
    QCOMPARE(reply.id, u"4"_s);
    QCOMPARE(reply.nombre, u"Íñigo Peña"_s);
    QCOMPARE(login(u"inigo@example.com"_s, u"Clave/ñ1"_s).id, u"4"_s);
    const auto empty = listing(4);
    QCOMPARE(empty.status, u"success"_s);
    QVERIFY(empty.paquetes->isEmpty() && empty.cotizaciones->isEmpty());
}

void DemoCustomersTest::refusesRegistration_data()
{
    QTest::addColumn<QString>("nombre");
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("message");
    QTest::newRow("taken") << u"Eva"_s << u" ANA@marovenda.example"_s << u"x"_s << u"Ese correo ya está registrado"_s;
    QTest::newRow("no name") << u" "_s << u"e@e"_s << u"x"_s << u"Completa tu nombre y tu contraseña"_s;
    QTest::newRow("no password") << u"Eva"_s << u"e@e"_s << QString() << u"Completa tu nombre y tu contraseña"_s;
    QTest::newRow("no mail") << u"Eva"_s << u"eva"_s << u"x"_s << u"Escribe un correo válido"_s;
}

void DemoCustomersTest::refusesRegistration()
{
    QFETCH(QString, nombre);
    QFETCH(QString, email);
    QFETCH(QString, password);
    const auto reply = post(m_port, "api_registro.php", RegistroRequest{nombre, email, password, {}, {}});
    QCOMPARE(reply.as<LoginResponse>().status, u"error"_s);
    QVERIFY(!reply.as<LoginResponse>().id);
    QTEST(reply.message(), "message");
    QCOMPARE(listing(4).status, u"error"_s);
}

void DemoCustomersTest::savesTheProfile()
{
    const QByteArray photo("\xFF\xD8\x00/+photo", 10);
    const PerfilRequest request{2, u"Bruno Ñato"_s, u"Nuevo@Example.com"_s, u"Otra#9"_s,
                                QString::fromLatin1(photo.toBase64())};
    QVERIFY(post(m_port, "api_perfil.php", request).good());
    QCOMPARE(login(u"bruno@marovenda.example"_s, u"Otra#9"_s).status, u"error"_s);
    QCOMPARE(login(u"nuevo@example.com"_s, u"Casillero#2"_s).status, u"error"_s);
    QCOMPARE(login(u"nuevo@example.com"_s, u"Otra#9"_s).nombre, u"Bruno Ñato"_s);
    QCOMPARE(QByteArray::fromBase64(listing(2).avatar->toLatin1()), photo);
    QVERIFY(!listing(1).avatar);
}

void DemoCustomersTest::leavesEmptyProfileFieldsAsTheyAre()
{
    QVERIFY(post(m_port, "api_perfil.php", PerfilRequest{2, u"Uno"_s, {}, {}, u"AAEC"_s}).good());
    QVERIFY(post(m_port, "api_perfil.php", PerfilRequest{2, u"Dos"_s, {}, {}, {}}).good());
    QCOMPARE(login(u"bruno@marovenda.example"_s, u"Casillero#2"_s).nombre, u"Dos"_s);
    QCOMPARE(listing(2).avatar, u"AAEC"_s);
}

void DemoCustomersTest::refusesProfile_data()
{
    QTest::addColumn<qint64>("id");
    QTest::addColumn<QString>("nombre");
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("avatar");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");
    const auto badPhoto = u"Solicitud no válida: avatar_base64: text, must be base64"_s;
    QTest::newRow("unknown") << qint64(99) << u"X"_s << QString() << QString() << 200
                             << u"No encontramos a ese cliente"_s;
    QTest::newRow("taken") << qint64(2) << u"X"_s << u"ANA@marovenda.example"_s << QString() << 200
                           << u"Ese correo ya está registrado"_s;
    QTest::newRow("no name") << qint64(2) << u" "_s << QString() << QString() << 200 << u"Completa tu nombre"_s;
    QTest::newRow("no mail") << qint64(2) << u"X"_s << u"x"_s << QString() << 200 << u"Escribe un correo válido"_s;
    QTest::newRow("letters") << qint64(2) << u"X"_s << QString() << u"AA*C"_s << 400 << badPhoto;
    QTest::newRow("length") << qint64(2) << u"X"_s << QString() << u"AAECA"_s << 400 << badPhoto;
    QTest::newRow("padding") << qint64(2) << u"X"_s << QString() << u"A=EC"_s << 400 << badPhoto;
}

void DemoCustomersTest::refusesProfile()
{
    QFETCH(qint64, id);
    QFETCH(QString, nombre);
    QFETCH(QString, email);
    QFETCH(QString, avatar);
    QFETCH(int, status);
    const auto reply = post(m_port, "api_perfil.php", PerfilRequest{id, nombre, email, u"nueva"_s, avatar});
    QVERIFY(reply.refused(status));
    QTEST(reply.message(), "message");
    QCOMPARE(login(u"bruno@marovenda.example"_s, u"Casillero#2"_s).nombre, u"Bruno Díaz"_s);
}

void DemoCustomersTest::tellsTheMailbox()
{
    const auto known = post(m_port, "api_casillero.php", CasilleroRequest{u"1"_s}).as<CasilleroResponse>();
    QCOMPARE(known.status, u"success"_s);
    QCOMPARE(known.nombreCompleto, u"Ana Lucía Peñalver Ríos MRV-1001"_s);
    for (const auto &id : {u"99"_s, u"0"_s, u"-1"_s, u"01"_s, u"uno"_s, QString()}) {
        const auto reply = post(m_port, "api_casillero.php", CasilleroRequest{id}).as<CasilleroResponse>();
        QCOMPARE(reply.status, u"error"_s);
        QCOMPARE(reply.message, u"No encontramos a ese cliente"_s);
        QVERIFY(!reply.nombreCompleto);
    }
}

QTEST_GUILESS_MAIN(DemoCustomersTest)
#include "tst_DemoCustomers.moc"
