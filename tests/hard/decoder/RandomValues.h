#pragma once

#include "RecordTools.h"

#include <random>

/// Fills records with what is hard to write and to read.
class RandomValues {
public:
    explicit RandomValues(quint64 seed) : m_source(seed) {}

    template <Record R>
    R record()
    {
        R record;
        fill(record);
        return record;
    }

private:
    void fill(QString &text);
    void fill(qint64 &number);
    void fill(double &number);
    template <class T>
    void fill(std::optional<T> &value)
    {
        if (below(4) > 0)
            fill(value.emplace());
    }
    template <class T>
    void fill(QList<T> &rows)
    {
        rows.resize(static_cast<qsizetype>(below(4)));
        for (T &row : rows)
            fill(row);
    }
    template <Record R>
    void fill(R &record)
    {
        RecordTools::forEachField(record, [this](const char *, auto &value) { this->fill(value); });
    }

    quint64 below(quint64 limit) { return m_source() % limit; }
    char32_t codePoint();

    std::mt19937_64 m_source;
};
