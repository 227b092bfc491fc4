// The product's client, told on standard input what to send: wire-client BASE-URL [TRUSTED-ROOT]
//
// A line is an object with "key" and what to send: "endpoint", "text" and "padding" (that many letters behind the
// text) for a call of `ApiClient`; "url", "text", "padding" and "silence" for an exchange with another limit on
// silence, a GET where there is no text; the key alone for a sign of life. Each completion prints a line with "key",
// "body" (the record as JSON, or null where there is none), "took" (milliseconds) and "queued" (whether it came after
// the call had returned, and on the main thread).

#include "ApiClient.h"
#include "HttpTransport.h"
#include "TestDeployment.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>
#include <QSslConfiguration>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

using Done = std::function<void(const std::optional<QByteArray> &body)>;

template <class Reply>
auto written(const Done &done)
{
    return [done](const std::optional<Reply> &reply) { done(reply ? Json::write(*reply) : std::nullopt); };
}

void call(const QString &endpoint, const QString &text, const Done &done)
{
    const auto post = [&]<class Request, class Reply>(const PostEndpoint<Request, Reply> &to,
                                                      const Request &request) {
        ApiClient::instance().post<Reply>(to, request, written<Reply>(done));
    };
    constexpr qint64 user = 7;
    if (endpoint == Endpoints::login.name)
        post(Endpoints::login, {text, u"secret"_s});
    else if (endpoint == Endpoints::recuperar.name)
        post(Endpoints::recuperar, {text});
    else if (endpoint == Endpoints::registro.name)
        post(Endpoints::registro, {text, u"a@b.c"_s, u"secret"_s, u"D"_s, u"C"_s});
    else if (endpoint == Endpoints::perfil.name)
        post(Endpoints::perfil, {user, u"Ana"_s, u"a@b.c"_s, {}, text});
    else if (endpoint == Endpoints::casillero.name)
        post(Endpoints::casillero, {text});
    else if (endpoint == Endpoints::cotizar.name)
        post(Endpoints::cotizar, {user, u"aereo"_s, u"M"_s, u"C"_s, 1.5, 20, text});
    else if (endpoint == Endpoints::importarAuto.name)
        post(Endpoints::importarAuto, {user, u"Seat"_s, text, u"2020"_s, u"Miami"_s});
    else
        ApiClient::instance().fetchDashboard(user, written<DashboardResponse>(done));
}

void exchange(const QJsonObject &line, const QByteArray &text, const Done &done)
{
    const auto method = text.isEmpty() ? HttpRequest::Method::Get : HttpRequest::Method::Post;
    const std::chrono::milliseconds silence(line[u"silence"].toInt());
    sendHttp(
        {method, QUrl(line[u"url"].toString()), text, "application/json"},
        [done](const HttpReply &reply) { done(reply.body.isEmpty() ? std::nullopt : std::optional(reply.body)); },
        {HttpLimits().bodySize, silence});
}

void obey(const QJsonObject &line)
{
    QElapsedTimer since;
    since.start();
    const auto returned = std::make_shared<bool>(false);
    const Done done = [=, key = line[u"key"]](const std::optional<QByteArray> &body) {
        const bool queued = *returned && QThread::currentThread() == QCoreApplication::instance()->thread();
        const QJsonObject told{{u"key"_s, key},
                               {u"body"_s, body ? QJsonValue(QString::fromUtf8(*body)) : QJsonValue()},
                               {u"took"_s, since.elapsed()},
                               {u"queued"_s, queued}};
        std::puts(QJsonDocument(told).toJson(QJsonDocument::Compact).constData());
        std::fflush(stdout);
    };
    const QString text = line[u"text"].toString() + QString(line[u"padding"].toInt(), u'p');
    if (line.contains(u"endpoint"))
        call(line[u"endpoint"].toString(), text, done);
    else if (line.contains(u"url"))
        exchange(line, text.toUtf8(), done);
    else
        QTimer::singleShot(0, qApp, [done] { done({}); });
    *returned = true;
}

/// Reads what has come; the end of the input ends the process.
void readLines(QByteArray &rest)
{
    QByteArray block(1 << 16, Qt::Uninitialized);
    const auto size = ::read(STDIN_FILENO, block.data(), static_cast<size_t>(block.size()));
    if (size <= 0)
        return QCoreApplication::quit();
    rest += block.first(size);
    for (qsizetype end = rest.indexOf('\n'); end >= 0; end = rest.indexOf('\n')) {
        obey(QJsonDocument::fromJson(rest.first(end)).object());
        rest.remove(0, end + 1);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy"})
        qunsetenv(name);
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    TestDeployment::values().baseUrl = arguments.value(1);
    if (arguments.size() > 2) {
        // What the check's own root signs is trusted in this process only.
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        if (!trusting.addCaCertificates(arguments[2]))
            qFatal("There is no root to trust.");
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    QByteArray rest;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&rest] { readLines(rest); });
    return QCoreApplication::exec();
}
