#include "Json.h"
#include "Records.h"
#include "Seed.h"
#include "Service.h"
#include "Store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <sqlite3.h>

#include <csignal>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20'000;

struct Reply {
    int status = 0;
    QByteArray head;
    QByteArray body;

    template <Record R>
    R as() const
    {
        return Json::read<R>(body).record.value_or(R());
    }
    QString message() const { return as<StandardResponse>().message.value_or(QString()); }
    bool good() const { return as<StandardResponse>().status == u"success"_s; }
    /// Every refusal is a StandardResponse in JSON.
    bool refused(int with) const
    {
        return status == with && head.contains("Content-Type: application/json\r\n") &&
               as<StandardResponse>().status == u"error"_s && !message().isEmpty();
    }
};

/// Sends the bytes as they are and takes what comes until the service closes the connection.
Reply exchange(quint16 port, const QByteArray &bytes)
{
    QTcpSocket socket;
    socket.connectToHost(u"127.0.0.1"_s, port);
    if (!socket.waitForConnected(patience))
        return {};
    socket.write(bytes);
    QByteArray all;
    while (socket.state() == QAbstractSocket::ConnectedState && socket.waitForReadyRead(patience))
        all += socket.readAll();
    all += socket.readAll();
    const qsizetype end = all.indexOf("\r\n\r\n");
    return {all.mid(9, 3).toInt(), all.left(end + 2), end < 0 ? QByteArray() : all.mid(end + 4)};
}

QByteArray head(const QByteArray &verb, const QByteArray &path, const QByteArray &host = "127.0.0.1")
{
    return verb + " /" + path + " HTTP/1.1\r\nHost: " + host + "\r\n";
}

QByteArray postBytes(const QByteArray &path, const QByteArray &body)
{
    return head("POST", path) +
           "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

Reply post(quint16 port, const QByteArray &path, const QByteArray &body)
{
    return exchange(port, postBytes(path, body));
}

template <Record R>
Reply post(quint16 port, const QByteArray &path, const R &record)
{
    return post(port, path, *Json::write(record));
}

Reply get(quint16 port, const QByteArray &path) { return exchange(port, head("GET", path) + "\r\n"); }

/// The executable, told to end when this goes.
class Program {
public:
    explicit Program(const QStringList &arguments)
    {
        m_process.start(QStringLiteral(DEMO_SERVICE), arguments);
        m_process.waitForStarted(patience);
    }
    ~Program()
    {
        if (m_process.state() != QProcess::NotRunning)
            end(SIGKILL);
    }
    /// Its first line on stdout.
    QString line()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(patience)) {
        }
        return QString::fromUtf8(m_process.readLine());
    }
    bool end(int signal)
    {
        ::kill(static_cast<pid_t>(m_process.processId()), signal);
        return m_process.waitForFinished(patience);
    }
    bool wait() { return m_process.waitForFinished(patience); }
    int status() const { return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1; }
    QString output() { return QString::fromUtf8(m_process.readAllStandardOutput()); }
    QString errors() { return QString::fromUtf8(m_process.readAllStandardError()); }

private:
    QProcess m_process;
};

quint16 portOf(const QString &line)
{
    static const QRegularExpression announced(u"^Listening on http://127\\.0\\.0\\.1:([0-9]+)/\n$"_s);
    return announced.match(line).captured(1).toUShort();
}

} // namespace

class DemoServiceTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        m_path = m_directory->filePath(u"demo.sqlite"_s);
        start();
    }
    void cleanup() { m_service.reset(); }

    void seedIsAsPromised();
    void seedIsTheSameEachTime();
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
    void listsForUnknownCustomer();
    void refusesListing_data();
    void refusesListing();
    void keepsAQuotationOnTop();
    void refusesQuotation();
    void keepsAVehicleRequest();
    void namesTheWrongPlace_data();
    void namesTheWrongPlace();
    void boundsTexts();
    void refusesStrangeHosts_data();
    void refusesStrangeHosts();
    void refusesWrongPathsAndMethods();
    void refusesWhatIsNotJson();
    void refusesLargeBodies();
    void leavesNothingOfARefusedRequestForTheNext();
    void sendsNoParts();
    void survivesAnyBytes();
    void keepsEverythingAcrossARestart();
    void keepsNoPasswordInClear();
    void fileIsTheOwnersAlone();
    void servesManyAtOnce();
    void storeServesManyThreads();
    void programRunsAndEnds_data();
    void programRunsAndEnds();
    void programRefusesOptions_data();
    void programRefusesOptions();
    void programPrints_data();
    void programPrints();
    void programSaysThatThePortIsBusy();
    void programLeavesOtherFilesAlone_data();
    void programLeavesOtherFilesAlone();
    void programResets();

