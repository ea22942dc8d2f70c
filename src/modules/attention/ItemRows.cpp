// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ItemRows.h"

#include <algorithm>

TavoRoles ItemRows::text(const AttentionItem &item)
{
    TavoRoles row;
    row.setType(TavoRolesType::Text).setTitle(item.text);
    if (!item.application.isEmpty()) {
        row.setApplication(item.application);
    }
    if (!item.icon.isEmpty()) {
        row.setIcon(item.icon);
    }
    if (!item.category.isEmpty()) {
        row.setCategory(item.category);
    }
    if (item.isTransient) {
        row.setTransient(true);
    }
    return row;
}

QVector<MessageNode::Action> ItemRows::actions(const AttentionItem &item)
{
    QVector<MessageNode::Action> actions;
    const int count = std::min(item.actions.size(), MessageNode::maxActions);
    for (int index = 0; index < count; ++index) {
        const TavoAttentionAction action = item.actions.at(index);
        actions.append({action.key(), action.label(), action.icon()});
    }
    return actions;
}
