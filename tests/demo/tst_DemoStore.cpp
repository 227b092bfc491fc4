#include "DemoTest.h"
#include "Store.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sqlite3.h>

#include <thread>

using namespace Qt::StringLiterals;

class DemoStoreTest : public DemoTest {
    Q_OBJECT

private Q_SLOTS:
    void keepsEverythingAcrossARestart();
    void keepsNoPasswordInClear();
    void fileIsTheOwnersAlone();
    void servesManyAtOnce();
    void storeServesManyThreads();
    void listingsFollowEveryChange();
};

void DemoStoreTest::keepsEverythingAcrossARestart()
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

void DemoStoreTest::keepsNoPasswordInClear()
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

void DemoStoreTest::fileIsTheOwnersAlone()
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

void DemoStoreTest::servesManyAtOnce()
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

void DemoStoreTest::storeServesManyThreads()
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

void DemoStoreTest::listingsFollowEveryChange()
{
    const qsizetype before = listing(2).cotizaciones->size();
    post(m_port, "api_cotizar.php", CotizacionRequest{2, u"aereo"_s, u"Miami"_s, u"Panamá"_s, 1, 2, u"Silla"_s});
    QCOMPARE(listing(2).cotizaciones->size(), before + 1);
    post(m_port, "api_perfil.php", PerfilRequest{2, u"Bruno"_s, {}, {}, u"AAEC"_s});
    QCOMPARE(listing(2).avatar, u"AAEC"_s);
    // Somebody else may have the file open too.
    sqlite3 *other = nullptr;
    QCOMPARE(sqlite3_open(QFile::encodeName(m_path).constData(), &other), SQLITE_OK);
    QCOMPARE(
        sqlite3_exec(other, "UPDATE packages SET estado = 'perdido' WHERE customer = 2", nullptr, nullptr, nullptr),
        SQLITE_OK);
    sqlite3_close(other);
    QCOMPARE(listing(2).paquetes->at(0).estado, u"perdido"_s);
    // More customers than are remembered.
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 40; ++i)
            QCOMPARE(listing(i % 3 + 1).paquetes->size(), i % 3 == 0 ? 230 : i % 3 == 1 ? 2 : 0);
    }
}

QTEST_GUILESS_MAIN(DemoStoreTest)
#include "tst_DemoStore.moc"
