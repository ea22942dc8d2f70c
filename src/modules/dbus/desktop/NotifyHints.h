// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ImageData.h"
#include <core/records/enumerations.h>

#include <QString>

#include <optional>

class BusReader;

/// The hints of a desktop notification: its urgency, its sound and others.
struct NotifyHints
{
    /// Of the urgency.
    TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
    /// From the hint "x-tavo-priority", for priorities other than those of the three urgencies.
    std::optional<TavoNotificationItemPriority::Enum> exactPriority;
    std::optional<ImageData> image; ///< goes before the source
    std::optional<ImageData> icon;  ///< for clients without another icon or picture
    QString imageSource;
    std::optional<int> progress; ///< from 0 to 100
    bool hasActionIcons = false;
    QString category;
    QString desktopEntry;
    bool isTransient = false;
    bool isResident = false;
    bool isSilent = false;
    QString soundFile; ///< a path or a URI
    QString soundName; ///< an event of the sound theme

    bool hasSound() const { return !isSilent && !(soundFile.isEmpty() && soundName.isEmpty()); }

    /// Reads the dictionary of hints. An unknown hint, and one of another type than expected, is skipped.
    static NotifyHints read(BusReader &reader);
};
