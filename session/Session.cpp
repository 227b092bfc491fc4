#include "Session.h"

#include <QStandardPaths>
#include <QStringDecoder>

#include <chrono>
#include <cstdio>
#include <utility>

namespace {

void printError(const QString &line) { std::fprintf(stderr, "marovenda: session: %s\n", qUtf8Printable(line)); }

/// Keeps a byte-order mark at the start, which QString::fromUtf8 would drop.
QString textOf(const QByteArray &utf8)
{
    return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(utf8);
}

} // namespace

Session::Session(QString directory, QObject *parent) : QObject(parent), m_directory(std::move(directory))
{
    // Shorten the log some time after the write: with a large photo, the customer would notice both at once.
    m_logTimer.setSingleShot(true);
    m_logTimer.setInterval(std::chrono::seconds(1));
    connect(&m_logTimer, &QTimer::timeout, this, [this] { store().shortenLog(); });
}

Session &Session::instance()
{
    static auto *const session = new Session(usersDirectory());
    return *session;
}

QString Session::usersDirectory() { return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation); }

SessionStore &Session::store()
{
    if (!m_store) {
        m_store.emplace(m_directory, printError);
        load();
    }
    return *m_store;
}

void Session::write(const QList<std::pair<SessionStore::Key, QByteArray>> &values)
{
    store().write(values);
    if (m_store->isLogLong())
        m_logTimer.start();
}

void Session::load()
{
    const QByteArray id = m_store->read(SessionStore::Key::UserId).value_or(QByteArray());
    const QByteArray nombre = m_store->read(SessionStore::Key::UserNombre).value_or(QByteArray());
    const QByteArray email = m_store->read(SessionStore::Key::UserEmail).value_or(QByteArray());
    // If a value was damaged, the store was replaced, and the values read before are void too.
    if (m_store->wasReplaced())
        return;
    m_userId = id.toLongLong();
    m_userNombre = textOf(nombre);
    m_userEmail = textOf(email);
}

void Session::clearAll()
{
    m_userAvatarData = QByteArray();
    m_userNombre.clear();
    m_userEmail.clear();
    m_userId = 0;
    emit userAvatarDataChanged();
    emit userNombreChanged();
    emit userEmailChanged();
    emit userIdChanged();
}

// The setters write to the store even if the value is unchanged: the last write may have failed.

qint64 Session::userId()
{
    store();
    return m_userId;
}

void Session::setUserId(qint64 value)
{
    write({{SessionStore::Key::UserId, QByteArray::number(value)}});
    if (std::exchange(m_userId, value) != value)
        emit userIdChanged();
}

QString Session::userNombre()
{
    store();
    return m_userNombre;
}

void Session::setUserNombre(const QString &value)
{
    write({{SessionStore::Key::UserNombre, value.toUtf8()}});
    if (std::exchange(m_userNombre, value) != value)
        emit userNombreChanged();
}

QString Session::userEmail()
{
    store();
    return m_userEmail;
}

void Session::setUserEmail(const QString &value)
{
    write({{SessionStore::Key::UserEmail, value.toUtf8()}});
    if (std::exchange(m_userEmail, value) != value)
        emit userEmailChanged();
}

void Session::setCustomer(qint64 userId, const QString &nombre, const QString &email)
{
    write({{SessionStore::Key::UserId, QByteArray::number(userId)},
           {SessionStore::Key::UserNombre, nombre.toUtf8()},
           {SessionStore::Key::UserEmail, email.toUtf8()}});
    const bool otherId = std::exchange(m_userId, userId) != userId;
    const bool otherNombre = std::exchange(m_userNombre, nombre) != nombre;
    const bool otherEmail = std::exchange(m_userEmail, email) != email;
    if (otherId)
        emit userIdChanged();
    if (otherNombre)
        emit userNombreChanged();
    if (otherEmail)
        emit userEmailChanged();
}

QByteArray Session::userAvatarData()
{
    if (!m_userAvatarData) {
        m_userAvatarData = store().read(SessionStore::Key::UserAvatar).value_or(QByteArray());
        if (store().wasReplaced())
            clearAll();
    }
    return *m_userAvatarData;
}

void Session::setUserAvatarData(const QByteArray &value)
{
    const bool changed = value != userAvatarData();
    m_userAvatarData = value;
    write({{SessionStore::Key::UserAvatar, value}});
    if (changed)
        emit userAvatarDataChanged();
}
