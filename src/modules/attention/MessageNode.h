// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QVector>

#include <functional>
#include <optional>

/// A message as a node of the model, which the display shows by its path: a list with the text and the
/// actions as its rows.
///
/// A handle: the node set owns the nodes, which stay until dispose().
class MessageNode
{
public:
    /// Binds the node of an action to the slot that receives the choice.
    using Bind = std::function<void(CMActivateNode *action)>;

    MessageNode(CMNodes *nodes, const CMPath &path);

    CMPath path() const { return m_node->path(); }

    /// Publishes the item in place of the previous one.
    void show(const TavoAttentionItem &item, const Bind &bind);

    /// The key of the action at the path, if the message has it.
    std::optional<QString> actionAt(const CMPath &path) const;

    void dispose();

private:
    struct Action
    {
        QString key;
        CMActivateNode *node;
    };

    void disposeActions();

    CMNodes *m_nodes;
    CMListRowsNode *m_node;
    QVector<Action> m_actions;
};
