// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DesktopNotification.h"
#include <base/MessageNode.h>

/// A desktop notification as a node of the model.
class NotificationNode : public MessageNode
{
public:
    static CMPath pathOf(quint32 id);

    /// The id of a notification by its path.
    static quint32 idOf(const CMPath &path) { return path.name().toUInt(); }

    /// The same by the path of one of its actions.
    static quint32 idOfAction(const CMPath &action) { return idOf(action.parent().parent()); }

    NotificationNode() = default;
    NotificationNode(CMNodes *nodes, quint32 id);

    /// Publishes the notification in place of the previous one.
    void show(const DesktopNotification &notification, const Bind &bind);
};
