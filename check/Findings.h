#pragma once

#include <QHash>
#include <QList>
#include <QString>

namespace Check {

/// A fault must be fixed before the app works with the service, a warning makes it show something odd, and a note is
/// harmless.
enum class Severity { Fault, Warning, Note };

/// A place in a reply: a key of the reply itself, or of a row, for example "paquetes", 17, "tracking".
struct Place {
    QString list = {};
    qsizetype row = -1;
    QString key = {};

    Place inside(const QString &name) const { return {list, row, name}; }
    static Place rowOf(const QString &list, qsizetype row) { return {list, row, {}}; }
};

struct Finding {
    Severity severity = Severity::Note;
    /// The endpoint, or empty if the finding concerns the whole server.
    QString endpoint;
    /// For example "id", "paquetes[].tracking" (with `rows`), "HTTP 302" or "line 1, byte 0".
    QString place;
    QList<qsizetype> rows;
    QString what;
    QString remedy;

    /// Returns the place with its rows, for example "paquetes[17].tracking" or "paquetes[3, 7 and 12 more].tracking".
    QString where() const;
};

/// Collects findings. Equal findings in several rows become one.
class Findings {
public:
    /// Sets the endpoint of the findings that follow.
    void setEndpoint(const QString &endpoint) { m_endpoint = endpoint; }

    void add(Severity severity, const Place &place, const QString &what, const QString &remedy);
    void add(Severity severity, const QString &place, const QString &what, const QString &remedy);
    /// Adds a finding that concerns the whole server.
    void addGeneral(Severity severity, const QString &place, const QString &what, const QString &remedy);

    qsizetype count(Severity severity) const;
    /// Returns the findings by severity, the worst first, and otherwise in the order in which they were added.
    QList<Finding> sorted() const;

private:
    void merge(Finding finding, qsizetype row);

    QString m_endpoint;
    QList<Finding> m_all;
    QHash<QString, qsizetype> m_known;
};

} // namespace Check
