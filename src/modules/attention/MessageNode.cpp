// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MessageNode.h"

#include <algorithm>

namespace {
constexpr int maxActions = 64;

TavoRoles textRow(const TavoAttentionItem &item)
{
    TavoRoles row;
    row.setType(TavoRolesType::Text).setTitle(item.text());
    if (!item.application().isEmpty()) {
        row.setApplication(item.application());
    }
    if (!item.icon().isEmpty()) {
        row.setIcon(item.icon());
    }
    if (!item.category().isEmpty()) {
        row.setCategory(item.category());
    }
    if (item.isTransient()) {
        row.setTransient(true);
    }
    return row;
}
} // namespace

MessageNode::MessageNode(CMNodes *nodes, const CMPath &path)
    : m_nodes(nodes)
    , m_node(CMListRowsNode::create(nodes, path))
{
    m_node->setRowsRoles(
        TavoRowsRoles().setType({TavoRowsRolesType::Title, TavoRowsRolesType::Path}));
}

void MessageNode::show(const TavoAttentionItem &item, const Bind &bind)
{
    disposeActions();
    m_node->setTitle(item.title());
    QVector<TavoRoles> rows{textRow(item)};
    const int count = std::min(item.actions().size(), maxActions);
    for (int index = 0; index < count; ++index) {
        const TavoAttentionAction action = item.actions().at(index);
        const CMPath path = m_node->path() + QStringLiteral("actions/%1").arg(index);
        auto *node = CMActivateNode::create(m_nodes, path);
        node->setTitle(action.label());
        bind(node);
        m_actions.append({action.key(), node});
        TavoRoles row;
        row.setType(TavoRolesType::Action).setTitle(action.label()).setPath(path);
        if (action.key() == QLatin1String("default")) {
            row.setDefault(true);
        }
        rows.append(row);
    }
    m_node->setRows(rows);
}

std::optional<QString> MessageNode::actionAt(const CMPath &path) const
{
    const auto action =
        std::find_if(m_actions.begin(), m_actions.end(),
                     [&path](const Action &other) { return other.node->path() == path; });
    return action == m_actions.end() ? std::nullopt : std::make_optional(action->key);
}

void MessageNode::dispose()
{
    disposeActions();
    m_node->dispose();
}

void MessageNode::disposeActions()
{
    for (const Action &action : qAsConst(m_actions)) {
        action.node->dispose();
    }
    m_actions.clear();
}
