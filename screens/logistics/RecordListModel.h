#pragma once

#include "Json.h"

#include <QAbstractListModel>

/// Records as the rows of a list. Its roles are the record's fields, under their own names, and "identity", which
/// says what makes a row that row; rows of one identity are all shown. An absent field is undefined.
template <Record R>
class RecordListModel final : public QAbstractListModel {
public:
    /// The identity of a row: a field of it, or its position.
    using Identity = QVariant (*)(const R &row, int position);

    static QVariant byPosition(const R &, int position) { return position; }

    explicit RecordListModel(Identity identity, QObject *parent = nullptr)
        : QAbstractListModel(parent), m_identity(identity)
    {
    }

    const QList<R> &rows() const { return m_rows; }

    void setRows(const QList<R> &rows)
    {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
            return {};
        const R &row = m_rows[index.row()];
        if (role == identityRole)
            return m_identity(row, index.row());
        QVariant value;
        int field = Qt::UserRole;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto described) {
            if (field++ == role && row.*described.pointer)
                value = QVariant::fromValue(*(row.*described.pointer));
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

    QList<R> m_rows;
    Identity m_identity;
};
