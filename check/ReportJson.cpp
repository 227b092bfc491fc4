#include "Report.h"

#include "Mask.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

using namespace Check;

QJsonObject describe(const Mask &mask, const Finding &finding)
{
    QJsonArray rows;
    for (const qsizetype row : finding.rows)
        rows += row;
    return {{u"severity"_s, nameOf(finding.severity)},   {u"endpoint"_s, finding.endpoint},
            {u"place"_s, mask.printable(finding.place)}, {u"rows"_s, rows},
            {u"what"_s, mask.printable(finding.what)},   {u"remedy"_s, finding.remedy}};
}

QJsonObject describe(const Mask &mask, const Screen &screen)
{
    QJsonArray texts;
    for (const QString &text : screen.texts)
        texts += mask.printable(text);
    return {{u"screen"_s, screen.name},
            {u"state"_s, nameOf(screen.state)},
            {u"texts"_s, texts},
            {u"remark"_s, screen.remark}};
}

QJsonObject describe(const Mask &mask, const Exchange &exchange)
{
    const bool post = exchange.request.method == HttpRequest::Method::Post;
    QJsonObject headers;
    for (const auto &[name, value] : exchange.reply.headers)
        headers.insert(mask.printable(QString::fromUtf8(name.toLower())), mask.printable(QString::fromUtf8(value)));
    QJsonObject object{{u"endpoint"_s, exchange.endpoint},
                       {u"method"_s, post ? u"POST"_s : u"GET"_s},
                       {u"url"_s, mask.printable(exchange.request.url.toString(QUrl::FullyEncoded))},
                       {u"request"_s, mask.printable(QString::fromUtf8(exchange.shownBody))},
                       {u"status"_s, exchange.reply.status},
                       {u"headers"_s, headers},
                       {u"bytes"_s, exchange.size},
                       {u"milliseconds"_s, exchange.milliseconds},
                       {u"read"_s, exchange.usable}};
    if (!exchange.error.isEmpty() && !exchange.reply.complete)
        object.insert(u"error"_s, mask.printable(exchange.error));
    if (exchange.tls)
        object.insert(u"tls"_s, QJsonObject{{u"protocol"_s, exchange.tls->protocol},
                                            {u"subject"_s, mask.printable(exchange.tls->subject)},
                                            {u"issuer"_s, mask.printable(exchange.tls->issuer)},
                                            {u"expires"_s, exchange.tls->expires.toString(Qt::ISODate)}});
    return object;
}

template <class T>
QJsonArray describeAll(const Mask &mask, const QList<T> &all)
{
    QJsonArray array;
    for (const T &each : all)
        array += describe(mask, each);
    return array;
}

} // namespace

QByteArray Check::jsonReport(const Order &order, const Diagnosis &diagnosis)
{
    const Mask mask(order.password);
    QJsonArray created;
    for (const QString &each : diagnosis.created)
        created += mask.printable(each);
    return QJsonDocument(QJsonObject{{u"base"_s, mask.printable(order.base)},
                                     {u"customer"_s, mask.printable(order.email)},
                                     {u"reached"_s, diagnosis.reached},
                                     {u"refused"_s, diagnosis.refused},
                                     {u"works"_s, diagnosis.works()},
                                     {u"findings"_s, describeAll(mask, diagnosis.findings.sorted())},
                                     {u"screens"_s, describeAll(mask, diagnosis.screens)},
                                     {u"exchanges"_s, describeAll(mask, diagnosis.exchanges)},
                                     {u"created"_s, created}})
        .toJson();
}
