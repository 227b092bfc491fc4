#include "Report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

using namespace Check;

QJsonObject describe(const Order &order, const Finding &finding)
{
    QJsonArray rows;
    for (const qsizetype row : finding.rows)
        rows += row;
    return {{u"severity"_s, nameOf(finding.severity)},     {u"endpoint"_s, finding.endpoint},
            {u"place"_s, printable(order, finding.place)}, {u"rows"_s, rows},
            {u"what"_s, printable(order, finding.what)},   {u"remedy"_s, finding.remedy}};
}

QJsonObject describe(const Order &order, const Screen &screen)
{
    QJsonArray texts;
    for (const QString &text : screen.texts)
        texts += printable(order, text);
    return {{u"screen"_s, screen.name},
            {u"state"_s, nameOf(screen.state)},
            {u"texts"_s, texts},
            {u"remark"_s, screen.remark}};
}

QJsonObject describe(const Order &order, const Exchange &exchange)
{
    const bool post = exchange.request.method == HttpRequest::Method::Post;
    QJsonObject headers;
    for (const auto &[name, value] : exchange.reply.headers)
        headers.insert(printable(order, QString::fromUtf8(name.toLower())),
                       printable(order, QString::fromUtf8(value)));
    QJsonObject object{{u"endpoint"_s, exchange.endpoint},
                       {u"method"_s, post ? u"POST"_s : u"GET"_s},
                       {u"url"_s, printable(order, exchange.request.url.toString(QUrl::FullyEncoded))},
                       {u"request"_s, printable(order, QString::fromUtf8(exchange.shownBody))},
                       {u"status"_s, exchange.reply.status},
                       {u"headers"_s, headers},
                       {u"bytes"_s, exchange.size},
                       {u"milliseconds"_s, exchange.milliseconds},
                       {u"read"_s, exchange.usable}};
    if (!exchange.error.isEmpty() && exchange.reply.error != QNetworkReply::NoError)
        object.insert(u"error"_s, printable(order, exchange.error));
    if (exchange.tls)
        object.insert(u"tls"_s, QJsonObject{{u"protocol"_s, exchange.tls->protocol},
                                            {u"subject"_s, printable(order, exchange.tls->subject)},
                                            {u"issuer"_s, printable(order, exchange.tls->issuer)},
                                            {u"expires"_s, exchange.tls->expires.toString(Qt::ISODate)}});
    return object;
}

template <class T>
QJsonArray describeAll(const Order &order, const QList<T> &all)
{
    QJsonArray array;
    for (const T &each : all)
        array += describe(order, each);
    return array;
}

} // namespace

QByteArray Check::jsonReport(const Order &order, const Diagnosis &diagnosis)
{
    QJsonArray created;
    for (const QString &each : diagnosis.created)
        created += printable(order, each);
    return QJsonDocument(QJsonObject{{u"base"_s, printable(order, order.base)},
                                     {u"customer"_s, printable(order, order.email)},
                                     {u"reached"_s, diagnosis.reached},
                                     {u"refused"_s, diagnosis.refused},
                                     {u"works"_s, diagnosis.works()},
                                     {u"findings"_s, describeAll(order, diagnosis.findings.sorted())},
                                     {u"screens"_s, describeAll(order, diagnosis.screens)},
                                     {u"exchanges"_s, describeAll(order, diagnosis.exchanges)},
                                     {u"created"_s, created}})
        .toJson();
}
