// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QVector>

#include <cstddef>
#include <functional>
#include <optional>

/// A message as a node of the model, which the display shows by its path.
///
/// The node is a list: its title is the message's, its first row the text. The other rows are its actions,
/// each with the path of its own node, at which a person's choice arrives.
///
/// A handle: the node set owns the nodes, which stay until dispose().
class MessageNode
{
public:
    struct Action
    {
        QString key;
        TrString label;
        QString icon{}; ///< as in TavoRoles; may be empty
    };

    /// More than a person can choose from.
    static constexpr int maxActions = 64;

    /// Of an action, in UTF-8. Keys are sent to everyone who listens to actions, and are parts of paths.
    static constexpr int maxKeyBytes = 256;

    /// As how many bytes of a message an action counts besides its label, because it is a node and a row. Its
    /// key is in their path, too, with up to three characters for each byte.
    static std::size_t actionBytes(const QString &key);

    /// Binds the node of an action to the slot that receives the choice.
    using Bind = std::function<void(CMActivateNode *action)>;

    MessageNode() = default;
    MessageNode(CMNodes *nodes, const CMPath &path);

    CMPath path() const { return m_node->path(); }

    /// Publishes the message in place of the previous one. If several actions have the same key, the first
    /// counts.
    void show(const TrString &title, const TavoRoles &text, const QVector<Action> &actions,
              const Bind &bind);

    /// Adds a picture to the text's row.
    void setImage(const TavoImage &image);

    /// The key of the action at the path, if the message has it.
    std::optional<QString> actionAt(const CMPath &path) const;

    void dispose();

private:
    struct ActionNode
    {
        QString key;
        CMActivateNode *node;
    };

    void disposeActions();

    CMNodes *m_nodes = nullptr;
    CMListRowsNode *m_node = nullptr;
    QVector<ActionNode> m_actions;
};
