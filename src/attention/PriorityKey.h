// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/base/configuration.h>
#include <core/records/enumerations.h>

#include <optional>

/// Reads a priority's name. Nothing if the key is missing.
inline std::optional<TavoNotificationItemPriority::Enum>
readPriority(TavoConfiguration &configuration, const QString &key)
{
    using Priority = TavoNotificationItemPriority;
    const QString name = configuration.string(key, QString());
    if (name.isNull()) {
        return std::nullopt;
    }
    for (const auto priority :
         {Priority::Low, Priority::Normal, Priority::High, Priority::Urgent}) {
        if (name.compare(Priority::toString(priority), Qt::CaseInsensitive) == 0) {
            return priority;
        }
    }
    configuration.fail(key, QStringLiteral("must be Low, Normal, High or Urgent"));
}
