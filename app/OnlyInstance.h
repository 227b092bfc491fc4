#pragma once

#include "InstanceLock.h"

#include <QDeadlineTimer>
#include <QLocalServer>
#include <QObject>

#include <chrono>
#include <functional>

class QLocalSocket;

/// Makes sure that only one process uses a store: a later start asks the first process to raise its window. The first
/// process holds the lock in the store's folder, and listens on a socket that only the user can access.
class OnlyInstance final : public QObject {
    Q_OBJECT
public:
    /// Unanswered: another process holds the lock and did not answer in time.
    enum class Start { First, AnotherWasRaised, Unanswered };
    /// Brings the window to the front with a launcher's token (see Activation), which may be empty or contain any
    /// bytes. Returns false if there is no window.
    using Raise = std::function<bool(const QByteArray &token)>;

    /// How long a later start waits for an answer. The customer should wait no longer than two seconds, including the
    /// start of the process.
    static constexpr std::chrono::milliseconds usualPatience{1500};

    explicit OnlyInstance(QString folder, std::chrono::milliseconds timeout = usualPatience);
    ~OnlyInstance() override;

    /// Call it once. Waits for a process that is just ending. Also returns First if the folder cannot be created or
    /// does not support locks or sockets; several processes may run in that case.
    Start start(const QByteArray &token);

    /// Sets the function that is called, from the event loop, when a later start asks. Requests that have arrived
    /// before are answered from now on.
    void setRaise(Raise raise) { m_raise = std::move(raise); }

    /// Returns the address of the socket.
    QString address() const;

    /// A request is one line: "raise 1 TOKEN", with the token percent-encoded. The answer is "raised", or the end of
    /// the connection. Never change either of them, since the other process may be another version of the app.
    /// Further fields are ignored.
    static constexpr qsizetype longestRequest = 4096;
    /// The maximum number of connections without a request; beyond it, the oldest one is closed.
    static constexpr qsizetype mostVisitors = 8;

private:
    bool listen();
    bool requestRaise(const QByteArray &token, const QDeadlineTimer &deadline) const;
    void acceptClients();
    void readRequest(QLocalSocket *client);
    void disconnectClient(QLocalSocket *client);

    const QString m_folder;
    const std::chrono::milliseconds m_timeout;
    InstanceLock m_lock;
    QLocalServer m_server;
    QList<QLocalSocket *> m_clients;
    Raise m_raise;
};
