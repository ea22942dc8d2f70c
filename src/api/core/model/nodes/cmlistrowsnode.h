// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/nodes/cmuinode.h"
#include "core/records/rows.h"

#include <QList>
#include <QStringList>
#include <QVector>

/// A node that holds an ordered list of rows: paths of other nodes, or roles to show. Subscribers
/// are told of every change, from the event loop. Thread and owner: as CMNode.
class TAVO_API_EXPORT CMListRowsNode : public CMUINode
{
public:
    static CMListRowsNode *create(CMNodes *nodes, const CMPath &path);

    /// Announces what the rows carry.
    void setRowsRoles(const TavoRowsRoles &roles);
    TavoRowsRoles rowsRoles() const;

    void rowsAppend(const TavoRoles &row);
    void rowsAppend(const CMPath &row);

    /// The index is from 0 to the number of rows; the row stands at it afterwards.
    void rowsInsert(int index, const CMPath &row);
    void rowsRemoveAt(int index);

    /// Replaces all rows at once; reported as a reset.
    void setRows(const QVector<TavoRoles> &rows);

    int rowsSize() const;

    /// The row, as CMPath::fromQVariant() or TavoRoles read it; invalid where there is none.
    QVariant getRow(int index) const;

    QString kind() const override;
    void getRows(const CMGetRowsRequest &request) override;
    void matchRow(const CMMatchRowRequest &request) override;

private:
    using CMUINode::CMUINode;

    /// A row in little room: of the usual roles, a type and a title, it keeps the values alone,
    /// where a hash of them would take ten times as much. A path it shares, where its text would be
    /// a copy.
    class Row
    {
    public:
        explicit Row(const CMPath &path);
        explicit Row(const TavoRoles &roles);

        /// As it was given, a path as its text.
        QVariant toQVariant() const;

        /// The path of a row that is one.
        const CMPath *path() const;

    private:
        bool m_isTypeAndTitle = false;
        int m_type = 0;
        QVariant m_value; ///< the title, the path, or the whole row
    };

    void insert(int index, const Row &row);
    void report(const QString &change, int index, int count = 1) const;

    TavoRowsRoles m_rowsRoles;
    QList<Row> m_rows;
};
