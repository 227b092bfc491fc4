#include "OnlyInstance.h"

#include "StoreFile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QByteArrayView answer = "raised\n";
/// The maximum length of a socket's address, in bytes. macOS has the lowest limit: 104, including the terminating
/// zero.
constexpr qsizetype longestAddress = 100;
constexpr auto clientTimeout = 2s;

} // namespace

OnlyInstance::OnlyInstance(QString folder, std::chrono::milliseconds timeout)
    : m_folder(std::move(folder)), m_timeout(timeout), m_lock(m_folder + "/instance.lock"_L1)
{
    connect(&m_server, &QLocalServer::newConnection, this, &OnlyInstance::acceptClients);
}

OnlyInstance::~OnlyInstance()
{
    while (!m_clients.isEmpty())
        disconnectClient(m_clients.first());
    // Close the socket before the lock is released: the next owner of the lock creates a socket with the same name.
    m_server.close();
}

OnlyInstance::Start OnlyInstance::start(const QByteArray &token)
{
    // The store reports the error when it is opened.
    if (!StoreFile::makeFolder(m_folder).isEmpty())
        return Start::First;
    for (const QDeadlineTimer deadline(m_timeout); !deadline.hasExpired(); QThread::msleep(10)) {
        const auto outcome = m_lock.take();
        if (outcome == InstanceLock::Outcome::Taken && !listen())
            m_lock.release(); // other processes must not wait for one that cannot answer
        if (outcome != InstanceLock::Outcome::AnotherHasIt)
            return Start::First;
        if (requestRaise(token, deadline))
            return Start::AnotherWasRaised;
    }
    return Start::Unanswered;
}

QString OnlyInstance::address() const
{
    QString inFolder = m_folder + "/instance.socket"_L1;
    if (QFile::encodeName(inFolder).size() <= longestAddress)
        return inFolder;
    const QByteArray folder = QFile::encodeName(QFileInfo(m_folder).canonicalFilePath());
    const QByteArray hash = QCryptographicHash::hash(folder, QCryptographicHash::Sha256).toHex().first(16);
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + "/marovenda-"_L1 +
           QString::fromLatin1(hash);
}

bool OnlyInstance::listen()
{
    const QString address = this->address();
    // A process that was killed leaves its socket behind.
    QLocalServer::removeServer(address);
    if (!m_server.listen(address))
        return false;
    QFile::setPermissions(address, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return true;
}

bool OnlyInstance::requestRaise(const QByteArray &token, const QDeadlineTimer &deadline) const
{
    const auto left = [&] { return static_cast<int>(deadline.remainingTime()); };
    // Launchers' tokens are shorter.
    const QByteArray encoded = token.toPercentEncoding();
    const QByteArray request = "raise 1 " + (encoded.size() < longestRequest / 2 ? encoded : QByteArray()) + '\n';
    QLocalSocket socket;
    socket.setReadBufferSize(answer.size());
    socket.connectToServer(address());
    if (!socket.waitForConnected(left()))
        return false;
    socket.write(request);
    while (socket.bytesAvailable() < socket.readBufferSize() && socket.waitForReadyRead(left())) {
    }
    return socket.readAll() == answer;
}

void OnlyInstance::acceptClients()
{
    while (QLocalSocket *const client = m_server.nextPendingConnection()) {
        client->setReadBufferSize(longestRequest);
        m_clients.append(client);
        if (m_clients.size() > mostVisitors)
            disconnectClient(m_clients.first());
        connect(client, &QLocalSocket::readyRead, this, [this, client] { readRequest(client); });
        connect(client, &QLocalSocket::disconnected, this, [this, client] { disconnectClient(client); });
        QTimer::singleShot(clientTimeout, client, [this, client] { disconnectClient(client); });
    }
}

void OnlyInstance::readRequest(QLocalSocket *client)
{
    if (!client->canReadLine()) {
        if (client->bytesAvailable() >= longestRequest)
            disconnectClient(client);
        return;
    }
    const QList<QByteArray> fields = client->readLine().trimmed().split(' ');
    const bool understood = fields.size() >= 2 && fields[0] == "raise" && fields[1] == "1";
    // The token becomes an environment variable, which cannot contain a zero byte.
    const QByteArray token = QByteArray::fromPercentEncoding(fields.value(2));
    if (understood && m_raise && m_raise(token.contains('\0') ? QByteArray() : token)) {
        client->write(answer.data(), answer.size());
        client->flush();
    }
    disconnectClient(client);
}

void OnlyInstance::disconnectClient(QLocalSocket *client)
{
    if (!m_clients.removeOne(client))
        return;
    client->disconnect(this);
    client->abort();
    client->deleteLater();
}