private:
    void start()
    {
        m_service = std::make_unique<Service>();
        QVERIFY(m_service->bind(0));
        m_service->start(std::make_unique<Store>(m_path));
        m_port = m_service->port();
    }
    void restart()
    {
        m_service.reset();
        start();
    }
    LoginResponse login(const QString &email, const QString &password)
    {
        return post(m_port, "api_login.php", LoginRequest{email, password}).as<LoginResponse>();
    }
    DashboardResponse listing(qint64 id)
    {
        return get(m_port, "api_paquetes.php?user_id=" + QByteArray::number(id)).as<DashboardResponse>();
    }
    qint64 countOf(const char *query)
    {
        m_service.reset();
        sqlite3 *database = nullptr;
        sqlite3_stmt *statement = nullptr;
        sqlite3_open(QFile::encodeName(m_path).constData(), &database);
        sqlite3_prepare_v2(database, query, -1, &statement, nullptr);
        const qint64 count = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : -1;
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return count;
    }

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_path;
    std::unique_ptr<Service> m_service;
    quint16 m_port = 0;
};

void DemoServiceTest::seedIsAsPromised()
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

void DemoServiceTest::seedIsTheSameEachTime()
{
    const QByteArray first = get(m_port, "api_paquetes.php?user_id=1").body;
    m_path = m_directory->filePath(u"other.sqlite"_s);
    restart();
    QCOMPARE(get(m_port, "api_paquetes.php?user_id=1").body, first);
}

void DemoServiceTest::signsIn()
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

void DemoServiceTest::signsInWhateverTheCaseOfTheMail()
{
    QCOMPARE(login(u"  ANA@Marovenda.Example\n"_s, u"Casillero#1"_s).status, u"success"_s);
    QCOMPARE(login(u"ana@marovenda.example"_s, u"casillero#1"_s).status, u"error"_s);
}

void DemoServiceTest::refusesWrongPassword()
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

void DemoServiceTest::recoveryAnswersTheSameForAll()
{
    const auto known = post(m_port, "api_recuperar.php", RecuperarRequest{u"ana@marovenda.example"_s});
    const auto unknown = post(m_port, "api_recuperar.php", RecuperarRequest{u"nadie@marovenda.example"_s});
    QVERIFY(known.good());
    QCOMPARE(known.message(), u"Si el correo está registrado, recibirás un enlace"_s);
    QCOMPARE(known.body, unknown.body);
    QCOMPARE(countOf("SELECT count(*) FROM recovery_requests"), 2);
}

void DemoServiceTest::registers()
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

void DemoServiceTest::refusesRegistration_data()
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

void DemoServiceTest::refusesRegistration()
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

void DemoServiceTest::savesTheProfile()
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

void DemoServiceTest::leavesEmptyProfileFieldsAsTheyAre()
{
    QVERIFY(post(m_port, "api_perfil.php", PerfilRequest{2, u"Uno"_s, {}, {}, u"AAEC"_s}).good());
    QVERIFY(post(m_port, "api_perfil.php", PerfilRequest{2, u"Dos"_s, {}, {}, {}}).good());
    QCOMPARE(login(u"bruno@marovenda.example"_s, u"Casillero#2"_s).nombre, u"Dos"_s);
    QCOMPARE(listing(2).avatar, u"AAEC"_s);
}

void DemoServiceTest::refusesProfile_data()
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

void DemoServiceTest::refusesProfile()
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

void DemoServiceTest::tellsTheMailbox()
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

