// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

/// Shows display notifications. Takes none yet: every request is refused.
///
/// Thread and owner: the worker's.
class NotificationDisplay : public QObject
{
    Q_OBJECT

public:
    NotificationDisplay(CMNodes *nodes, QObject *parent);

    /// Queues the notification and sets the item's path; false when it is refused.
    bool enqueue(TavoNotificationDisplayItem *item);

    /// Closes the notifications queued under the path; false when there was none.
    bool cancel(const CMPath &path);
};
