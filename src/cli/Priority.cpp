// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/Priority.h"

#include <QString>

std::optional<TavoNotificationItemPriority::Enum> priorityFromText(const std::string &text)
{
    using Priority = TavoNotificationItemPriority;
    const QString typed = QString::fromStdString(text);
    for (const auto priority :
         {Priority::Low, Priority::Normal, Priority::High, Priority::Urgent}) {
        if (typed.compare(Priority::toString(priority), Qt::CaseInsensitive) == 0) {
            return priority;
        }
    }
    bool isNumber = false;
    const int number = typed.toInt(&isNumber);
    return isNumber ? std::optional(Priority::Enum(number)) : std::nullopt;
}