void DemoServiceTest::listsForUnknownCustomer()
{
    for (const qint64 id : {qint64(99), qint64(0), qint64(-3), std::numeric_limits<qint64>::min()}) {
        const auto reply = listing(id);
        QCOMPARE(reply.status, u"error"_s);
        QVERIFY(reply.paquetes->isEmpty() && reply.cotizaciones->isEmpty());
    }
}

void DemoServiceTest::refusesListing_data()
{
    QTest::addColumn<QByteArray>("query");
    for (const char *query :
         {"", "?", "?user_id=", "?user_id=uno", "?user_id=1&user_id=2", "?user_id=1.0", "?user_id=+1", "?user_id=01",
          "?user_id=9223372036854775808", "?user_id=%00", "?userid=1"})
        QTest::newRow(*query ? query : "none") << QByteArray(query);
}

void DemoServiceTest::refusesListing()
{
    QFETCH(QByteArray, query);
    const auto reply = get(m_port, "api_paquetes.php" + query);
    QVERIFY(reply.refused(400));
    QVERIFY(reply.message().startsWith(u"Solicitud no válida: user_id: "_s));
}

void DemoServiceTest::keepsAQuotationOnTop()
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

void DemoServiceTest::refusesQuotation()
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

void DemoServiceTest::keepsAVehicleRequest()
{
    QVERIFY(post(m_port, "api_auto.php", AutoRequest{3, u"Škoda"_s, u"Ñ"_s, u"2019"_s, u"Miami"_s}).good());
    QVERIFY(!post(m_port, "api_auto.php", AutoRequest{99, u"a"_s, u"b"_s, u"c"_s, u"d"_s}).good());
    QCOMPARE(countOf("SELECT count(*) FROM vehicle_requests WHERE customer = 3 AND anio = '2019'"), 1);
}

void DemoServiceTest::namesTheWrongPlace_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("place");
    const auto row = [](const char *path, const char *body, const QString &place) {
        QTest::addRow("%s %s", path, body) << QByteArray(path) << QByteArray(body) << place;
    };
    row("api_login.php", R"({"email":"a"})", u"password: missing"_s);
    row("api_login.php", R"({"email":1,"password":"b"})", u"email: number, must be text"_s);
    row("api_login.php", "", u"not JSON"_s);
    row("api_login.php", "[]", u"array, must be object"_s);
    row("api_recuperar.php", "{}", u"email: missing"_s);
    row("api_registro.php", R"({"nombre":"a","email":"b","password":"c","direccion":null,"ciudad":"e"})",
        u"direccion: null, must be text"_s);
    row("api_perfil.php", R"({"user_id":"1"})", u"user_id: text, must be number"_s);
    row("api_casillero.php", R"({"user_id":1})", u"user_id: number, must be text"_s);
    row("api_cotizar.php", R"({"user_id":1.5})", u"user_id: number, must be a whole number of 64 bits"_s);
    row("api_auto.php", R"({"user_id":1,"marca":"a","modelo":"b","anio":2019,"ubicacion":"d"})",
        u"anio: number, must be text"_s);
}

void DemoServiceTest::namesTheWrongPlace()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    QFETCH(QString, place);
    const auto reply = post(m_port, path, body);
    QVERIFY(reply.refused(400));
    QVERIFY2(reply.message().startsWith(u"Solicitud no válida: "_s + place), qUtf8Printable(reply.message()));
}

