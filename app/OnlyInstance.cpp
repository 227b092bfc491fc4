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
/// What a socket's address may be long on every system, in bytes (macOS has the least, 104 with the end).
constexpr qsizetype longestAddress = 100;
constexpr auto visitorsTime = 2s;

} // namespace

OnlyInstance::OnlyInstance(QString folder, std::chrono::milliseconds patience)
    : m_folder(std::move(folder)), m_patience(patience), m_lock(m_folder + "/instance.lock"_L1)
{
    connect(&m_server, &QLocalServer::newConnection, this, &OnlyInstance::receive);
}

OnlyInstance::~OnlyInstance()
{
    while (!m_visitors.isEmpty())
        sendAway(m_visitors.first());
    // The socket goes before the lock: who has the lock next makes one of the same name.
    m_server.close();
}

OnlyInstance::Start OnlyInstance::start(const QByteArray &token)
{
    // The store says what is in its way, once it is opened.
    if (!StoreFile::makeFolder(m_folder).isEmpty())
        return Start::First;
    for (const QDeadlineTimer deadline(m_patience); !deadline.hasExpired(); QThread::msleep(10)) {
        const auto outcome = m_lock.take();
        if (outcome == InstanceLock::Outcome::Taken && !listen())
            m_lock.release(); // nobody is to wait for what cannot answer
        if (outcome != InstanceLock::Outcome::AnotherHasIt)
            return Start::First;
        if (ask(token, deadline))
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
    // What one that was killed has left.
    QLocalServer::removeServer(address);
    if (!m_server.listen(address))
        return false;
    QFile::setPermissions(address, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return true;
}

bool OnlyInstance::ask(const QByteArray &token, const QDeadlineTimer &deadline) const
{
    const auto left = [&] { return static_cast<int>(deadline.remainingTime()); };
    // An overlong token is no launcher's.
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

void OnlyInstance::receive()
{
    while (QLocalSocket *const visitor = m_server.nextPendingConnection()) {
        visitor->setReadBufferSize(longestRequest);
        m_visitors.append(visitor);
        if (m_visitors.size() > mostVisitors)
            sendAway(m_visitors.first());
        connect(visitor, &QLocalSocket::readyRead, this, [this, visitor] { hear(visitor); });
        connect(visitor, &QLocalSocket::disconnected, this, [this, visitor] { sendAway(visitor); });
        QTimer::singleShot(visitorsTime, visitor, [this, visitor] { sendAway(visitor); });
    }
}

void OnlyInstance::hear(QLocalSocket *visitor)
{
    if (!visitor->canReadLine()) {
        if (visitor->bytesAvailable() >= longestRequest)
            sendAway(visitor);
        return;
    }
    const QList<QByteArray> fields = visitor->readLine().trimmed().split(' ');
    const bool understood = fields.size() >= 2 && fields[0] == "raise" && fields[1] == "1";
    // The variable of the environment that it becomes ends at a zero.
    const QByteArray token = QByteArray::fromPercentEncoding(fields.value(2));
    if (understood && m_raise && m_raise(token.contains('\0') ? QByteArray() : token)) {
        visitor->write(answer.data(), answer.size());
        visitor->flush();
    }
    sendAway(visitor);
}

void OnlyInstance::sendAway(QLocalSocket *visitor)
{
    if (!m_visitors.removeOne(visitor))
        return;
    visitor->disconnect(this);
    visitor->abort();
    visitor->deleteLater();
}
