#pragma once

#include "Json.h"
#include "Records.h"
#include "Service.h"

#include <QObject>
#include <QTemporaryDir>

#include <memory>

/// How long a test waits for what ought to come, in milliseconds.
constexpr int patience = 20'000;

/// What the service answered; all empty when it closed without a word.
struct Reply {
    int status = 0;
    QByteArray head;
    QByteArray body;

    template <Record R>
    R as() const
    {
        return Json::read<R>(body).record.value_or(R());
    }
    QString message() const { return as<StandardResponse>().message.value_or(QString()); }
    bool good() const { return as<StandardResponse>().status == QLatin1String("success"); }
    /// Every refusal is a StandardResponse in JSON.
    bool refused(int with) const;
};

/// Sends the bytes as they are and takes what comes until the service closes the connection.
Reply exchange(quint16 port, const QByteArray &bytes);

/// A request's first two lines.
QByteArray head(const QByteArray &verb, const QByteArray &path, const QByteArray &host = "127.0.0.1");
QByteArray postBytes(const QByteArray &path, const QByteArray &body);

Reply post(quint16 port, const QByteArray &path, const QByteArray &body);
template <Record R>
Reply post(quint16 port, const QByteArray &path, const R &record)
{
    return post(port, path, *Json::write(record));
}
Reply get(quint16 port, const QByteArray &path);

/// A service with a fresh database for each test.
class DemoTest : public QObject {
    Q_OBJECT

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    /// With the database at m_path.
    void start();
    void restart();

    LoginResponse login(const QString &email, const QString &password);
    DashboardResponse listing(qint64 id);
    /// What a query for one number finds in the database; the service is stopped for that.
    qint64 countOf(const char *query);

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_path;
    std::unique_ptr<Service> m_service;
    quint16 m_port = 0;
};
