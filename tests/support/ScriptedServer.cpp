#include "ScriptedServer.h"

#include <sys/socket.h>

using namespace Qt::StringLiterals;

QByteArray ScriptedServer::Request::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

void ScriptedServer::Answer::send(const QByteArray &body, int status, const QByteArray &moreHeaders, bool keepOpen)
{
    raw("HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\nContent-Length: " + QByteArray::number(body.size()) +
        "\r\n" + moreHeaders + "\r\n" + body);
    if (!keepOpen)
        close();
}

void ScriptedServer::Answer::raw(const QByteArray &bytes)
{
    if (m_socket) {
        m_socket->write(bytes);
        m_socket->flush();
    }
}

void ScriptedServer::Answer::close()
{
    if (m_socket)
        m_socket->disconnectFromHost();
}

void ScriptedServer::Answer::reset()
{
    if (m_socket)
        ScriptedServer::reset(m_socket);
}

void ScriptedServer::reset(QTcpSocket *socket)
{
    // SO_LINGER in socket(7): closed with a time of 0, TCP sends a reset instead of an orderly end.
    const linger none{.l_onoff = 1, .l_linger = 0};
    if (setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &none, sizeof none) != 0)
        qFatal("A connection cannot be reset");
    socket->abort();
}

ScriptedServer::ScriptedServer(quint16 port, QObject *parent) : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &ScriptedServer::accept);
    if (!m_server.listen(QHostAddress::LocalHost, port))
        qFatal("The scripted server cannot listen: %s", qUtf8Printable(m_server.errorString()));
}

QString ScriptedServer::baseUrl() const { return u"http://127.0.0.1:%1/"_s.arg(port()); }

void ScriptedServer::on(const QByteArray &path, Script script) { m_scripts.insert(path, std::move(script)); }

void ScriptedServer::reply(const QByteArray &path, const QByteArray &body, int status)
{
    on(path, [body, status](const Request &, const AnswerPtr &answer) { answer->send(body, status); });
}

void ScriptedServer::hold(const QByteArray &path)
{
    on(path, [this](const Request &, const AnswerPtr &answer) { held.append(answer); });
}

void ScriptedServer::clear()
{
    m_scripts.clear();
    m_requests.clear();
    m_onConnection = nullptr;
    m_onHead = nullptr;
    m_connections = 0;
    held.clear();
    const auto sockets = std::exchange(m_sockets, {});
    for (const auto &socket : sockets) {
        if (socket)
            socket->abort();
    }
}

void ScriptedServer::accept()
{
    while (QTcpSocket *const socket = m_server.nextPendingConnection()) {
        ++m_connections;
        m_sockets.append(socket);
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        if (m_onConnection && m_onConnection(socket))
            continue;
        const auto incoming = std::make_shared<Incoming>();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, incoming] { read(socket, *incoming); });
        read(socket, *incoming);
    }
}

void ScriptedServer::read(QTcpSocket *socket, Incoming &incoming)
{
    incoming.bytes += socket->readAll();
    const qsizetype end = incoming.bytes.indexOf("\r\n\r\n");
    if (end < 0 || incoming.done)
        return;

    Request request;
    const QList<QByteArray> lines = incoming.bytes.first(end).split('\n');
    const QList<QByteArray> first = lines.first().trimmed().split(' ');
    request.method = first.value(0);
    request.path = first.value(1);
    for (const QByteArray &line : lines.sliced(1)) {
        const qsizetype colon = line.indexOf(':');
        request.headers.append({line.first(colon).trimmed(), line.sliced(colon + 1).trimmed()});
    }
    if (!std::exchange(incoming.headSeen, true) && m_onHead && m_onHead(request, std::make_shared<Answer>(socket))) {
        incoming.done = true;
        return;
    }
    const qsizetype length = request.header("Content-Length").toLongLong();
    if (incoming.bytes.size() < end + 4 + length)
        return;
    request.body = incoming.bytes.sliced(end + 4, length);
    incoming.done = true;
    m_requests.append(request);
    answer(request, socket);
    emit received();
}

void ScriptedServer::answer(const Request &request, QTcpSocket *socket)
{
    const auto answer = std::make_shared<Answer>(socket);
    const QByteArray plain = request.path.first(std::max<qsizetype>(0, request.path.indexOf('?')));
    // A copy: the script may set another.
    if (const Script script = m_scripts.value(request.path, m_scripts.value(plain)))
        script(request, answer);
    else
        answer->send({}, 404);
}
