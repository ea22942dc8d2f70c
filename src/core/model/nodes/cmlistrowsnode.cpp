// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmlistrowsnode.h"

#include "core/model/cmsubscribe.h"
#include "core/registry/cmsubscriptions.h"

#include <algorithm>

namespace {
const QString typeKey = QStringLiteral("type");
const QString titleKey = QStringLiteral("title");

// Made once, because there are many reports.
const QStringList inserted(CMSubscribe::RowsChangeInserted());
const QStringList removed(CMSubscribe::RowsChangeRemoved());
const QStringList reset(CMSubscribe::RowsChangeReset());

bool isNumber(const QVariant &value)
{
    return value.userType() >= QMetaType::Bool && value.userType() <= QMetaType::Double;
}

/// QVariant converts what has another type, for each row anew; a client may seek a megabyte.
bool areEqual(const QVariant &row, const QVariant &sought)
{
    if (row.userType() != sought.userType()) {
        const bool isOwnType = row.userType() >= QMetaType::User;
        return (isOwnType || (isNumber(row) && isNumber(sought))) && row == sought;
    }
    if (row.userType() == QMetaType::QVariantHash) {
        const QVariantHash fields = row.toHash();
        const QVariantHash soughtFields = sought.toHash();
        const auto isIn = [&soughtFields](const auto &field) {
            const auto other = soughtFields.constFind(field.first);
            return other != soughtFields.constEnd() && areEqual(field.second, *other);
        };
        return fields.size() == soughtFields.size() &&
               std::all_of(fields.constKeyValueBegin(), fields.constKeyValueEnd(), isIn);
    }
    if (row.userType() == QMetaType::QVariantList) {
        const QVariantList values = row.toList();
        const QVariantList soughtValues = sought.toList();
        return std::equal(values.begin(), values.end(), soughtValues.begin(), soughtValues.end(),
                          areEqual);
    }
    return row == sought;
}
} // namespace

CMListRowsNode::Row::Row(const CMPath &path)
    : m_value(QVariant::fromValue(path))
{
}

CMListRowsNode::Row::Row(const TavoRoles &roles)
{
    const QVariantHash &fields = roles.fields();
    const auto type = fields.constFind(typeKey);
    const auto title = fields.constFind(titleKey);
    m_isTypeAndTitle = fields.size() == 2 && type != fields.constEnd() &&
                       type->userType() == QMetaType::Int && title != fields.constEnd();
    m_type = m_isTypeAndTitle ? type->toInt() : 0;
    m_value = m_isTypeAndTitle ? *title : roles.__variant();
}

const CMPath *CMListRowsNode::Row::path() const
{
    return !m_isTypeAndTitle && m_value.userType() == qMetaTypeId<CMPath>()
               ? static_cast<const CMPath *>(m_value.constData())
               : nullptr;
}

QVariant CMListRowsNode::Row::toQVariant() const
{
    if (const CMPath *itself = path()) {
        return itself->toQVariant();
    }
    return m_isTypeAndTitle ? QVariantHash{{typeKey, m_type}, {titleKey, m_value}} : m_value;
}

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
    insert(rowsSize(), Row(row));
}

void CMListRowsNode::rowsAppend(const CMPath &row)
{
    insert(rowsSize(), Row(row));
}

void CMListRowsNode::rowsInsert(int index, const CMPath &row)
{
    insert(index, Row(row));
}

void CMListRowsNode::insert(int index, const Row &row)
{
    {
        const std::lock_guard lock(guard());
        Q_ASSERT_X(index >= 0 && index <= m_rows.size(), "CMListRowsNode", "index out of range");
        if (m_rows.isEmpty()) {
            // Most lists have one row; an insertion would make room for eight.
            m_rows.reserve(1);
            m_rows.append(row);
        } else {
            m_rows.insert(index, row);
        }
    }
    report(inserted, index);
}

void CMListRowsNode::rowsRemoveAt(int index)
{
    {
        const std::lock_guard lock(guard());
        Q_ASSERT_X(index >= 0 && index < m_rows.size(), "CMListRowsNode", "index out of range");
        m_rows.removeAt(index);
    }
    report(removed, index);
}

void CMListRowsNode::setRows(const QVector<TavoRoles> &rows)
{
    QList<Row> newRows;
    newRows.reserve(rows.size());
    for (const TavoRoles &row : rows) {
        newRows.append(Row(row));
    }
    {
        const std::lock_guard lock(guard());
        m_rows.swap(newRows);
    }
    report(reset, 0, rows.size());
}

void CMListRowsNode::report(const QStringList &changes, int index, int count) const
{
    CMSubscriptions::reportRows(path(), changes, index, count);
}

int CMListRowsNode::rowsSize() const
{
    const std::lock_guard lock(guard());
    return m_rows.size();
}

QVariant CMListRowsNode::getRow(int index) const
{
    const std::lock_guard lock(guard());
    return index >= 0 && index < m_rows.size() ? m_rows.at(index).toQVariant() : QVariant();
}

QString CMListRowsNode::kind() const
{
    return QStringLiteral("list");
}

void CMListRowsNode::getRows(const CMGetRowsRequest &request)
{
    QVariantList rows;
    {
        const std::lock_guard lock(guard());
        const int first = std::clamp(request.first(), 0, m_rows.size());
        const int left = m_rows.size() - first;
        const int count = request.count() < 0 ? left : std::min(request.count(), left);
        rows.reserve(count);
        for (int i = first; i < first + count; ++i) {
            rows.append(m_rows.at(i).toQVariant());
        }
    }
    request.reply().setValue(QVariant(rows));
}

void CMListRowsNode::matchRow(const CMMatchRowRequest &request)
{
    // getRow() gives a path as its text, but comparing paths is cheaper than making their texts.
    QVariant sought = request.value();
    const CMPath path = CMPath::fromQVariant(sought);
    if (sought.userType() == qMetaTypeId<CMPath>()) {
        sought = path.toQVariant();
    } else if (sought.userType() == QMetaType::QByteArray) {
        sought = sought.toString(); // once, not for each row
    }
    const bool isPath = !path.isEmpty() && path.toQVariant() == sought;
    int index = 0;
    {
        const std::lock_guard lock(guard());
        const auto equals = [&](const Row &row) {
            return isPath && row.path() != nullptr ? *row.path() == path
                                                   : areEqual(row.toQVariant(), sought);
        };
        const auto row = std::find_if(m_rows.constBegin(), m_rows.constEnd(), equals);
        index = row == m_rows.constEnd() ? -1 : int(row - m_rows.constBegin());
    }
    request.reply().setValue(index);
}
