// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DesktopNotification.h"

#include <QString>

#include <optional>

namespace sdbus {
class MethodCall;
}

/// What a client asks for with org.freedesktop.Notifications.Notify.
///
/// Texts are made plain on the way; hints that mean nothing here, images above all, are stepped over
/// without being copied.
struct NotifyCall
{
    /// How long a notification stays whose client leaves that open.
    struct Timeouts
    {
        int normal;   ///< ms; 0: until it is closed
        int critical; ///< of those that are critical
    };

    quint32 replacedId = 0; ///< 0: none
    DesktopNotification notification;
    /// From the hint "x-tavo-priority", for what lies between and beyond the three urgencies.
    std::optional<TavoNotificationItemPriority::Enum> exactPriority;

    bool isSilent = false;
    QString soundFile; ///< a path or a URI
    QString soundName; ///< an event of the sound theme

    /// Throws an sdbus::Error: BusErrors::limitExceeded() for more than that many bytes of texts and
    /// hints, or for too many actions, and BusErrors::invalidArguments() for what can't be meant.
    static NotifyCall read(const sdbus::MethodCall &call, const Timeouts &timeouts, int mostBytes);
};
