#include "Report.h"

#include "Mask.h"
#include "Text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Check::counted;
using Check::Diagnosis;
using Check::Exchange;
using Check::Finding;
using Check::Order;
using Check::Screen;
using Check::Severity;

/// The maximum number of warnings, and of notes. --json lists all.
constexpr qsizetype maxFindings = 40;
constexpr qsizetype longestQuote = 100;

class Writer {
public:
    Writer(const Order &order, const Diagnosis &diagnosis, bool colours)
        : m_order(order), m_diagnosis(diagnosis), m_mask(order.password), m_colours(colours)
    {
    }

    QString write()
    {
        head();
        findings(Severity::Fault, u"FAULTS: these must be fixed"_s);
        findings(Severity::Warning, u"WARNINGS: the app works, but not as it should"_s);
        findings(Severity::Note, u"NOTES"_s);
        screens();
        exchanges();
        created();
        return m_text;
    }

private:
    void line(const QString &text) { m_text += text + u'\n'; }
    void title(const QString &text)
    {
        line({});
        line(coloured(u"1"_s, text));
    }
    QString coloured(const QString &code, const QString &text) const
    {
        return m_colours ? u"\x1B["_s + code + u'm' + text + u"\x1B[0m"_s : text;
    }
    QString print(const QString &text) const { return m_mask.printable(text); }

    void head();
    void findings(Severity severity, const QString &heading);
    void screens();
    void exchanges();
    void created();
    QString verdict() const;
    void screen(const Screen &screen, const QString &names);
    static QString summary(const Exchange &exchange);

    const Order &m_order;
    const Diagnosis &m_diagnosis;
    const Check::Mask m_mask;
    bool m_colours;
    QString m_text;
};

void Writer::head()
{
    line(print(u"%1 as %2"_s.arg(m_order.base, m_order.email)));
    line({});
    line(coloured(m_diagnosis.works() ? u"1;32"_s : u"1;31"_s, verdict()));
}

QString Writer::verdict() const
{
    const auto &findings = m_diagnosis.findings;
    const qsizetype faults = findings.count(Severity::Fault);
    const QString rest = u"%1, %2"_s.arg(counted(findings.count(Severity::Warning), u"warning"_s),
                                         counted(findings.count(Severity::Note), u"note"_s));
    if (!m_diagnosis.reached)
        return u"The server is not reachable."_s;
    if (faults > 0)
        return u"The server is not ready for the app: %1, %2."_s.arg(counted(faults, u"fault"_s), rest);
    const int status = m_diagnosis.exchanges.isEmpty() ? 0 : m_diagnosis.exchanges.constFirst().reply.status;
    if (m_diagnosis.refused && (status == 429 || status >= 500))
        return u"The service signs nobody in now (HTTP %1): check again later. %2."_s.arg(status).arg(rest);
    if (m_diagnosis.refused)
        return u"The service refuses the test customer: check e-mail and password. %1."_s.arg(rest);
    return u"The app would work: %1."_s.arg(rest);
}

void Writer::findings(Severity severity, const QString &heading)
{
    QList<Finding> mine;
    for (const Finding &finding : m_diagnosis.findings.sorted()) {
        if (finding.severity == severity)
            mine += finding;
    }
    if (mine.isEmpty())
        return;
    title(heading);
    const qsizetype end = severity == Severity::Fault ? mine.size() : std::min(maxFindings, mine.size());
    const QString colour = severity == Severity::Fault ? u"31"_s : severity == Severity::Warning ? u"33"_s : u"0"_s;
    for (qsizetype i = 0; i < end; ++i) {
        const Finding &finding = mine[i];
        const QString prefix = finding.endpoint.isEmpty() ? QString() : finding.endpoint + u": "_s;
        line(u"  "_s + coloured(colour, print(prefix + finding.where() + u": "_s + finding.what)));
        // Said once for neighbours with the same remedy.
        if (!finding.remedy.isEmpty() && (i + 1 == end || mine[i + 1].remedy != finding.remedy))
            line(u"      → "_s + finding.remedy);
    }
    if (end < mine.size())
        line(u"  and %1 more; --json lists all"_s.arg(mine.size() - end));
}

