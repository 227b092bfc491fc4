#include "Store.h"

#include "Password.h"
#include "Seed.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// "Mrvd": SQLite's application ID, at a fixed offset of the file's header, identifies the files of this service.
constexpr qint32 applicationId = 0x4d727664;
constexpr qsizetype applicationIdOffset = 68;
constexpr int layoutVersion = 1;
/// The app ignores the photo in a listing, and reads no listing of more than 64 MiB.
constexpr qint64 largestListedPhoto = qint64(8) * 1024 * 1024;
constexpr auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

constexpr auto tables = R"(
    PRAGMA application_id = 0x4d727664;
    PRAGMA user_version = 1;
    CREATE TABLE customers (
        id INTEGER PRIMARY KEY AUTOINCREMENT,
        nombre TEXT NOT NULL,
        email TEXT NOT NULL,
        email_key TEXT NOT NULL UNIQUE,
        password_hash BLOB NOT NULL,
        direccion TEXT NOT NULL,
        ciudad TEXT NOT NULL,
        avatar BLOB);
    CREATE TABLE packages (
        id INTEGER PRIMARY KEY,
        customer INTEGER NOT NULL REFERENCES customers,
        tracking TEXT,
        descripcion TEXT,
        estado TEXT,
        fecha_recibido TEXT);
    CREATE INDEX packages_of ON packages (customer);
    CREATE TABLE quotations (
        id INTEGER PRIMARY KEY,
        customer INTEGER NOT NULL REFERENCES customers,
        tipo TEXT,
        origen TEXT,
        destino TEXT,
        peso REAL,
        valor REAL,
        descripcion TEXT,
        estado TEXT);
    CREATE INDEX quotations_of ON quotations (customer);
    CREATE TABLE vehicle_requests (
        id INTEGER PRIMARY KEY,
        customer INTEGER NOT NULL REFERENCES customers,
        marca TEXT NOT NULL,
        modelo TEXT NOT NULL,
        anio TEXT NOT NULL,
        ubicacion TEXT NOT NULL);
    CREATE TABLE recovery_requests (
        id INTEGER PRIMARY KEY,
        email TEXT NOT NULL,
        customer INTEGER REFERENCES customers);
)";

QString keyOf(const QString &email) { return email.trimmed().toLower(); }

} // namespace

/// A statement and its bound values. It keeps the values alive.
class Store::Statement {
public:
    Statement(const Store &store, const char *sql) : m_store(store)
    {
        if (sqlite3_prepare_v2(store.m_database.get(), sql, -1, &m_statement, nullptr) != SQLITE_OK)
            store.fail();
    }
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    Statement &add(qint64 value) { return check(sqlite3_bind_int64(m_statement, ++m_bound, value)); }
    Statement &add(double value) { return check(sqlite3_bind_double(m_statement, ++m_bound, value)); }
    Statement &add(std::nullptr_t) { return check(sqlite3_bind_null(m_statement, ++m_bound)); }
    Statement &add(const QString &value)
    {
        const QByteArray text = value.toUtf8();
        return check(sqlite3_bind_text64(m_statement, ++m_bound, text.constData(),
                                         static_cast<sqlite3_uint64>(text.size()), SQLITE_TRANSIENT, SQLITE_UTF8));
    }
    Statement &add(const QByteArray &value)
    {
        return check(sqlite3_bind_blob64(m_statement, ++m_bound, value.isNull() ? "" : value.constData(),
                                         static_cast<sqlite3_uint64>(value.size()), SQLITE_TRANSIENT));
    }
    template <class T>
    Statement &add(const std::optional<T> &value)
    {
        return value ? add(*value) : add(nullptr);
    }

