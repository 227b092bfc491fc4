#pragma once

#include "SessionStore.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

/// The four values that the app stores on the device. Setters write the value to the store before they return. Use it
/// on the main thread only.
///
/// If the store cannot be used, the session prints one line on stderr and keeps the values in memory only.
class Session final : public QObject {
    Q_OBJECT
public:
    /// Creates a session that uses the store in `directory`.
    explicit Session(QString directory, QObject *parent = nullptr);

    /// Returns the session of the process, which uses the store in the user's data directory. It is created at the
    /// first call and never destroyed.
    static Session &instance();

    /// Returns the directory of that store. It depends on the application's name.
    static QString usersDirectory();

    /// 0 means that nobody is signed in; every other number is a customer.
    qint64 userId();
    void setUserId(qint64 value);
    bool someoneSignedIn() { return userId() != 0; }

    QString userNombre();
    void setUserNombre(const QString &value);

    QString userEmail();
    void setUserEmail(const QString &value);

    /// Signs a customer in. Writes the three values in one transaction and sets all of them before it emits the
    /// change signals, in the order of the parameters.
    void setCustomer(qint64 userId, const QString &nombre, const QString &email);

    /// Returns the encoded bytes of the photo. The first call reads and checks them; if it finds the store damaged,
    /// it signs the customer out.
    QByteArray userAvatarData();
    void setUserAvatarData(const QByteArray &value);

Q_SIGNALS:
    void userIdChanged();
    void userNombreChanged();
    void userEmailChanged();
    void userAvatarDataChanged();

private:
    /// Opens the store at the first call, since the window's first frame does not need it.
    SessionStore &store();
    void write(const QList<std::pair<SessionStore::Key, QByteArray>> &values);
    void load();
    void clearAll();

    const QString m_directory;
    std::optional<SessionStore> m_store;
    QTimer m_logTimer;
    qint64 m_userId = 0;
    QString m_userNombre;
    QString m_userEmail;
    std::optional<QByteArray> m_userAvatarData;
};
