#pragma once

#include "InstanceLock.h"

#include <QDeadlineTimer>
#include <QLocalServer>
#include <QObject>

#include <chrono>
#include <functional>

class QLocalSocket;

/// Sees to it that one app at a time is open on a store: a later start has the open one raise its window. Who has the
/// lock in the store's folder is the open one, and listens at a socket there, which only the user can reach.
class OnlyInstance final : public QObject {
    Q_OBJECT
public:
    /// Unanswered: another one has the lock and did not answer in time.
    enum class Start { First, AnotherWasRaised, Unanswered };
    /// Brings the window to the front with a launcher's token (see Activation), which may be empty or any bytes;
    /// false when there is none to bring.
    using Raise = std::function<bool(const QByteArray &token)>;

    /// How long a later start waits for an answer. What is left of the two seconds after which a customer thinks that
    /// nothing happens is for the start of its process.
    static constexpr std::chrono::milliseconds usualPatience{1500};

    /// For the store in `folder`.
    explicit OnlyInstance(QString folder, std::chrono::milliseconds patience = usualPatience);
    ~OnlyInstance() override;

    /// To be called once. First also where the folder cannot be made, or cannot hold a lock or a socket: several are
    /// open then. One that is just ending is waited for.
    Start start(const QByteArray &token);

    /// What is done when a later start asks; those that came before this are answered from here on. It is called from
    /// the event loop.
    void setRaise(Raise raise) { m_raise = std::move(raise); }

    /// Where the open one listens.
    QString address() const;

    /// A request is one line: "raise 1 TOKEN", the token in percent-encoding. It is answered with "raised", or with
    /// the end of the connection. Another version of the app may be the one that is open, so both sides stay as they
    /// are; fields that follow are ignored.
    static constexpr qsizetype longestRequest = 4096;
    /// Visitors that have not asked yet; of more, the one that waits longest is sent away.
    static constexpr qsizetype mostVisitors = 8;

private:
    bool listen();
    bool ask(const QByteArray &token, const QDeadlineTimer &deadline) const;
    void receive();
    void hear(QLocalSocket *visitor);
    void sendAway(QLocalSocket *visitor);

    const QString m_folder;
    const std::chrono::milliseconds m_patience;
    InstanceLock m_lock;
    QLocalServer m_server;
    QList<QLocalSocket *> m_visitors;
    Raise m_raise;
};
