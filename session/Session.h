#pragma once

#include "SessionStore.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

/// The four values that stay on the device. Every write is in the store when the setter returns, and every binding to
/// a value follows it. Belongs to the main thread.
///
/// Without a usable store the values live as long as the process; one line on stderr says so.
class Session final : public QObject {
    Q_OBJECT
public:
    /// A session on the store in `directory`.
    explicit Session(QString directory, QObject *parent = nullptr);

    /// The one session of the process, in the user's data directory; made at first use, never destroyed.
    static Session &instance();

    /// Where its store is. Depends on the application's name.
    static QString usersDirectory();

    /// 0 means that nobody is signed in; every other number is a customer.
    qint64 userId();
    void setUserId(qint64 value);
    bool someoneSignedIn() { return userId() != 0; }

    QString userNombre();
    void setUserNombre(const QString &value);

    QString userEmail();
    void setUserEmail(const QString &value);

    /// Signs a customer in, with the name and the e-mail that go with the number: in the store are all three or none.
    /// All have their new values when the first change is told; they are told in this order.
    void setCustomer(qint64 userId, const QString &nombre, const QString &email);

    /// The photo's bytes as they were picked. They are read and checked at the first call; when that finds the store
    /// damaged, nobody is signed in from then on.
    QByteArray userAvatarData();
    void setUserAvatarData(const QByteArray &value);

Q_SIGNALS:
    void userIdChanged();
    void userNombreChanged();
    void userEmailChanged();
    void userAvatarDataChanged();

private:
    /// Opens it at the first use: nothing of it is needed for the window's first frame.
    SessionStore &store();
    void write(const QList<std::pair<SessionStore::Key, QByteArray>> &values);
    void load();
    void forget();

    const QString m_directory;
    std::optional<SessionStore> m_store;
    QTimer m_tidying;
    qint64 m_userId = 0;
    QString m_userNombre;
    QString m_userEmail;
    std::optional<QByteArray> m_userAvatarData;
};