    /// Moves to the next row. Returns false if there is none.
    bool next()
    {
        const int code = sqlite3_step(m_statement);
        if (code != SQLITE_ROW && code != SQLITE_DONE)
            m_store.fail();
        return code == SQLITE_ROW;
    }
    /// Runs a statement without a result. Returns false if it would violate a constraint.
    bool run()
    {
        const int code = sqlite3_step(m_statement);
        if (code != SQLITE_DONE && code != SQLITE_CONSTRAINT)
            m_store.fail();
        return code == SQLITE_DONE;
    }

    qint64 number(int column) const { return sqlite3_column_int64(m_statement, column); }
    QByteArray bytes(int column) const
    {
        const auto *data = static_cast<const char *>(sqlite3_column_blob(m_statement, column));
        return QByteArray(data, sqlite3_column_bytes(m_statement, column));
    }
    std::optional<QString> text(int column) const
    {
        if (sqlite3_column_type(m_statement, column) == SQLITE_NULL)
            return std::nullopt;
        return QString::fromUtf8(bytes(column));
    }

private:
    Statement &check(int code)
    {
        if (code != SQLITE_OK)
            m_store.fail();
        return *this;
    }

    const Store &m_store;
    sqlite3_stmt *m_statement = nullptr;
    int m_bound = 0;
};

