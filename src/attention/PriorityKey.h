// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <base/PriorityName.h>
#include <core/base/configuration.h>

#include <optional>

/// Reads a priority's name. Nothing if the key is missing.
inline std::optional<TavoNotificationItemPriority::Enum>
readPriority(TavoConfiguration &configuration, const QString &key)
{
    const QString name = configuration.string(key, QString());
    if (name.isNull()) {
        return std::nullopt;
    }
    const auto priority = priorityNamed(name);
    if (!priority) {
        configuration.fail(key, QStringLiteral("must be Low, Normal, High or Urgent"));
    }
    return priority;
}
