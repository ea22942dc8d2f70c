// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DesktopNotification.h"
#include "modules/dbus/clients/ClientLimits.h"
#include "NotifyHints.h"

#include <cstddef>

class BusMessage;

/// The arguments of a call of org.freedesktop.Notifications.Notify.
///
/// Texts are made plain. Unknown hints are skipped without a copy.
struct NotifyCall
{
    /// The timeouts of notifications whose client leaves the choice to the server.
    struct Timeouts
    {
        int normal;   ///< ms; 0: stays until it is closed
        int critical; ///< of critical notifications
    };

    quint32 replacedId = 0; ///< 0: none
    DesktopNotification notification;
    NotifyHints hints; ///< those that are shown are in the notification too
    /// Some actions were left out, because nobody could choose them or there were too many.
    bool hasBadActions = false;
    std::size_t storedBytes = 0; ///< for its quota

    /// Throws BusError::limitExceeded() for texts and hints that are too large, and
    /// BusError::invalidArguments() for arguments of other types.
    static NotifyCall read(const BusMessage &call, const Timeouts &timeouts,
                           const ClientLimits &limits);
};
