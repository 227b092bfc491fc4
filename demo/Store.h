#pragma once

#include "Records.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>

struct sqlite3;
struct sqlite3_stmt;
struct DemoCustomer;

/// The database cannot be used; what() says why, in one line.
class StoreError : public std::runtime_error {
public:
    explicit StoreError(const QString &what) : std::runtime_error(what.toStdString()) {}
};

/// The service's data, in a SQLite file that only its owner can read. When a function returns, its changes are on
/// disk. All functions are thread-safe, and throw StoreError if the database fails.
class Store {
public:
    enum class Start { Keep, Reset };

    struct Customer {
        qint64 id = 0;
        QString nombre;
        QByteArray passwordHash;
    };
    struct Profile {
        QString nombre;
        /// Absent values are not changed.
        std::optional<QString> email;
        std::optional<QByteArray> passwordHash;
        std::optional<QByteArray> avatar;
    };
    enum class Saved { Yes, NoSuchCustomer, EmailTaken };

    /// Opens the file at `path`, or creates it with the demo customers. Reset replaces the file of an earlier run.
    /// Only Reset changes a damaged file, and a file that does not belong to this service is never changed.
    explicit Store(QString path, Start start = Start::Keep);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    /// E-mail addresses are compared ignoring case and surrounding blanks.
    std::optional<Customer> customerByEmail(const QString &email) const;
    std::optional<Customer> customerById(qint64 id) const;

    /// Returns the new customer's number, or nothing if the e-mail address is already registered.
    std::optional<qint64> addCustomer(const RegistroRequest &from, const QByteArray &passwordHash);
    Saved saveProfile(qint64 id, const Profile &profile);

    /// Stores a request. Returns false if the customer does not exist.
    bool addQuotation(const CotizacionRequest &from);
    bool addVehicleRequest(const AutoRequest &from);
    /// Stores the request, even if no customer has this e-mail address.
    void addRecoveryRequest(const QString &email);

    /// Returns the customer's photo in base64, unless it is large, and packages and quotations, newest first. Returns
    /// nothing if the customer does not exist.
    std::optional<DashboardResponse> listing(qint64 id) const;
    /// Returns a number that changes whenever the database changes, also from another process.
    qint64 edition() const;

private:
    class Statement;
    class Transaction;
    struct Closer {
        void operator()(sqlite3 *database) const;
    };

    void open();
    void refuseForeignFile() const;
    void prepareTables();
    void seed(const DemoCustomer &customer);
    void createFile() const;
    void removeFiles() const;
    void run(const char *sql) const;
    qint64 number(const char *sql) const;
    bool exists(qint64 customer) const;
    std::optional<Customer> customer(Statement &query) const;
    [[noreturn]] void fail() const;
    [[noreturn]] void fail(const QString &why) const;

    const QString m_path;
    mutable std::mutex m_mutex;
    std::unique_ptr<sqlite3, Closer> m_database;
};
