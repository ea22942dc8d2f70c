// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotifyCall.h"

#include "PlainText.h"

#include <bus/BusError.h>
#include <bus/BusReader.h>

#include <functional>
#include <limits>

#include <QHash>

namespace {
/// More than a person chooses from.
constexpr int maxActions = 64;

/// The urgencies of the protocol.
constexpr qint64 urgencyLow = 0;
constexpr qint64 urgencyCritical = 2;

QVector<DesktopNotification::Action> readActions(BusReader &reader)
{
    QVector<DesktopNotification::Action> actions;
    reader.enterArray("s");
    while (!reader.isAtEnd()) {
        if (actions.size() == maxActions) {
            throw BusError::limitExceeded("A notification has no more than " +
                                          std::to_string(maxActions) + " actions");
        }
        const QString key = reader.readString();
        if (reader.isAtEnd()) {
            throw BusError::invalidArguments("Each action takes a key and a label");
        }
        actions.append({key, plainLine(reader.readString())});
    }
    reader.leave();
    return actions;
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
    const auto urgency = reader.readIntegerVariant();
    call.notification.priority = urgency == urgencyLow ? TavoNotificationItemPriority::Low
                                 : urgency == urgencyCritical
                                     ? TavoNotificationItemPriority::Urgent
                                     : TavoNotificationItemPriority::Normal;
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

void readHints(NotifyCall &call, BusReader &reader)
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

/// The timeout that the client requests, or the default.
int timeoutFor(const NotifyCall &call, qint32 requested, const NotifyCall::Timeouts &timeouts)
{
    if (requested >= 0) {
        return requested;
    }
    const bool isCritical = call.notification.priority == TavoNotificationItemPriority::Urgent;
    return isCritical ? timeouts.critical : timeouts.normal;
}
} // namespace

NotifyCall NotifyCall::read(const BusMessage &call, const Timeouts &timeouts, int maxBytes)
{
    BusReader reader(call, maxBytes);
    NotifyCall result;
    DesktopNotification &notification = result.notification;
    notification.application = plainLine(reader.readString());
    result.replacedId = reader.readUInt32();
    const QString icon = plainLine(reader.readString());
    notification.title = plainLine(reader.readString());
    if (notification.title.isEmpty()) {
        notification.title = notification.application;
    }
    notification.text = plainText(reader.readString());
    notification.actions = readActions(reader);
    readHints(result, reader);
    notification.priority = result.exactPriority.value_or(notification.priority);
    if (notification.icon.isEmpty()) {
        notification.icon = icon;
    }
    notification.timeout = timeoutFor(result, reader.readInt32(), timeouts);
    return result;
}
