#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>

#include <functional>

/// Runs the event loop until something is so; false when it is not after a time that is long for a check.
bool until(const std::function<bool()> &isSo, int seconds = 100);

/// Steps that the scripted server puts a connection through; script.py says what each does.
class Steps {
public:
    Steps &send(const QByteArray &bytes) { return step("send", {text(bytes)}); }
    Steps &trickle(const QByteArray &bytes) { return step("trickle", {text(bytes)}); }
    Steps &pace(const QByteArray &bytes, double seconds) { return step("pace", {text(bytes), seconds}); }
    /// Without end where `times` is negative.
    Steps &flood(const QByteArray &block, int times = -1) { return step("flood", {text(block), times}); }
    Steps &bomb(const QByteArray &start, int megabytes) { return step("bomb", {text(start), megabytes}); }
    Steps &flight(int bytes, int spoilt = -1) { return step("flight", {bytes, spoilt}); }
    Steps &take(int bytes) { return step("take", {bytes}); }
    Steps &sip(int bytesASecond) { return step("sip", {bytesASecond}); }
    Steps &narrow() { return step("narrow"); }
    Steps &hold() { return step("hold"); }
    Steps &silent() { return step("silent"); }
    Steps &half() { return step("half"); }
    Steps &close() { return step("close"); }
    Steps &reset() { return step("reset"); }

    QJsonArray steps;

private:
    static QString text(const QByteArray &bytes) { return QString::fromLatin1(bytes.toBase64()); }
    Steps &step(const char *name, QJsonArray arguments = {})
    {
        arguments.prepend(QLatin1String(name));
        steps.append(arguments);
        return *this;
    }
};

/// When a script's steps begin: at the connection, once the request's head has come, or the whole of it.
enum class When { Door, Head, Request };

/// The scripted server, a process of its own.
class Wire {
public:
    /// With a folder of certificates where it is to encrypt.
    explicit Wire(const QString &certificates = {});
    ~Wire();
    Wire(const Wire &) = delete;
    Wire &operator=(const Wire &) = delete;

    int port() const { return m_ports[QLatin1String("port")].toInt(); }
    /// A second port, of which only visits are counted.
    int elsewhere() const { return m_ports[QLatin1String("elsewhere")].toInt(); }

    void forget() { ask("forget"); }
    void script(const QByteArray &path, const Steps &steps, When when = When::Request);
    void doors(const Steps &steps) { ask("doors", {{QLatin1String("steps"), steps.steps}}); }
    void openDoors() { ask("doors", {{QLatin1String("steps"), QJsonValue()}}); }
    void encrypt(const QJsonObject &tls) { ask("encrypt", {{QLatin1String("tls"), tls}}); }
    void listen(bool on) { ask("listen", {{QLatin1String("on"), on}}); }
    void release(const QByteArray &path) { ask("release", {{QLatin1String("path"), QString::fromLatin1(path)}}); }
    /// False when the requests have not come.
    bool arrival(const QByteArray &path, int times = 1);
    QJsonObject report() { return ask("report"); }

private:
    QJsonObject ask(const char *what, QJsonObject command = {});
    QJsonObject line();

    QProcess m_server;
    QJsonObject m_ports;
};
