// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/Priority.h"

#include <base/PriorityName.h>

std::optional<TavoNotificationItemPriority::Enum> priorityFromText(const std::string &text)
{
    const QString typed = QString::fromStdString(text);
    if (const auto named = priorityNamed(typed)) {
        return named;
    }
    bool isNumber = false;
    const int number = typed.toInt(&isNumber);
    return isNumber ? std::optional(TavoNotificationItemPriority::Enum(number)) : std::nullopt;
}
