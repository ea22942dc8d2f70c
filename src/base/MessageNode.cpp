// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MessageNode.h"

#include <QUrl>

#include <algorithm>

namespace {
/// An action's key as one segment of a path, which must not be empty.
QString segmentOf(const QString &key)
{
    return key.isEmpty() ? QStringLiteral("%00")
                         : QString::fromLatin1(QUrl::toPercentEncoding(key));
}

TavoRoles rowOf(const MessageNode::Action &action, const CMPath &path)
{
    TavoRoles row;
    row.setType(TavoRolesType::Action).setTitle(action.label).setPath(path);
    if (action.key == QLatin1String("default")) {
        row.setDefault(true);
    }
    if (!action.icon.isEmpty()) {
        row.setIcon(action.icon);
    }
    return row;
}
} // namespace

std::size_t MessageNode::actionBytes(const QString &key)
{
    constexpr int nodeSize = 640;
    constexpr int keyFactor = 5;
    return std::size_t(nodeSize + keyFactor * key.toUtf8().size());
}

MessageNode::MessageNode(CMNodes *nodes, const CMPath &path)
    : m_nodes(nodes)
    , m_node(CMListRowsNode::create(nodes, path))
{
    static const auto rowsRoles =
        TavoRowsRoles().setType({TavoRowsRolesType::Title, TavoRowsRolesType::Path});
    m_node->setRowsRoles(rowsRoles);
}

void MessageNode::show(const TrString &title, const TavoRoles &text, const QVector<Action> &actions,
                       const Bind &bind)
{
    disposeActions();
    m_node->setTitle(title);
    QVector<TavoRoles> rows{text};
    for (const Action &action : actions) {
        const auto hasKey = [&action](const ActionNode &other) { return other.key == action.key; };
        if (std::any_of(m_actions.cbegin(), m_actions.cend(), hasKey)) {
            continue;
        }
        const CMPath path = m_node->path() + (QStringLiteral("actions/") + segmentOf(action.key));
        auto *node = CMActivateNode::create(m_nodes, path);
        node->setTitle(action.label);
        bind(node);
        m_actions.append({action.key, node});
        rows.append(rowOf(action, path));
    }
    m_node->setRows(rows);
}

void MessageNode::setImage(const TavoImage &image)
{
    QVector<TavoRoles> rows;
    for (int i = 0; i < m_node->rowsSize(); ++i) {
        rows.append(TavoRoles(m_node->getRow(i).toHash()));
    }
    rows.first().setImage(image);
    m_node->setRows(rows);
}

std::optional<QString> MessageNode::actionAt(const CMPath &path) const
{
    const auto action =
        std::find_if(m_actions.begin(), m_actions.end(),
                     [&path](const ActionNode &other) { return other.node->path() == path; });
    return action == m_actions.end() ? std::nullopt : std::make_optional(action->key);
}

void MessageNode::dispose()
{
    disposeActions();
    m_node->dispose();
}

void MessageNode::disposeActions()
{
    for (const ActionNode &action : qAsConst(m_actions)) {
        action.node->dispose();
    }
    m_actions.clear();
}
