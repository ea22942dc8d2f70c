// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotifyHints.h"

#include "PlainText.h"
#include <bus/BusReader.h>

#include <QHash>

#include <algorithm>
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

using Hint = void (*)(NotifyHints &hints, BusReader &reader);

template <QString NotifyHints::*field>
void readLine(NotifyHints &hints, BusReader &reader)
{
    hints.*field = plainLine(reader.readStringVariant().value_or(QString()));
}

template <QString NotifyHints::*field>
void readSound(NotifyHints &hints, BusReader &reader)
{
    hints.*field = reader.readStringVariant().value_or(QString());
}

template <bool NotifyHints::*field>
void readBoolean(NotifyHints &hints, BusReader &reader)
{
    hints.*field = reader.readIntegerVariant().value_or(0) != 0;
}

void readUrgency(NotifyHints &hints, BusReader &reader)
{
    hints.priority = priorityForUrgency(reader.readIntegerVariant());
}

void readExactPriority(NotifyHints &hints, BusReader &reader)
{
    const auto priority = reader.readIntegerVariant();
    if (priority && *priority >= std::numeric_limits<int>::min() &&
        *priority <= std::numeric_limits<int>::max()) {
        hints.exactPriority = TavoNotificationItemPriority::Enum(*priority);
    }
}

template <std::optional<ImageData> NotifyHints::*field>
void readImage(NotifyHints &hints, BusReader &reader)
{
    if (const auto image = ImageData::read(reader)) {
        hints.*field = image;
    }
}

void readProgress(NotifyHints &hints, BusReader &reader)
{
    constexpr std::int64_t max = 100;
    if (const auto progress = reader.readIntegerVariant()) {
        hints.progress = int(std::clamp<std::int64_t>(*progress, 0, max));
    }
}

const QHash<QString, Hint> &knownHints()
{
    static const QHash<QString, Hint> hints{
        {QStringLiteral("urgency"), readUrgency},
        {QStringLiteral("x-tavo-priority"), readExactPriority},
        {QStringLiteral("category"), readLine<&NotifyHints::category>},
        {QStringLiteral("desktop-entry"), readLine<&NotifyHints::desktopEntry>},
        {QStringLiteral("image-path"), readLine<&NotifyHints::imageSource>},
        {QStringLiteral("image-data"), readImage<&NotifyHints::image>},
        // Before version 1.2 of the protocol:
        {QStringLiteral("image_path"), readLine<&NotifyHints::imageSource>},
        {QStringLiteral("image_data"), readImage<&NotifyHints::image>},
        {QStringLiteral("icon_data"), readImage<&NotifyHints::icon>},
        {QStringLiteral("value"), readProgress},
        {QStringLiteral("action-icons"), readBoolean<&NotifyHints::hasActionIcons>},
        {QStringLiteral("transient"), readBoolean<&NotifyHints::isTransient>},
        {QStringLiteral("resident"), readBoolean<&NotifyHints::isResident>},
        {QStringLiteral("sound-file"), readSound<&NotifyHints::soundFile>},
        {QStringLiteral("sound-name"), readSound<&NotifyHints::soundName>},
        {QStringLiteral("suppress-sound"), readBoolean<&NotifyHints::isSilent>}};
    return hints;
}
} // namespace

NotifyHints NotifyHints::read(BusReader &reader)
{
    NotifyHints hints;
    reader.enterArray("{sv}");
    while (!reader.isAtEnd()) {
        reader.enterDictEntry("sv");
        const auto hint = knownHints().constFind(reader.readString());
        if (hint != knownHints().constEnd()) {
            (*hint)(hints, reader);
        } else {
            reader.skip();
        }
        reader.leave();
    }
    reader.leave();
    return hints;
}
