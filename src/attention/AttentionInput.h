// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/enumerations.h>

#include <QString>

/// What decisions about a notification depend on.
struct AttentionInput
{
    QString user;   ///< whose program it is; empty for the host's own
    QString source; ///< the program's desktop entry, or its name
    QString category;
    QString title;
    QString text;
    TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
    qint64 time = 0; ///< ms since the epoch, UTC
};
