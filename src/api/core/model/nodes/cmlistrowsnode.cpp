// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmlistrowsnode.h"

#include "core/model/cmregistry.h"
#include "core/model/cmsubscribe.h"

CMListRowsNode *CMListRowsNode::create(CMNodes *nodes, const CMPath &path)
{
    auto *node = new CMListRowsNode(nodes, path);
    node->publish();
    return node;
}

void CMListRowsNode::setRowsRoles(const TavoRowsRoles &roles)
{
    const std::lock_guard lock(guard());
    m_rowsRoles = roles;
}

TavoRowsRoles CMListRowsNode::rowsRoles() const
{
    const std::lock_guard lock(guard());
    return m_rowsRoles;
}

void CMListRowsNode::rowsAppend(const TavoRoles &row)
{
    insert(rowsSize(), row.__variant());
}

void CMListRowsNode::rowsAppend(const CMPath &row)
{
    insert(rowsSize(), row.toQVariant());
}

void CMListRowsNode::rowsInsert(int index, const CMPath &row)
{
    insert(index, row.toQVariant());
}

void CMListRowsNode::insert(int index, const QVariant &row)
{
    {
        const std::lock_guard lock(guard());
        Q_ASSERT_X(index >= 0 && index <= m_rows.size(), "CMListRowsNode", "index out of range");
        m_rows.insert(index, row);
    }
    report(CMSubscribe::RowsChangeInserted(), index);
}

void CMListRowsNode::rowsRemoveAt(int index)
{
    {
        const std::lock_guard lock(guard());
        Q_ASSERT_X(index >= 0 && index < m_rows.size(), "CMListRowsNode", "index out of range");
        m_rows.removeAt(index);
    }
    report(CMSubscribe::RowsChangeRemoved(), index);
}

void CMListRowsNode::report(const QString &change, int index) const
{
    CMRegistry::instance().reportRows(path(), {change}, index, 1);
}

int CMListRowsNode::rowsSize() const
{
    const std::lock_guard lock(guard());
    return m_rows.size();
}

QVariant CMListRowsNode::getRow(int index) const
{
    const std::lock_guard lock(guard());
    return m_rows.value(index);
}

void CMListRowsNode::getRows(const CMGetRowsRequest &request)
{
    QVariantList rows;
    {
        const std::lock_guard lock(guard());
        rows = m_rows.mid(std::max(request.first(), 0), request.count());
    }
    // Set as one value: a list of rows is itself what a variant may hold.
    request.reply().setValue(QVariant(rows));
}

void CMListRowsNode::matchRow(const CMMatchRowRequest &request)
{
    int index = 0;
    {
        const std::lock_guard lock(guard());
        index = m_rows.indexOf(request.value());
    }
    request.reply().setValue(index);
}
