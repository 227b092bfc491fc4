#pragma once

#include "SessionStore.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QStringList>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <memory>

/// What the tests of the store share.
namespace Stores {

/// The four values in the order of the keys; an absent one was never written.
using Values = std::array<std::optional<QByteArray>, SessionStore::keys.size()>;

inline const Values sample{QByteArray("42"), QByteArray("Ana Núñez"), QByteArray("ana@marovenda.example"),
                           QByteArray("photo ").repeated(500)};

/// A store that keeps what it reports.
struct Watched {
    explicit Watched(const QString &directory)
        : store(std::make_unique<SessionStore>(directory, [this](const QString &line) { reports.append(line); }))
    {
    }
    Watched(const Watched &) = delete;
    Watched &operator=(const Watched &) = delete;

    /// All values, as the session takes them: none when the file was found damaged on the way.
    Values values()
    {
        Values all;
        std::ranges::transform(SessionStore::keys, all.begin(), [this](auto key) { return store->read(key); });
        replaced = store->wasReplaced();
        return replaced ? Values() : all;
    }
    bool write(const Values &all) const
    {
        bool good = true;
        for (std::size_t i = 0; i < all.size(); ++i)
            good = (!all[i] || store->write(SessionStore::keys[i], *all[i])) && good;
        return good;
    }

    QStringList reports;
    bool replaced = false;
    std::unique_ptr<SessionStore> store;
};

/// Runs SQL on a store's file as another program could.
inline void run(const QString &path, const QByteArray &sql)
{
    sqlite3 *database = nullptr;
    char *error = nullptr;
    if (sqlite3_open(QFile::encodeName(path).constData(), &database) != SQLITE_OK ||
        sqlite3_exec(database, sql.constData(), nullptr, nullptr, &error) != SQLITE_OK)
        qFatal("%s: %s", sql.constData(), error ? error : "cannot be opened");
    sqlite3_close(database);
}

/// A folder for a store, in memory where the system has that: the tests write much.
class Folder {
public:
    QString path() const { return m_folder.path() + QStringLiteral("/session"); }
    QString file(const QString &suffix = {}) const { return path() + QStringLiteral("/session.sqlite") + suffix; }
    /// The names of the files kept aside, sorted.
    QStringList aside() const
    {
        return QDir(path()).entryList({QStringLiteral("session.sqlite.damaged-*")}, QDir::Files, QDir::Name);
    }
    void fill(const Values &values = sample) const { Watched(path()).write(values); }
    QByteArray bytes(const QString &suffix = {}) const
    {
        QFile file(this->file(suffix));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// Makes the store's folder afresh with these bytes as its file.
    void put(const QByteArray &bytes, const QString &suffix = {}) const
    {
        QDir().mkpath(path());
        QFile file(this->file(suffix));
        if (!file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("%s cannot be written", qUtf8Printable(file.fileName()));
    }
    /// All files beside the store's and itself, by name.
    QMap<QString, QByteArray> files() const
    {
        QMap<QString, QByteArray> all;
        const auto names = QDir(path()).entryList(QDir::Files | QDir::Hidden | QDir::System);
        for (const QString &name : names) {
            QFile file(path() + QLatin1Char('/') + name);
            all[name] = file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("unreadable");
        }
        return all;
    }
    void clear() const { QDir(path()).removeRecursively(); }

private:
    static QString place()
    {
        const QString memory = QStringLiteral("/dev/shm");
        return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/marovenda-XXXXXX");
    }

    QTemporaryDir m_folder = QTemporaryDir(place());
};

} // namespace Stores
