#include "DemoTest.h"

#include "Store.h"

#include <QFile>
#include <QTcpSocket>
#include <QTest>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

bool Reply::refused(int with) const
{
    return status == with && head.contains("Content-Type: application/json\r\n") &&
           as<StandardResponse>().status == u"error"_s && !message().isEmpty();
}

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

QByteArray head(const QByteArray &verb, const QByteArray &path, const QByteArray &host)
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

Reply get(quint16 port, const QByteArray &path) { return exchange(port, head("GET", path) + "\r\n"); }

void DemoTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    m_path = m_directory->filePath(u"demo.sqlite"_s);
    start();
}

void DemoTest::cleanup() { m_service.reset(); }

void DemoTest::start()
{
    m_service = std::make_unique<Service>();
    QVERIFY(m_service->bind(0));
    m_service->start(std::make_unique<Store>(m_path));
    m_port = m_service->port();
}

void DemoTest::restart()
{
    m_service.reset();
    start();
}

LoginResponse DemoTest::login(const QString &email, const QString &password)
{
    return post(m_port, "api_login.php", LoginRequest{email, password}).as<LoginResponse>();
}

DashboardResponse DemoTest::listing(qint64 id)
{
    return get(m_port, "api_paquetes.php?user_id=" + QByteArray::number(id)).as<DashboardResponse>();
}

qint64 DemoTest::countOf(const char *query)
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
