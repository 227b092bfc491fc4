#pragma once

#include "Json.h"

#include <QAbstractListModel>
#include <QHash>

#include <utility>

/// A list model of records. Its roles are the record's fields, under their own names, and "identity". Absent fields
/// are undefined. Several rows may have the same identity.
template <Record R>
class RecordListModel final : public QAbstractListModel {
public:
    /// Returns the field that identifies a row.
    using Identity = const std::optional<QString> &(*)(const R &row);

    /// Identifies rows by their position.
    static constexpr Identity byPosition = nullptr;

    explicit RecordListModel(Identity identity, QObject *parent = nullptr)
        : QAbstractListModel(parent), m_identity(identity)
    {
    }

    /// Replaces the rows, and signals only the differences: rows are matched by identity, and rows with the same
    /// identity in their order. Resets the model if no row matches, if matching rows have changed their order, or if
    /// rows are inserted and removed in very many places. Takes linear time.
    void setRows(const QList<R> &rows)
    {
        const QList<OptionalRow> matches = matchRows(rows);
        if (matches.isEmpty()) {
            reset(rows);
            return;
        }
        m_newRows = &rows;
        ChangedRows changed;
        for (qsizetype row = 0; row < rows.size(); ++row) {
            if (const OptionalRow &match = matches[row]) {
                replaceUpTo(*match, row);
                collectChange(changed, static_cast<int>(row),
                              differentRoles(m_rows.at(m_oldStart++), rows[m_newCount++]));
            }
        }
        emitChanged(changed);
        replaceUpTo(m_rows.size(), rows.size());
        m_rows = rows;
        m_newRows = nullptr;
        m_newCount = m_oldStart = 0;
    }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_newCount + m_rows.size() - m_oldStart);
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
            return {};
        const R &row =
            index.row() < m_newCount ? (*m_newRows)[index.row()] : m_rows[index.row() - m_newCount + m_oldStart];
        if (role == identityRole)
            return m_identity ? variant(m_identity(row)) : index.row();
        QVariant value;
        int field = Qt::UserRole;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto described) {
            if (field++ == role)
                value = variant(row.*described.pointer);
        });
        return value;
    }

    QHash<int, QByteArray> roleNames() const override
    {
        QHash<int, QByteArray> names{{identityRole, "identity"}};
        int field = Qt::UserRole;
        for (const std::string_view name : CodingKeys<R>::names)
            names.insert(field++, QByteArray(name.data(), static_cast<qsizetype>(name.size())));
        return names;
    }

private:
    static constexpr int identityRole = Qt::UserRole + static_cast<int>(CodingKeys<R>::count);

    /// The limits on the number of signals, because a view takes longer for each further one: a hundredth of a second
    /// for 1,000 signals, but some seconds for 50,000.
    static constexpr int maxGaps = 1000;
    static constexpr int maxChanges = 1000;

    using OptionalRow = std::optional<qsizetype>;
    /// An identity as a hash key: whether it is present, and its text.
    using Key = std::pair<bool, QString>;
    /// A run of rows with changes in the same roles, and the number of runs signalled before it.
    struct ChangedRows {
        int first = 0;
        int last = -1;
        QList<int> roles;
        int emitted = 0;
    };

    template <class T>
    static QVariant variant(const std::optional<T> &field)
    {
        return field ? QVariant::fromValue(*field) : QVariant();
    }

    Key keyOf(const R &row) const
    {
        const std::optional<QString> &identity = m_identity(row);
        return {identity.has_value(), identity.value_or(QString())};
    }

    /// Returns the matching old row for each new row, or an empty list if a reset is necessary.
    QList<OptionalRow> matchRows(const QList<R> &rows) const
    {
        QList<OptionalRow> matches;
        matches.reserve(rows.size());
        // Usually the rows are the same as before, so try without a search first.
        const qsizetype common = std::min(m_rows.size(), rows.size());
        for (qsizetype i = 0; i < common && (!m_identity || m_identity(m_rows[i]) == m_identity(rows[i])); ++i)
            matches.append(i);
        const qsizetype prefix = matches.size();
        qsizetype last = prefix - 1;
        int gaps = 0;
        if (prefix < common) {
            // For each identity its first unmatched row, and for each row the next one with the same identity.
            QHash<Key, OptionalRow> firstUnmatched;
            QList<OptionalRow> nextOfSame(m_rows.size());
            for (qsizetype i = m_rows.size() - 1; i >= prefix; --i)
                nextOfSame[i] = std::exchange(firstUnmatched[keyOf(m_rows[i])], i);
            for (qsizetype i = prefix; i < rows.size(); ++i) {
                const auto first = firstUnmatched.find(keyOf(rows[i]));
                const OptionalRow match = first == firstUnmatched.end() ? OptionalRow() : *first;
                matches.append(match);
                if (!match)
                    continue;
                if (*match < last)
                    return {};
                // Rows before this one were removed or inserted.
                if (*match != last + 1 || (i > 0 && !matches[i - 1]))
                    ++gaps;
                last = *match;
                *first = nextOfSame[last];
            }
        }
        matches.resize(rows.size());
        return last < 0 || gaps > maxGaps ? QList<OptionalRow>() : matches;
    }

    void reset(const QList<R> &rows)
    {
        if (m_rows.isEmpty() && rows.isEmpty())
            return;
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }

    /// Removes the old rows before `oldRow` and inserts the new rows before `newRow`.
    void replaceUpTo(qsizetype oldRow, qsizetype newRow)
    {
        const int at = static_cast<int>(m_newCount);
        if (oldRow > m_oldStart) {
            beginRemoveRows({}, at, static_cast<int>(m_newCount + oldRow - m_oldStart) - 1);
            m_oldStart = oldRow;
            endRemoveRows();
        }
        if (newRow > m_newCount) {
            beginInsertRows({}, at, static_cast<int>(newRow) - 1);
            m_newCount = newRow;
            endInsertRows();
        }
    }

    static QList<int> differentRoles(const R &one, const R &other)
    {
        QList<int> roles;
        int field = Qt::UserRole;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto described) {
            if (one.*described.pointer != other.*described.pointer)
                roles.append(field);
            ++field;
        });
        return roles;
    }

    /// Adds a changed row to the current run, or signals the run and starts a new one. After `maxChanges` signals,
    /// adds all further rows to one run.
    void collectChange(ChangedRows &changed, int row, const QList<int> &roles)
    {
        if (row != changed.last + 1 || roles != changed.roles) {
            if (changed.emitted < maxChanges) {
                emitChanged(changed);
                changed = {row, row, roles, changed.emitted + (changed.roles.isEmpty() ? 0 : 1)};
            } else {
                for (const int role : roles) {
                    if (!changed.roles.contains(role))
                        changed.roles.append(role);
                }
            }
        }
        changed.last = row;
    }

    void emitChanged(const ChangedRows &changed)
    {
        if (!changed.roles.isEmpty())
            emit dataChanged(index(changed.first), index(changed.last), changed.roles);
    }

    Identity m_identity;
    QList<R> m_rows;
    /// While setRows runs, the model consists of the first `m_newCount` rows of `m_newRows`, followed by the rows of
    /// `m_rows` from `m_oldStart` on. So inserting and removing moves no rows.
    const QList<R> *m_newRows = nullptr;
    qsizetype m_newCount = 0;
    qsizetype m_oldStart = 0;
};
