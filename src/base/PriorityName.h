// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/enumerations.h>

#include <QString>

#include <optional>

/// The priority with this name, in any case.
inline std::optional<TavoNotificationItemPriority::Enum> priorityNamed(const QString &name)
{
    using Priority = TavoNotificationItemPriority;
    for (const auto priority :
         {Priority::Low, Priority::Normal, Priority::High, Priority::Urgent}) {
        if (name.compare(Priority::toString(priority), Qt::CaseInsensitive) == 0) {
            return priority;
        }
    }
    return std::nullopt;
}
