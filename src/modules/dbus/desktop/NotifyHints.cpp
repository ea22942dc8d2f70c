// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotifyHints.h"

#include "NotifyCall.h"
#include "PlainText.h"
#include <bus/BusReader.h>

#include <QHash>

#include <limits>

namespace {
/// The priority that a notification gets for the urgency of its hint.
TavoNotificationItemPriority::Enum priorityForUrgency(std::optional<qint64> urgency)
{
    constexpr qint64 low = 0;
    constexpr qint64 critical = 2;
    if (urgency == low) {
        return TavoNotificationItemPriority::Low;
    }
    if (urgency == critical) {
        return TavoNotificationItemPriority::Urgent;
    }
    return TavoNotificationItemPriority::Normal;
}

using Hint = void (*)(NotifyCall &call, BusReader &reader);

template <QString DesktopNotification::*field>
void readLine(NotifyCall &call, BusReader &reader)
{
    call.notification.*field = plainLine(reader.readStringVariant().value_or(QString()));
}

template <QString NotifyCall::*field>
void readSound(NotifyCall &call, BusReader &reader)
{
    call.*field = reader.readStringVariant().value_or(QString());
}

template <bool DesktopNotification::*field>
void readBoolean(NotifyCall &call, BusReader &reader)
{
    call.notification.*field = reader.readIntegerVariant().value_or(0) != 0;
}

void readSilence(NotifyCall &call, BusReader &reader)
{
    call.isSilent = reader.readIntegerVariant().value_or(0) != 0;
}

void readUrgency(NotifyCall &call, BusReader &reader)
{
    call.notification.priority = priorityForUrgency(reader.readIntegerVariant());
}

void readExactPriority(NotifyCall &call, BusReader &reader)
{
    const auto priority = reader.readIntegerVariant();
    if (priority && *priority >= std::numeric_limits<int>::min() &&
        *priority <= std::numeric_limits<int>::max()) {
        call.exactPriority = TavoNotificationItemPriority::Enum(*priority);
    }
}

const QHash<QString, Hint> &knownHints()
{
    static const QHash<QString, Hint> hints{
        {QStringLiteral("urgency"), readUrgency},
        {QStringLiteral("x-tavo-priority"), readExactPriority},
        {QStringLiteral("category"), readLine<&DesktopNotification::category>},
        {QStringLiteral("desktop-entry"), readLine<&DesktopNotification::desktopEntry>},
        {QStringLiteral("image-path"), readLine<&DesktopNotification::icon>},
        {QStringLiteral("transient"), readBoolean<&DesktopNotification::isTransient>},
        {QStringLiteral("resident"), readBoolean<&DesktopNotification::isResident>},
        {QStringLiteral("sound-file"), readSound<&NotifyCall::soundFile>},
        {QStringLiteral("sound-name"), readSound<&NotifyCall::soundName>},
        {QStringLiteral("suppress-sound"), readSilence}};
    return hints;
}
} // namespace

void NotifyHints::read(NotifyCall &call, BusReader &reader)
{
    reader.enterArray("{sv}");
    while (!reader.isAtEnd()) {
        reader.enterDictEntry("sv");
        const auto hint = knownHints().constFind(reader.readString());
        if (hint != knownHints().constEnd()) {
            (*hint)(call, reader);
        } else {
            reader.skip();
        }
        reader.leave();
    }
    reader.leave();
}
