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

/// Why the database cannot be used, in one line.
class StoreError : public std::runtime_error {
public:
    explicit StoreError(const QString &what) : std::runtime_error(what.toStdString()) {}
};

/// What the service keeps, in one SQLite file that the owner alone may read. What a function has written is on disk
/// when it returns. Every function may be called from any thread, and throws StoreError when the file fails.
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
        /// An absent value stays as it is.
        std::optional<QString> email;
        std::optional<QByteArray> passwordHash;
        std::optional<QByteArray> avatar;
    };
    enum class Saved { Yes, NoSuchCustomer, EmailTaken };

    /// Opens the file at `path`, or makes it with the seeded customers. Reset replaces what an earlier run left
    /// there. A file that is damaged or is not of this service is never touched.
    explicit Store(QString path, Start start = Start::Keep);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    /// E-mails are the same whatever their letter case and the blanks around them.
    std::optional<Customer> customerByEmail(const QString &email) const;
    std::optional<Customer> customerById(qint64 id) const;

    /// The new customer's number, or nothing when the e-mail is taken.
    std::optional<qint64> addCustomer(const RegistroRequest &from, const QByteArray &passwordHash);
    Saved saveProfile(qint64 id, const Profile &profile);

    /// Keeps a request; false when there is no such customer.
    bool addQuotation(const CotizacionRequest &from);
    bool addVehicleRequest(const AutoRequest &from);
    /// Keeps the request whether or not a customer has that e-mail.
    void addRecoveryRequest(const QString &email);

    /// The customer's photo in base64, packages and quotations, each newest first; nothing for an unknown customer.
    std::optional<DashboardResponse> listing(qint64 id) const;
    /// Another number once anything has been changed, by whomever.
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
