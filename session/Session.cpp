#include "Session.h"
#include "PostponedWrites.h"
#include "StoreLog.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QStringDecoder>

#include <cstdio>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

void printError(const QString &line) { std::fprintf(stderr, "marovenda: session: %s\n", qUtf8Printable(line)); }

/// Keeps a byte-order mark at the start, which QString::fromUtf8 would drop.
QString textOf(const QByteArray &utf8)
{
    return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(utf8);
}

} // namespace

Session::Session(QString directory, QObject *parent) : QObject(parent), m_directory(std::move(directory)) {}

Session &Session::instance()
{
    static auto *const session = new Session(usersDirectory());
    return *session;
}

QString Session::usersDirectory() { return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation); }

Session::Opened Session::open(const QString &directory, bool prepares)
{
    Opened opened;
    opened.store = std::make_unique<SessionStore>(directory, printError);
    for (const auto key : SessionStore::keys) {
        if (prepares || key != SessionStore::Key::UserAvatar)
            opened.values[static_cast<std::size_t>(key)] = opened.store->read(key).value_or(QByteArray());
    }
    opened.wasReplaced = opened.store->wasReplaced();
    if (!opened.store->isOpen())
        return opened;
    if (prepares)
        StoreLog::start(opened.store->path());
    PostponedWrites postponed(opened.store->path());
    if (opened.wasReplaced)
        postponed.remove();
    opened.postponed = postponed.read();
    for (const auto &[key, value] : std::as_const(opened.postponed))
        opened.values[static_cast<std::size_t>(key)] = value;
    return opened;
}

void Session::prepare()
{
    if (m_store || m_opening.valid())
        return;
    try {
        m_opening = std::async(std::launch::async, open, m_directory, true);
    } catch (const std::system_error &) {
        // The system has no more threads.
    }
}

void Session::take(Opened opened)
{
    m_store = std::move(opened.store);
    m_keeper = std::make_unique<StoreKeeper>(m_store->path(), printError, opened.postponed);
    m_store->postponeWhenLocked([this](const SessionStore::Values &values) { m_keeper->writeLater(values); });
    // What a killed process has written may not be on disk yet.
    if (QFileInfo(m_store->path() + "-wal"_L1).size() > 0)
        m_keeper->noteWrite(false);
    // If a value was damaged, the store was replaced, and the values read before are void too.
    if (opened.wasReplaced)
        return;
    auto &[userId, nombre, email, avatar] = opened.values;
    m_userId = userId->toLongLong();
    m_userNombre = textOf(*nombre);
    m_userEmail = textOf(*email);
    m_userAvatarData = std::move(avatar);
}

void Session::finish()
{
    if (m_opening.valid())
        m_opening.wait();
    if (m_store)
        m_store->postponeWhenLocked(nullptr);
    m_keeper.reset();
}

SessionStore &Session::store()
{
    if (!m_store)
        take(m_opening.valid() ? m_opening.get() : open(m_directory, false));
    return *m_store;
}

void Session::write(const SessionStore::Values &values)
{
    SessionStore &into = store();
    if (m_keeper && m_keeper->isWriting())
        m_keeper->writeLater(values);
    else if (into.write(values) && m_keeper)
        m_keeper->noteWrite(into.isLogLong());
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
