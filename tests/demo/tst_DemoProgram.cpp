#include "DemoTest.h"
#include "Seed.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <sqlite3.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

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

class DemoProgramTest : public DemoTest {
    Q_OBJECT

private Q_SLOTS:
    void runsAndEnds_data();
    void runsAndEnds();
    void refusesOptions_data();
    void refusesOptions();
    void prints_data();
    void prints();
    void saysThatThePortIsBusy();
    void leavesOtherFilesAlone_data();
    void leavesOtherFilesAlone();
    void resets();
};

void DemoProgramTest::runsAndEnds_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void DemoProgramTest::runsAndEnds()
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

void DemoProgramTest::refusesOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown") << QStringList{u"--nope"_s};
    QTest::newRow("argument") << QStringList{u"nope"_s};
    QTest::newRow("no value") << QStringList{u"--port"_s};
    QTest::newRow("no file") << QStringList{u"--database"_s, QString()};
    for (const auto &port : {u"65536"_s, u"-1"_s, u"x"_s, u"080"_s, u"0x10"_s})
        QTest::newRow(qPrintable(port)) << QStringList{u"--port"_s, port};
}

void DemoProgramTest::refusesOptions()
{
    QFETCH(QStringList, arguments);
    Program program(arguments);
    QVERIFY(program.wait());
    QCOMPARE(program.status(), 2);
    QCOMPARE(program.output(), QString());
    QCOMPARE(program.errors().count(u'\n'), 1);
}

void DemoProgramTest::prints_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("text");
    QTest::newRow("help") << u"--help"_s << u"--database <FILE>"_s;
    QTest::newRow("version") << u"--version"_s << u"marovenda-demo-service "_s;
    for (const auto &customer : demoCustomers())
        QTest::newRow(qPrintable(customer.nombre)) << u"--customers"_s << customer.email + u"  "_s;
    QTest::newRow("password") << u"--customers"_s << u"Casillero#3"_s;
}

void DemoProgramTest::prints()
{
    QFETCH(QString, option);
    QFETCH(QString, text);
    Program program({option});
    QVERIFY(program.wait());
    QCOMPARE(program.status(), 0);
    QVERIFY(program.output().contains(text.trimmed()));
    QCOMPARE(program.errors(), QString());
}

void DemoProgramTest::saysThatThePortIsBusy()
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

void DemoProgramTest::leavesOtherFilesAlone_data()
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

void DemoProgramTest::leavesOtherFilesAlone()
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

void DemoProgramTest::resets()
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

QTEST_GUILESS_MAIN(DemoProgramTest)
#include "tst_DemoProgram.moc"
