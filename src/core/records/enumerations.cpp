// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/enumerations.h"

#include <initializer_list>

namespace {
/// The names are in the order of their numbers, from 0.
QString nameOf(int value, std::initializer_list<const char *> names)
{
    if (value < 0 || value >= int(names.size())) {
        return QString::number(value);
    }
    return QString::fromLatin1(names.begin()[value]);
}
} // namespace

QString TavoNotificationItemPriority::toString(Enum value)
{
    return nameOf(value, {"Low", "Normal", "High", "Urgent"});
}

QString TavoNotificationPlayerItemType::toString(Enum value)
{
    return nameOf(value, {"Uri", "Data", "Stream", "Fake"});
}

QString TavoNotificationPlayerResponseType::toString(Enum value)
{
    return nameOf(value, {"Unknown", "Started", "Finished", "Cancelled", "Failed"});
}

QString TavoNotificationDisplayEnd::toString(Enum value)
{
    return nameOf(value, {"Unknown", "Expired", "Cancelled", "Closed", "Overtaken"});
}

QString TavoAttentionEnd::toString(Enum value)
{
    return nameOf(value,
                  {"Unknown", "Expired", "Closed", "Dismissed", "ActedOn", "Silenced", "Failed"});
}

QString TavoAttentionState::toString(Enum value)
{
    return nameOf(value, {"Unknown", "Shown", "Seen", "Dismissed", "ActedOn", "Expired", "Silenced",
                          "Refused", "LeftOpen"});
}

QString TavoPowerManagerResources::toString(Enum value)
{
    return nameOf(value, {"Processor", "Display", "Audio", "Network"});
}

QString TavoPowerModuleActions::toString(Enum value)
{
    return nameOf(value, {"None", "Acquire", "Release"});
}

QString TavoPowerManagerRevokeMessageType::toString(Enum value)
{
    return nameOf(value, {"Revoked", "PostRevoked"});
}

QString TavoRolesType::toString(Enum value)
{
    return nameOf(value, {"None", "Container", "Action", "Value", "Switch", "Media", "Text"});
}

QString TavoRowsRolesType::toString(Enum value)
{
    return nameOf(value, {"Title", "Value", "Path"});
}
