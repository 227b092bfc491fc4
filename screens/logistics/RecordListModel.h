#pragma once

#include "Json.h"

#include <QAbstractListModel>
#include <QHash>

#include <utility>

/// Records as the rows of a list. Its roles are the record's fields, under their own names, and "identity", which
/// says what makes a row that row; rows of one identity are all shown. An absent field is undefined.
template <Record R>
class RecordListModel final : public QAbstractListModel {
public:
    /// The field that is a row's identity.
    using Identity = const std::optional<QString> &(*)(const R &row);

    /// A row's identity is its position.
    static constexpr Identity byPosition = nullptr;

    explicit RecordListModel(Identity identity, QObject *parent = nullptr)
        : QAbstractListModel(parent), m_identity(identity)
    {
    }

    /// Changes what is different. A row whose identity comes again stays that row, whatever else of it has changed;
    /// of rows with one identity the first stays the first. Where none stays, those that stay have changed places, or
    /// rows come and go in very many places, the model is reset. Takes time in proportion to the rows before and
    /// after.
    void setRows(const QList<R> &rows)
    {
        const QList<Place> partners = partnersOf(rows);
        if (partners.isEmpty()) {
            reset(rows);
            return;
        }
        m_coming = &rows;
        Changed changed;
        for (qsizetype row = 0; row < rows.size(); ++row) {
            if (const Place &partner = partners[row]) {
                exchangeUpTo(*partner, row);
                note(changed, static_cast<int>(row), differentRoles(m_rows.at(m_gone++), rows[m_come++]));
            }
        }
        tell(changed);
        exchangeUpTo(m_rows.size(), rows.size());
        m_rows = rows;
        m_coming = nullptr;
        m_come = m_gone = 0;
    }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_come + m_rows.size() - m_gone);
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
            return {};
        const R &row = index.row() < m_come ? (*m_coming)[index.row()] : m_rows[index.row() - m_come + m_gone];
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

    /// A view's work on each signal grows with those before it: a thousand take it a hundredth of a second, 50,000
    /// some seconds.
    static constexpr int mostGaps = 1000;
    static constexpr int mostChanges = 1000;

    /// Where a row stands, if anywhere.
    using Place = std::optional<qsizetype>;
    /// An identity that can be looked up: whether it is there, and what it is.
    using Key = std::pair<bool, QString>;
    /// Rows next to each other of which the same roles have changed, and how many such were told before.
    struct Changed {
        int first = 0;
        int last = -1;
        QList<int> roles;
        int told = 0;
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

    /// For each of the coming rows the present one that it is, if any; nothing at all where a reset is due.
    QList<Place> partnersOf(const QList<R> &rows) const
    {
        QList<Place> partners;
        partners.reserve(rows.size());
        // Mostly the same rows come again: none has to be looked for then.
        const qsizetype both = std::min(m_rows.size(), rows.size());
        for (qsizetype i = 0; i < both && (!m_identity || m_identity(m_rows[i]) == m_identity(rows[i])); ++i)
            partners.append(i);
        const qsizetype alike = partners.size();
        qsizetype last = alike - 1;
        int gaps = 0;
        if (alike < both) {
            // Of each identity the first row without a partner, and behind each row the next of its identity.
            QHash<Key, Place> firsts;
            QList<Place> nexts(m_rows.size());
            for (qsizetype i = m_rows.size() - 1; i >= alike; --i)
                nexts[i] = std::exchange(firsts[keyOf(m_rows[i])], i);
            for (qsizetype i = alike; i < rows.size(); ++i) {
                const auto first = firsts.find(keyOf(rows[i]));
                const Place partner = first == firsts.end() ? Place() : *first;
                partners.append(partner);
                if (!partner)
                    continue;
                if (*partner < last)
                    return {};
                // Rows went from between it and the one before it, or came there.
                if (*partner != last + 1 || (i > 0 && !partners[i - 1]))
                    ++gaps;
                last = *partner;
                *first = nexts[last];
            }
        }
        partners.resize(rows.size());
        return last < 0 || gaps > mostGaps ? QList<Place>() : partners;
    }

    void reset(const QList<R> &rows)
    {
        if (m_rows.isEmpty() && rows.isEmpty())
            return;
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }

    /// Removes the present rows before `present` and inserts the coming ones before `coming`.
    void exchangeUpTo(qsizetype present, qsizetype coming)
    {
        const int at = static_cast<int>(m_come);
        if (present > m_gone) {
            beginRemoveRows({}, at, static_cast<int>(m_come + present - m_gone) - 1);
            m_gone = present;
            endRemoveRows();
        }
        if (coming > m_come) {
            beginInsertRows({}, at, static_cast<int>(coming) - 1);
            m_come = coming;
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

    /// Adds a row to those that have changed, after telling of these if it cannot be told together with them. After
    /// very many the rest are told as one.
    void note(Changed &changed, int row, const QList<int> &roles)
    {
        if (row != changed.last + 1 || roles != changed.roles) {
            if (changed.told < mostChanges) {
                tell(changed);
                changed = {row, row, roles, changed.told + (changed.roles.isEmpty() ? 0 : 1)};
            } else {
                for (const int role : roles) {
                    if (!changed.roles.contains(role))
                        changed.roles.append(role);
                }
            }
        }
        changed.last = row;
    }

    void tell(const Changed &changed)
    {
        if (!changed.roles.isEmpty())
            emit dataChanged(index(changed.first), index(changed.last), changed.roles);
    }

    Identity m_identity;
    QList<R> m_rows;
    /// While rows are exchanged one run after the other: the first `m_come` rows are of `m_coming` already, those
    /// after them are of `m_rows` from `m_gone` on. So no run has to be moved for another.
    const QList<R> *m_coming = nullptr;
    qsizetype m_come = 0;
    qsizetype m_gone = 0;
};
