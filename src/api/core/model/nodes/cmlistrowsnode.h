// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/nodes/cmuinode.h"
#include "core/records/rows.h"

#include <QList>
#include <QStringList>
#include <QVector>

/// A node that holds an ordered list of rows: paths of other nodes, or roles to show. Every change
/// is reported to the subscribers from their event loops. Thread and owner: as CMNode.
class TAVO_API_EXPORT CMListRowsNode : public CMUINode
{
public:
    /// Makes and publishes an empty list.
    static CMListRowsNode *create(CMNodes *nodes, const CMPath &path);

    /// Announces which roles the rows carry.
    void setRowsRoles(const TavoRowsRoles &roles);
    /// The roles that were announced.
    TavoRowsRoles rowsRoles() const;

    /// Appends a row that is shown.
    void rowsAppend(const TavoRoles &row);
    /// Appends a row that is the path of a node.
    void rowsAppend(const CMPath &row);

    /// Inserts a row at the index, which is from 0 to the number of rows.
    void rowsInsert(int index, const CMPath &row);
    /// Removes the row at the index, which must exist.
    void rowsRemoveAt(int index);

    /// Replaces all rows. Reported as one reset.
    void setRows(const QVector<TavoRoles> &rows);

    /// The number of rows.
    int rowsSize() const;

    /// The row, to be read by CMPath::fromQVariant() or TavoRoles; invalid if there is no such row.
    QVariant getRow(int index) const;

    QString kind() const override;
    /// Replies with a list of the rows.
    void getRows(const CMGetRowsRequest &request) override;
    /// Replies with the index of the row that equals the value, or -1.
    void matchRow(const CMMatchRowRequest &request) override;

private:
    using CMUINode::CMUINode;

    /// A row. If its roles are a type and a title, as is usual, it stores just these two values:
    /// with a hash, an open notification would take 1813 bytes, and the goal is 1536 (benchmark
    /// tavo_memory_use).
    class Row
    {
    public:
        explicit Row(const CMPath &path);
        explicit Row(const TavoRoles &roles);

        /// The row as it was given; a path as its text.
        QVariant toQVariant() const;

        /// The path, if the row is one; otherwise null.
        const CMPath *path() const;

    private:
        bool m_isTypeAndTitle = false;
        int m_type = 0;
        QVariant m_value; ///< the title, the path, or all roles
    };

    void insert(int index, const Row &row);
    void report(const QStringList &changes, int index, int count = 1) const;

    TavoRowsRoles m_rowsRoles;
    QList<Row> m_rows;
};
