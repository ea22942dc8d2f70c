// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/enumerations.h>

#include <algorithm>

/// What one client may hold and do, and what all clients together may.
struct ClientLimits
{
    int openNotifications;
    int totalOpenNotifications;
    int requestsPerSecond; ///< on average; twice as many at once. 0: no limit
    int valueBytes;        ///< of one value, as BusReader counts them
    int messageBytes;      ///< of one reply or signal, as BusWriter counts them
    int subscriptions;
    int inboxes;
    int sounds; ///< queued or playing
    int totalSounds;
    int storedBytes; ///< of what can be given up: notifications, messages, sounds
    int totalStoredBytes;
    int totalRequestBytes; ///< of requests that wait for their replies
    int unreadBytes;       ///< of replies and signals
    int totalUnreadBytes;
    int priority; ///< of sounds and messages

    /// The priority that a client's sound or message gets when the client gives this one.
    TavoNotificationItemPriority::Enum
    allowedPriority(TavoNotificationItemPriority::Enum requested) const
    {
        return TavoNotificationItemPriority::Enum(std::min<int>(requested, priority));
    }
};