void Writer::screens()
{
    const auto &all = m_diagnosis.screens;
    if (all.isEmpty())
        return;
    title(u"WHAT THE CUSTOMER SEES"_s);
    for (qsizetype i = 0; i < all.size(); ++i) {
        QStringList names{all[i].name};
        // Screens that were not tried for the same reason share a line.
        while (all[i].texts.isEmpty() && i + 1 < all.size() && all[i + 1].state == Screen::State::NotTried &&
               all[i].state == Screen::State::NotTried && all[i + 1].remark == all[i].remark)
            names += all[++i].name;
        screen(all[i], names.join(u", "_s));
    }
}

void Writer::screen(const Screen &screen, const QString &names)
{
    constexpr qsizetype mostInLine = 2;
    const QString colour = screen.state == Screen::State::Works   ? u"32"_s
                           : screen.state == Screen::State::Fails ? u"31"_s
                                                                  : u"2"_s;
    QStringList texts;
    for (const QString &text : screen.texts)
        texts += Check::quoted(print(text), longestQuote);
    const bool below = texts.size() > mostInLine;
    QString rest = below ? QString() : texts.join(u", "_s);
    if (!screen.remark.isEmpty())
        rest += rest.isEmpty() ? screen.remark : u" ("_s + screen.remark + u')';
    line(u"  "_s + coloured(colour, Check::nameOf(screen.state).leftJustified(9)) + u"  "_s + names +
         (rest.isEmpty() ? QString() : u": "_s + rest));
    for (qsizetype i = 0; below && i < texts.size(); ++i)
        line(QString(15, u' ') + texts[i]);
}

QString Writer::summary(const Exchange &exchange)
{
    QStringList parts;
    if (exchange.reply.status != 0)
        parts += u"HTTP %1"_s.arg(exchange.reply.status);
    const QByteArray coding = exchange.header("Content-Encoding");
    parts += exchange.size == 0 ? u"no bytes"_s : counted(exchange.size, u"byte"_s);
    if (!coding.isEmpty())
        parts += QString::fromUtf8(coding);
    parts += u"%1 ms"_s.arg(exchange.milliseconds);
    if (exchange.tls) {
        if (!exchange.tls->protocol.isEmpty())
            parts += exchange.tls->protocol;
        if (exchange.tls->expires.isValid())
            parts += u"certificate of %1 by %2 until %3"_s.arg(exchange.tls->subject, exchange.tls->issuer,
                                                               exchange.tls->expires.toString(Qt::ISODate).first(10));
    }
    parts += exchange.usable ? u"the app can read it"_s : u"the app cannot read it"_s;
    return parts.join(u", "_s);
}

void Writer::exchanges()
{
    title(u"REQUESTS"_s);
    for (const Exchange &exchange : m_diagnosis.exchanges) {
        const bool post = exchange.request.method == HttpRequest::Method::Post;
        line(print(u"  %1 %2 %3"_s
                       .arg(post ? u"POST"_s : u"GET"_s, exchange.request.url.toString(QUrl::FullyEncoded),
                            QString::fromUtf8(exchange.shownBody))
                       .trimmed()
                       .prepend(u"  "_s)));
        line(u"      "_s + print(summary(exchange)));
    }
}

void Writer::created()
{
    if (m_diagnosis.created.isEmpty())
        return;
    title(u"WHAT WAS CREATED"_s);
    for (const QString &each : m_diagnosis.created)
        line(u"  "_s + print(each));
}

} // namespace

QString Check::nameOf(Severity severity)
{
    switch (severity) {
    case Severity::Fault:
        return u"fault"_s;
    case Severity::Warning:
        return u"warning"_s;
    default:
        return u"note"_s;
    }
}

QString Check::nameOf(Screen::State state)
{
    switch (state) {
    case Screen::State::Works:
        return u"works"_s;
    case Screen::State::Fails:
        return u"fails"_s;
    default:
        return u"not tried"_s;
    }
}

QString Check::textReport(const Order &order, const Diagnosis &diagnosis, bool colours)
{
    return Writer(order, diagnosis, colours).write();
}
