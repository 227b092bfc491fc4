#pragma once

#include <QHash>
#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>
#include <memory>

/// An HTTP/1.1 server on loopback that notes every request to the byte and answers as a test tells it to, wrongly
/// too. It lives on the test's event loop. Without a script for a path it answers 404 without a body.
class ScriptedServer : public QObject {
    Q_OBJECT
public:
    struct Request {
        QByteArray method;
        /// As in the request line: "/api_login.php".
        QByteArray path;
        QList<std::pair<QByteArray, QByteArray>> headers;
        QByteArray body;

        /// The value of a header, whatever the letter case of its name; null when there is none.
        QByteArray header(const QByteArray &name) const;
    };

    /// The way back to one request's sender. Keep it to answer later.
    class Answer {
    public:
        explicit Answer(QTcpSocket *socket) : m_socket(socket) {}

        /// A whole reply with its Content-Length; the connection then closes unless `keepOpen`.
        void send(const QByteArray &body, int status = 200, const QByteArray &moreHeaders = {},
                  bool keepOpen = false);
        /// Bytes as they are.
        void raw(const QByteArray &bytes);
        /// Ends the connection: after what was written has gone, or at once with a reset.
        void close();
        void reset();
        bool isConnected() const { return m_socket && m_socket->state() == QTcpSocket::ConnectedState; }

    private:
        QPointer<QTcpSocket> m_socket;
    };
    using AnswerPtr = std::shared_ptr<Answer>;
    using Script = std::function<void(const Request &request, const AnswerPtr &answer)>;

    /// Ends a connection with a reset, which throws away what the other end has not read yet.
    static void reset(QTcpSocket *socket);

    /// Listens on 127.0.0.1, on a free port unless one is given.
    explicit ScriptedServer(quint16 port = 0, QObject *parent = nullptr);

    quint16 port() const { return m_server.serverPort(); }
    /// "http://127.0.0.1:PORT/"
    QString baseUrl() const;

    /// What happens on requests for a path, with its query or without ("/api_paquetes.php" stands for all its
    /// queries).
    void on(const QByteArray &path, Script script);
    /// The same reply to every request for a path.
    void reply(const QByteArray &path, const QByteArray &body, int status = 200);
    /// Requests for a path stay unanswered until the test answers them from `held`.
    void hold(const QByteArray &path);
    /// A connection is shown to `script` before anything is read from it; true when the script has dealt with it.
    void onConnection(std::function<bool(QTcpSocket *)> script) { m_onConnection = std::move(script); }
    /// A request is shown to `script` as soon as its head has come, before its body; true when dealt with.
    void onHead(std::function<bool(const Request &, const AnswerPtr &)> script) { m_onHead = std::move(script); }

    /// Forgets scripts, requests and held answers, and ends all connections.
    void clear();

    /// The requests so far whose head and body have come, in that order.
    const QList<Request> &requests() const { return m_requests; }
    int connections() const { return m_connections; }
    /// The unanswered requests' answers, in the order of their coming.
    QList<AnswerPtr> held;

Q_SIGNALS:
    void received();

private:
    struct Incoming {
        QByteArray bytes;
        bool headSeen = false;
        bool done = false;
    };

    void accept();
    void read(QTcpSocket *socket, Incoming &incoming);
    void answer(const Request &request, QTcpSocket *socket);

    QTcpServer m_server;
    QHash<QByteArray, Script> m_scripts;
    std::function<bool(QTcpSocket *)> m_onConnection;
    std::function<bool(const Request &, const AnswerPtr &)> m_onHead;
    QList<Request> m_requests;
    QList<QPointer<QTcpSocket>> m_sockets;
    int m_connections = 0;
};
