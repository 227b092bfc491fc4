#pragma once

#include <QByteArray>
#include <QList>

#include <cstdio>

/// What a hard check counts: for each fault that it provokes, how often it tried and how often the product failed.
class Tally {
public:
    /// Notes one try; what went wrong is told on stderr. Returns `held`.
    bool note(const QByteArray &fault, bool held, const QByteArray &what = {})
    {
        Row &row = rowOf(fault);
        ++row.tries;
        if (!held) {
            ++row.failures;
            std::fprintf(stderr, "%s: %s\n", fault.constData(), what.isEmpty() ? "failed" : what.constData());
        }
        return held;
    }

    /// Prints a line for each fault (fault, tries, failures, separated by tabs). Returns the process's exit status: 1
    /// when something failed or nothing was tried.
    int finish() const
    {
        bool held = !m_rows.isEmpty();
        for (const Row &row : m_rows) {
            std::printf("%s\t%lld\t%lld\n", row.fault.constData(), row.tries, row.failures);
            held = held && row.failures == 0;
        }
        return held ? 0 : 1;
    }

private:
    struct Row {
        QByteArray fault;
        long long tries = 0;
        long long failures = 0;
    };

    Row &rowOf(const QByteArray &fault)
    {
        for (Row &row : m_rows) {
            if (row.fault == fault)
                return row;
        }
        m_rows.append({fault});
        return m_rows.last();
    }

    QList<Row> m_rows;
};