void DemoServiceTest::boundsTexts()
{
    const auto send = [&](qsizetype length) {
        const AutoRequest request{3, u"a"_s, QString(length, u'ñ'), u"2019"_s, u"Miami"_s};
        return post(m_port, "api_auto.php", request);
    };
    QVERIFY(send(10'000).good());
    const auto reply = send(10'001);
    QVERIFY(reply.refused(400));
    QCOMPARE(reply.message(), u"Solicitud no válida: modelo: text of 10001 characters, must be at most 10000"_s);
    QVERIFY(post(m_port, "api_perfil.php", PerfilRequest{3, u"C"_s, {}, {}, QString(4'000'000, u'A')}).good());
}

void DemoServiceTest::refusesStrangeHosts_data()
{
    QTest::addColumn<QByteArray>("hosts");
    QTest::addColumn<int>("status");
    const auto row = [](const char *host, int status) {
        QTest::newRow(host) << "Host: " + QByteArray(host) + "\r\n" << status;
    };
    for (const char *host : {"127.0.0.1", "127.0.0.1:80", "localhost", "LocalHost:8473", "[::1]", "[::1]:9"})
        row(host, 200);
    for (const char *host : {"marovenda.example", "127.0.0.1.example", "localhost.example:80", "127.0.0.1:", "[::1",
                             "::1", "127.0.0.1:80:80", "127.0.0.1:x", "a@localhost", "127.0.0.2", ""})
        row(host, 403);
    QTest::newRow("none") << QByteArray() << 403;
    QTest::newRow("two") << QByteArray("Host: localhost\r\nHost: example.com\r\n") << 403;
}

void DemoServiceTest::refusesStrangeHosts()
{
    QFETCH(QByteArray, hosts);
    QFETCH(int, status);
    const auto reply = exchange(m_port, "GET /api_paquetes.php?user_id=3 HTTP/1.1\r\n" + hosts + "\r\n");
    QCOMPARE(reply.status, status);
    QCOMPARE(reply.good(), status == 200);
    QVERIFY(status == 200 || reply.refused(status));
}

void DemoServiceTest::refusesWrongPathsAndMethods()
{
    for (const char *path :
         {"", "api_login", "api_loginXphp", "API_LOGIN.PHP", "api_login.php/", "../api_login.php"}) {
        QVERIFY2(get(m_port, path).refused(404), path);
        QVERIFY2(post(m_port, path, QByteArray("{}")).refused(404), path);
    }
    for (const char *verb : {"GET", "PUT", "DELETE", "PATCH", "OPTIONS"}) {
        const auto reply = exchange(m_port, head(verb, "api_login.php") + "Content-Length: 0\r\n\r\n");
        QVERIFY2(reply.refused(405), verb);
        QVERIFY(reply.head.contains("\r\nAllow: POST\r\n"));
    }
    const auto reply = post(m_port, "api_paquetes.php?user_id=1", QByteArray("{}"));
    QVERIFY(reply.refused(405));
    QVERIFY(reply.head.contains("\r\nAllow: GET\r\n"));
}

void DemoServiceTest::refusesWhatIsNotJson()
{
    const QByteArray body = *Json::write(RecuperarRequest{u"ana@marovenda.example"_s});
    const auto send = [&](const QByteArray &headers) {
        return exchange(m_port, head("POST", "api_recuperar.php") + headers + "\r\n" + body);
    };
    const QByteArray length = "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    QVERIFY(send(length + "Content-Type: Application/JSON\r\n").good());
    QVERIFY(send(length).refused(400));
    for (const char *type : {"text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
                             "application/json; charset=utf-8"})
        QVERIFY2(send(length + "Content-Type: " + type + "\r\n").refused(400), type);
    QVERIFY(send("Content-Type: application/json\r\n").refused(411));
    QVERIFY(send(length + "Content-Type: application/json\r\nContent-Encoding: gzip\r\n").refused(415));
}

void DemoServiceTest::refusesLargeBodies()
{
    constexpr int most = 32 * 1024 * 1024;
    // As large as allowed is read, and found not to be JSON.
    QVERIFY(post(m_port, "api_login.php", QByteArray(most, ' ')).refused(400));
    QVERIFY(post(m_port, "api_login.php", QByteArray(most + 1, ' ')).refused(413));
    const QByteArray chunk = "100000\r\n" + QByteArray(0x100000, ' ') + "\r\n";
    const QByteArray headers = "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n";
    QVERIFY(exchange(m_port, head("POST", "api_login.php") + headers + chunk.repeated(32) + "1\r\n \r\n0\r\n\r\n")
                .refused(413));
}

void DemoServiceTest::leavesNothingOfARefusedRequestForTheNext()
{
    const QByteArray hidden = postBytes("api_recuperar.php", R"({"email":"hidden"})");
    const QByteArray outer = head("POST", "api_recuperar.php", "marovenda.example");
    exchange(m_port, outer + "Content-Length: " + QByteArray::number(hidden.size()) + "\r\n\r\n" + hidden);
    QCOMPARE(countOf("SELECT count(*) FROM recovery_requests"), 0);
}

void DemoServiceTest::sendsNoParts()
{
    const QByteArray whole = get(m_port, "api_paquetes.php?user_id=2").body;
    for (const char *range : {"0-1", "99999-", "0-1,5-99999999", "99999-100000,0-1", "-0"}) {
        const auto reply =
            exchange(m_port, head("GET", "api_paquetes.php?user_id=2") + "Range: bytes=" + range + "\r\n\r\n");
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.body, whole);
    }
}

void DemoServiceTest::survivesAnyBytes()
{
    const QByteArray nested = R"({"email":)" + QByteArray(2000, '[') + QByteArray(2000, ']') + "}";
    for (const QByteArray &body : {QByteArray("\xFF\xFE\x00{", 4), QByteArray("{\"email\":\"\xC3\"}"), nested,
                                   QByteArray("{\"email\":\"\\ud800\"}"), QByteArray("{\"email\":1e999}"),
                                   QByteArray("{\"email\":\"a\"}\0", 14)})
        QVERIFY2(post(m_port, "api_recuperar.php", body).status == 400, body.left(40).constData());
    for (const QByteArray &bytes :
         {QByteArray("\r\n\r\n"), QByteArray("\0\x01\x02\r\n\r\n", 7), QByteArray("GET\r\n\r\n"),
          "GET /" + QByteArray(20'000, 'a') + " HTTP/1.1\r\n\r\n",
          head("GET", "") + "X: " + QByteArray(20'000, 'a') + "\r\n\r\n",
          QByteArray("POST / HTTP/9.9\r\nContent-Length: -1\r\n\r\n")}) {
        const int status = exchange(m_port, bytes).status;
        QVERIFY(status == 0 || (status >= 400 && status < 500));
    }
    const QString text = QString::fromUtf8("a\0b\"\\/\u2028🛋", 14);
    QVERIFY(post(m_port, "api_cotizar.php", CotizacionRequest{3, u"aereo"_s, text, text, 1e308, 1, text}).good());
    QCOMPARE(listing(3).cotizaciones->at(0).descripcion, text);
}

void DemoServiceTest::keepsEverythingAcrossARestart()
{
    post(m_port, "api_registro.php", RegistroRequest{u"Eva"_s, u"eva@example.com"_s, u"Eva#1"_s, {}, {}});
    post(m_port, "api_cotizar.php", CotizacionRequest{4, u"aereo"_s, u"Miami"_s, u"Panamá"_s, 1, 2, u"Silla"_s});
    post(m_port, "api_auto.php", AutoRequest{4, u"a"_s, u"b"_s, u"c"_s, u"d"_s});
    post(m_port, "api_recuperar.php", RecuperarRequest{u"eva@example.com"_s});
    post(m_port, "api_perfil.php", PerfilRequest{4, u"Eva María"_s, {}, u"Eva#2"_s, u"AAEC"_s});
    restart();
    QCOMPARE(login(u"eva@example.com"_s, u"Eva#2"_s).nombre, u"Eva María"_s);
    QCOMPARE(listing(4).avatar, u"AAEC"_s);
    QCOMPARE(listing(4).cotizaciones->at(0).descripcion, u"Silla"_s);
    QCOMPARE(listing(1).paquetes->size(), 230);
    QCOMPARE(countOf("SELECT count(*) FROM vehicle_requests"), 1);
    QCOMPARE(countOf("SELECT count(*) FROM recovery_requests WHERE customer = 4"), 1);
}

void DemoServiceTest::keepsNoPasswordInClear()
{
    post(m_port, "api_registro.php", RegistroRequest{u"Eva"_s, u"eva@example.com"_s, u"Muy-Secreta"_s, {}, {}});
    post(m_port, "api_perfil.php", PerfilRequest{4, u"Eva"_s, {}, u"Aun-Mas-Secreta"_s, {}});
    QByteArray bytes;
    const auto readAll = [&] {
        for (const QString &name : QDir(m_directory->path()).entryList(QDir::Files)) {
            QFile file(m_directory->filePath(name));
            QVERIFY(file.open(QFile::ReadOnly));
            bytes += file.readAll();
        }
    };
    readAll();
    m_service.reset();
    readAll();
    QVERIFY(bytes.contains("eva@example.com"));
    QVERIFY(bytes.contains("$argon2id$"));
    for (const char *password : {"Muy-Secreta", "Aun-Mas-Secreta", "Casillero#"})
        QVERIFY2(!bytes.contains(password), password);
}

void DemoServiceTest::fileIsTheOwnersAlone()
{
    constexpr auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
                            QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    // Also where an empty file that everyone may read stood before.
    m_path = m_directory->filePath(u"open.sqlite"_s);
    QFile open(m_path);
    QVERIFY(open.open(QFile::WriteOnly));
    QVERIFY(open.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadOther));
    restart();
    const auto files = QDir(m_directory->path()).entryInfoList(QDir::Files);
    QVERIFY(files.size() >= 4);
    for (const auto &file : files)
        QVERIFY2(!(file.permissions() & others), qUtf8Printable(file.fileName()));
}

void DemoServiceTest::servesManyAtOnce()
{
    constexpr int clients = 24;
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (int client = 0; client < clients; ++client) {
        threads.emplace_back([&, client] {
            const auto name = QString::number(client);
            const RegistroRequest request{
                name, client % 2 ? u"same@example.com"_s : name + u"@example.com"_s, u"x"_s, {}, {}};
            good += post(m_port, "api_registro.php", request).good();
            good += post(m_port, "api_cotizar.php", CotizacionRequest{3, u"aereo"_s, {}, {}, 1, 1, name}).good();
            good += get(m_port, "api_paquetes.php?user_id=1").good();
        });
    }
    for (auto &thread : threads)
        thread.join();
    // Of those who want one and the same e-mail, one gets it.
    QCOMPARE(good.load(), clients / 2 + 1 + clients + clients);
    QCOMPARE(listing(3).cotizaciones->size(), clients);
}

void DemoServiceTest::storeServesManyThreads()
{
    Store store(m_directory->filePath(u"threads.sqlite"_s));
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&, thread] {
            for (int turn = 0; turn < 25; ++turn) {
                const auto name = u"%1-%2"_s.arg(thread).arg(turn);
                const auto id = store.addCustomer({name, name, {}, {}, {}}, "hash");
                right += id && store.customerById(*id)->nombre == name;
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    QCOMPARE(right.load(), 8 * 25);
}

void DemoServiceTest::programRunsAndEnds_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void DemoServiceTest::programRunsAndEnds()
{
    QFETCH(int, signal);
    Program program({u"--port"_s, u"0"_s, u"--database"_s, m_directory->filePath(u"program.sqlite"_s)});
    const quint16 port = portOf(program.line());
    QVERIFY(port > 0);
    QVERIFY(get(port, "api_paquetes.php?user_id=1").good());
    QVERIFY(program.end(signal));
    QCOMPARE(program.status(), 0);
    QCOMPARE(program.output() + program.errors(), QString());
    QCOMPARE(exchange(port, head("GET", "") + "\r\n").status, 0);
}

void DemoServiceTest::programRefusesOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown") << QStringList{u"--nope"_s};
    QTest::newRow("argument") << QStringList{u"nope"_s};
    QTest::newRow("no value") << QStringList{u"--port"_s};
    QTest::newRow("no file") << QStringList{u"--database"_s, QString()};
    for (const auto &port : {u"65536"_s, u"-1"_s, u"x"_s, u"080"_s, u"0x10"_s})
        QTest::newRow(qPrintable(port)) << QStringList{u"--port"_s, port};
}

void DemoServiceTest::programRefusesOptions()
{
    QFETCH(QStringList, arguments);
    Program program(arguments);
    QVERIFY(program.wait());
    QCOMPARE(program.status(), 2);
    QCOMPARE(program.output(), QString());
    QCOMPARE(program.errors().count(u'\n'), 1);
}

void DemoServiceTest::programPrints_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("text");
    QTest::newRow("help") << u"--help"_s << u"--database <FILE>"_s;
    QTest::newRow("version") << u"--version"_s << u"marovenda-demo-service "_s;
    for (const auto &customer : demoCustomers())
        QTest::newRow(qPrintable(customer.nombre)) << u"--customers"_s << customer.email + u"  "_s;
    QTest::newRow("password") << u"--customers"_s << u"Casillero#3"_s;
}

void DemoServiceTest::programPrints()
{
    QFETCH(QString, option);
    QFETCH(QString, text);
    Program program({option});
    QVERIFY(program.wait());
    QCOMPARE(program.status(), 0);
    QVERIFY(program.output().contains(text.trimmed()));
    QCOMPARE(program.errors(), QString());
}

void DemoServiceTest::programSaysThatThePortIsBusy()
{
    // The second neither shares the port nor touches the first one's data.
    QVERIFY(post(m_port, "api_cotizar.php", CotizacionRequest{3, u"aereo"_s, {}, {}, 1, 1, {}}).good());
    Program program({u"--port"_s, QString::number(m_port), u"--database"_s, m_path, u"--reset"_s});
    QVERIFY(program.wait());
    QCOMPARE(program.status(), 1);
    QCOMPARE(program.output(), QString());
    const QString errors = program.errors();
    QCOMPARE(errors.count(u'\n'), 1);
    QVERIFY(errors.contains(u"Port %1 "_s.arg(m_port)));
    QCOMPARE(listing(3).cotizaciones->size(), 1);
}

void DemoServiceTest::programLeavesOtherFilesAlone_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("reset");
    QTest::newRow("text") << u"text"_s << false;
    QTest::newRow("text, reset") << u"text"_s << true;
    QTest::newRow("foreign") << u"foreign"_s << false;
    QTest::newRow("foreign, reset") << u"foreign"_s << true;
    QTest::newRow("damaged") << u"damaged"_s << false;
    QTest::newRow("cut") << u"cut"_s << false;
    QTest::newRow("directory") << u"directory"_s << true;
    QTest::newRow("no directory") << u"no directory"_s << false;
}

void DemoServiceTest::programLeavesOtherFilesAlone()
{
    QFETCH(QString, kind);
    QFETCH(bool, reset);
    m_service.reset();
    QString path = m_path;
    QFile file(path);
    if (kind == u"text"_s) {
        QVERIFY(file.open(QFile::WriteOnly | QFile::Truncate));
        file.write("My thesis.\n");
    } else if (kind == u"foreign"_s) {
        QVERIFY(file.remove());
        sqlite3 *database = nullptr;
        sqlite3_open(QFile::encodeName(path).constData(), &database);
        QCOMPARE(sqlite3_exec(database, "CREATE TABLE other (a)", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    } else if (kind == u"damaged"_s) {
        QVERIFY(file.open(QFile::ReadWrite));
        file.seek(4096);
        file.write(QByteArray(20'000, 'x'));
    } else if (kind == u"cut"_s) {
        QVERIFY(file.resize(file.size() / 2));
    } else {
        path = m_directory->path() + (kind == u"directory"_s ? QString() : u"/none/demo.sqlite"_s);
    }
    file.close();
    const auto bytes = [&] {
        return QFileInfo(path).isFile() && file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray before = bytes();
    file.close();

    QStringList arguments{u"--port"_s, u"0"_s, u"--database"_s, path};
    if (reset)
        arguments << u"--reset"_s;
    Program program(arguments);
    QVERIFY(program.wait());
    QCOMPARE(program.status(), 1);
    QCOMPARE(program.output(), QString());
    const QString errors = program.errors();
    QVERIFY2(errors.count(u'\n') == 1 && errors.contains(path), qUtf8Printable(errors));
    QCOMPARE(bytes(), before);
}

void DemoServiceTest::programResets()
{
    QVERIFY(post(m_port, "api_cotizar.php", CotizacionRequest{3, u"aereo"_s, {}, {}, 1, 1, {}}).good());
    m_service.reset();
    Program program({u"--port"_s, u"0"_s, u"--database"_s, m_path, u"--reset"_s});
    m_port = portOf(program.line());
    QVERIFY(m_port > 0);
    QCOMPARE(listing(3).status, u"success"_s);
    QVERIFY(listing(3).cotizaciones->isEmpty());
    QCOMPARE(listing(1).paquetes->size(), 230);
}

QTEST_GUILESS_MAIN(DemoServiceTest)
#include "tst_DemoService.moc"
