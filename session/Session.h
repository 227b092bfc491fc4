#pragma once

#include "SessionStore.h"
#include "StoreKeeper.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <future>
#include <memory>
#include <optional>

/// The four values that the app stores on the device. Setters write the value to the store before they return (see
/// SessionStore::write), but do not wait for the disk or for other processes. Use it on the main thread only.
///
/// If the store cannot be used, the session prints one line on stderr and keeps the values in memory only.
class Session final : public QObject {
    Q_OBJECT
public:
    /// Creates a session that uses the store in `directory`.
    explicit Session(QString directory, QObject *parent = nullptr);

    /// Opens the store and reads the values on another thread, which may take some time if the store must be created
    /// first. Without this call, the first use does so.
    void prepare();

    /// Puts on disk what has been written, for at most five seconds. Call it before the process ends.
    void finish();

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
    /// A store and what it contains.
    struct Opened {
        std::unique_ptr<SessionStore> store;
        /// In the order of the keys; nothing for a photo that was not read.
        std::array<std::optional<QByteArray>, SessionStore::keys.size()> values;
        SessionStore::Values postponed;
        bool wasReplaced = false;
    };

    static Opened open(const QString &directory, bool prepares);
    void take(Opened opened);
    /// Opens the store at the first call, since the window's first frame does not need it.
    SessionStore &store();
    void write(const SessionStore::Values &values);
    void clearAll();

    const QString m_directory;
    std::future<Opened> m_opening;
    std::unique_ptr<SessionStore> m_store;
    std::unique_ptr<StoreKeeper> m_keeper;
    qint64 m_userId = 0;
    QString m_userNombre;
    QString m_userEmail;
    std::optional<QByteArray> m_userAvatarData;
};
