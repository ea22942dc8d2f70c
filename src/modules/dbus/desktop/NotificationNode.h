// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DesktopNotification.h"
#include <core/tavo.h>

#include <QString>
#include <QVector>

#include <functional>
#include <optional>

/// A desktop notification as a node of the model, which the display shows by its path.
///
/// The node is a list: its title is the notification's, its first row the text. The other rows are its
/// actions, each with the path of its own node, at which a person's choice arrives.
///
/// A handle: the node set owns the nodes, which stay until dispose().
class NotificationNode
{
public:
    /// Binds the node of an action to the slot that receives the choice.
    using Bind = std::function<void(CMActivateNode *action)>;

    static CMPath pathOf(quint32 id);

    /// The id of a notification by its path.
    static quint32 idOf(const CMPath &path) { return path.name().toUInt(); }

    /// The same by the path of one of its actions.
    static quint32 idOfAction(const CMPath &action) { return idOf(action.parent().parent()); }

    NotificationNode() = default;
    NotificationNode(CMNodes *nodes, quint32 id);

    CMPath path() const { return m_node->path(); }

    /// Publishes the notification in place of the previous one. If several actions have the same key,
    /// the first counts.
    void show(const DesktopNotification &notification, const Bind &bind);

    /// Adds a picture to the text's row.
    void setImage(const TavoImage &image);

    /// The key of the action at the path, if the notification has it.
    std::optional<QString> actionAt(const CMPath &path) const;

    void dispose();

private:
    struct Action
    {
        QString key;
        CMActivateNode *node;
    };

    void disposeActions();

    CMNodes *m_nodes = nullptr;
    CMListRowsNode *m_node = nullptr;
    QVector<Action> m_actions;
};
