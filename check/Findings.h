#pragma once

#include <QHash>
#include <QList>
#include <QString>

namespace Check {

/// What a finding means for the customer: the app does not do what it should, it does so oddly, or nothing.
enum class Severity { Fault, Warning, Note };

/// A place inside a reply: a key of the reply itself, or one of a row, "paquetes" 17 "tracking" say.
struct Place {
    QString list = {};
    qsizetype row = -1;
    QString key = {};

    Place inside(const QString &name) const { return {list, row, name}; }
    static Place rowOf(const QString &list, qsizetype row) { return {list, row, {}}; }
};

struct Finding {
    Severity severity = Severity::Note;
    /// The endpoint file, or empty when it concerns the whole server.
    QString endpoint;
    /// Where: "id", "paquetes[].tracking" with its rows, "HTTP 302", "line 1, byte 0".
    QString place;
    QList<qsizetype> rows;
    QString what;
    QString remedy;

    /// Place and rows in one, as in "paquetes[17].tracking" or "paquetes[3, 7 and 12 more].tracking".
    QString where() const;
};

/// The findings so far. The same in many rows is one finding.
class Findings {
public:
    /// Findings from now on concern this endpoint.
    void setEndpoint(const QString &endpoint) { m_endpoint = endpoint; }

    void add(Severity severity, const Place &place, const QString &what, const QString &remedy);
    void add(Severity severity, const QString &place, const QString &what, const QString &remedy);
    /// One that concerns the whole server.
    void addGeneral(Severity severity, const QString &place, const QString &what, const QString &remedy);

    qsizetype count(Severity severity) const;
    /// Worst first, otherwise in the order of finding.
    QList<Finding> sorted() const;

private:
    void merge(Finding finding, qsizetype row);

    QString m_endpoint;
    QList<Finding> m_all;
    QHash<QString, qsizetype> m_known;
};

} // namespace Check