/// Rolls back when it is destroyed, unless commit() was called.
class Store::Transaction {
public:
    explicit Transaction(const Store &store) : m_store(store) { m_store.run("BEGIN IMMEDIATE"); }
    ~Transaction()
    {
        if (!m_done)
            sqlite3_exec(m_store.m_database.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit()
    {
        m_store.run("COMMIT");
        m_done = true;
    }

private:
    const Store &m_store;
    bool m_done = false;
};

void Store::Closer::operator()(sqlite3 *database) const { sqlite3_close(database); }

Store::Store(QString path, Start start) : m_path(std::move(path))
{
    if (QFileInfo::exists(m_path)) {
        refuseForeignFile();
        if (start == Start::Reset)
            removeFiles();
    }
    createFile();
    open();
    prepareTables();
}

Store::~Store() = default;

void Store::refuseForeignFile() const
{
    QFile file(m_path);
    if (!QFileInfo(m_path).isFile())
        fail(u"it is not a file"_s);
    if (!file.open(QFile::ReadOnly))
        fail(file.errorString());
    if (file.size() == 0)
        return;
    const QByteArray header = file.read(100);
    // If the database was not closed, the application ID may be in the log only; this file is one empty page then.
    const bool empty = header.mid(16, 2) == QByteArray::fromHex("1000") && file.size() == 4096;
    const bool ours = header.mid(applicationIdOffset, 4) == QByteArray::fromHex("4d727664") || empty;
    if (header.size() != 100 || !header.startsWith("SQLite format 3") || !ours)
        fail(u"it is not a database of the demo service, or it is damaged"_s);
}

void Store::createFile() const
{
    // SQLite would create the file with the process's umask. It gives its other files the same permissions as this
    // one.
    QFile file(m_path);
    if (!QFileInfo::exists(m_path) && !file.open(QFile::WriteOnly | QFile::NewOnly, ownerOnly))
        fail(file.errorString());
    QFile::setPermissions(m_path, ownerOnly);
}

void Store::removeFiles() const
{
    for (const auto companion : {""_L1, "-wal"_L1, "-shm"_L1}) {
        QFile file(m_path + companion);
        if (file.exists() && !file.remove())
            fail(file.errorString());
    }
}

void Store::open()
{
    sqlite3 *database = nullptr;
    const int code =
        sqlite3_open_v2(QFile::encodeName(m_path).constData(), &database, SQLITE_OPEN_READWRITE, nullptr);
    m_database.reset(database);
    if (code != SQLITE_OK)
        fail();
    sqlite3_busy_timeout(database, 5000);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    Statement check(*this, "PRAGMA quick_check(1)");
    if (!check.next() || check.text(0) != u"ok"_s)
        fail(u"it is damaged"_s);
}

void Store::prepareTables()
{
    run("PRAGMA journal_mode = WAL");
    run("PRAGMA synchronous = FULL");
    run("PRAGMA foreign_keys = ON");
    Transaction transaction(*this);
    const qint64 version = number("PRAGMA user_version");
    if (version == 0 && number("SELECT count(*) FROM sqlite_schema") == 0) {
        run(tables);
        for (const DemoCustomer &customer : demoCustomers())
            seed(customer);
    } else if (version != layoutVersion || number("PRAGMA application_id") != applicationId) {
        fail(u"it is not a database of this version of the demo service"_s);
    }
    transaction.commit();
}

void Store::seed(const DemoCustomer &customer)
{
    Statement insert(*this, "INSERT INTO customers (nombre, email, email_key, password_hash, direccion, ciudad) "
                            "VALUES (?, ?, ?, ?, ?, ?)");
    insert.add(customer.nombre).add(customer.email).add(keyOf(customer.email)).add(hashPassword(customer.password));
    insert.add(customer.direccion).add(customer.ciudad).run();
    const qint64 id = sqlite3_last_insert_rowid(m_database.get());
    // Insert the oldest first, so that the newest row gets the largest number.
    const auto addPackage = [&](const DashboardResponse::Paquete &row) {
        Statement package(*this, "INSERT INTO packages (customer, tracking, descripcion, estado, fecha_recibido) "
                                 "VALUES (?, ?, ?, ?, ?)");
        package.add(id).add(row.tracking).add(row.descripcion).add(row.estado).add(row.fecha_recibido).run();
    };
    const auto addQuotation = [&](const DashboardResponse::Cotizacion &row) {
        Statement quotation(*this,
                            "INSERT INTO quotations (customer, origen, descripcion, estado) VALUES (?, ?, ?, ?)");
        quotation.add(id).add(row.origen).add(row.descripcion).add(row.estado).run();
    };
    std::for_each(customer.paquetes.crbegin(), customer.paquetes.crend(), addPackage);
    std::for_each(customer.cotizaciones.crbegin(), customer.cotizaciones.crend(), addQuotation);
}

std::optional<Store::Customer> Store::customer(Statement &query) const
{
    if (!query.next())
        return std::nullopt;
    return Customer{query.number(0), query.text(1).value_or(QString()), query.bytes(2)};
}

std::optional<Store::Customer> Store::customerByEmail(const QString &email) const
{
    const std::scoped_lock lock(m_mutex);
    Statement query(*this, "SELECT id, nombre, password_hash FROM customers WHERE email_key = ?");
    return customer(query.add(keyOf(email)));
}

std::optional<Store::Customer> Store::customerById(qint64 id) const
{
    const std::scoped_lock lock(m_mutex);
    Statement query(*this, "SELECT id, nombre, password_hash FROM customers WHERE id = ?");
    return customer(query.add(id));
}

std::optional<qint64> Store::addCustomer(const RegistroRequest &from, const QByteArray &passwordHash)
{
    const std::scoped_lock lock(m_mutex);
    Statement insert(*this, "INSERT INTO customers (nombre, email, email_key, password_hash, direccion, ciudad) "
                            "VALUES (?, ?, ?, ?, ?, ?)");
    insert.add(from.nombre).add(from.email.trimmed()).add(keyOf(from.email)).add(passwordHash);
    if (!insert.add(from.direccion).add(from.ciudad).run())
        return std::nullopt;
    return sqlite3_last_insert_rowid(m_database.get());
}

Store::Saved Store::saveProfile(qint64 id, const Profile &profile)
{
    const std::scoped_lock lock(m_mutex);
    if (!exists(id))
        return Saved::NoSuchCustomer;
    const auto trimmed = profile.email ? std::optional(profile.email->trimmed()) : std::nullopt;
    const auto key = profile.email ? std::optional(keyOf(*profile.email)) : std::nullopt;
    Statement update(*this, "UPDATE customers SET nombre = ?, email = coalesce(?, email), "
                            "email_key = coalesce(?, email_key), password_hash = coalesce(?, password_hash), "
                            "avatar = coalesce(?, avatar) WHERE id = ?");
    update.add(profile.nombre).add(trimmed).add(key).add(profile.passwordHash).add(profile.avatar).add(id);
    return update.run() ? Saved::Yes : Saved::EmailTaken;
}

bool Store::addQuotation(const CotizacionRequest &from)
{
    const std::scoped_lock lock(m_mutex);
    if (!exists(from.user_id))
        return false;
    Statement insert(*this,
                     "INSERT INTO quotations (customer, tipo, origen, destino, peso, valor, descripcion, estado) "
                     "VALUES (?, ?, ?, ?, ?, ?, ?, 'pendiente')");
    insert.add(from.user_id).add(from.tipo).add(from.origen).add(from.destino);
    return insert.add(from.peso).add(from.valor).add(from.descripcion).run();
}

bool Store::addVehicleRequest(const AutoRequest &from)
{
    const std::scoped_lock lock(m_mutex);
    if (!exists(from.user_id))
        return false;
    Statement insert(*this, "INSERT INTO vehicle_requests (customer, marca, modelo, anio, ubicacion) "
                            "VALUES (?, ?, ?, ?, ?)");
    return insert.add(from.user_id).add(from.marca).add(from.modelo).add(from.anio).add(from.ubicacion).run();
}

void Store::addRecoveryRequest(const QString &email)
{
    const std::scoped_lock lock(m_mutex);
    Statement insert(*this, "INSERT INTO recovery_requests (email, customer) "
                            "VALUES (?, (SELECT id FROM customers WHERE email_key = ?))");
    insert.add(email.trimmed()).add(keyOf(email)).run();
}

std::optional<DashboardResponse> Store::listing(qint64 id) const
{
    const std::scoped_lock lock(m_mutex);
    Statement customer(*this, "SELECT CASE WHEN length(avatar) <= ? THEN avatar END FROM customers WHERE id = ?");
    if (!customer.add(largestListedPhoto).add(id).next())
        return std::nullopt;
    DashboardResponse all;
    if (const QByteArray avatar = customer.bytes(0); !avatar.isEmpty())
        all.avatar = QString::fromLatin1(avatar.toBase64());
    all.paquetes.emplace();
    Statement packages(*this, "SELECT tracking, descripcion, estado, fecha_recibido FROM packages "
                              "WHERE customer = ? ORDER BY id DESC");
    for (packages.add(id); packages.next();)
        all.paquetes->append({packages.text(0), packages.text(1), packages.text(2), packages.text(3)});
    all.cotizaciones.emplace();
    Statement quotations(*this,
                         "SELECT origen, descripcion, estado FROM quotations WHERE customer = ? ORDER BY id DESC");
    for (quotations.add(id); quotations.next();)
        all.cotizaciones->append({quotations.text(0), quotations.text(1), quotations.text(2)});
    return all;
}

qint64 Store::edition() const
{
    const std::scoped_lock lock(m_mutex);
    // data_version counts the changes of other connections only
    // (https://www.sqlite.org/pragma.html#pragma_data_version).
    return (number("PRAGMA data_version") << 32) + sqlite3_total_changes(m_database.get());
}

bool Store::exists(qint64 customer) const
{
    Statement query(*this, "SELECT 1 FROM customers WHERE id = ?");
    return query.add(customer).next();
}

void Store::run(const char *sql) const
{
    if (sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

qint64 Store::number(const char *sql) const
{
    Statement query(*this, sql);
    return query.next() ? query.number(0) : 0;
}

void Store::fail() const
{
    fail(m_database ? QString::fromUtf8(sqlite3_errmsg(m_database.get())) : u"out of memory"_s);
}

void Store::fail(const QString &why) const
{
    throw StoreError(u"The database %1 cannot be used: %2"_s.arg(m_path, why));
}
