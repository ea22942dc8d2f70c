// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotifyCall.h"

#include "MessageCursor.h"
#include "PlainText.h"

#include <bus/BusError.h>
#include <bus/RawMessage.h>

#include <functional>
#include <limits>

#include <QHash>

namespace {
/// More than anybody chooses from.
constexpr int mostActions = 64;

/// The urgencies of the protocol.
constexpr qint64 urgencyLow = 0;
constexpr qint64 urgencyCritical = 2;

QVector<DesktopNotification::Action> readActions(MessageCursor &cursor)
{
    QVector<DesktopNotification::Action> actions;
    cursor.enter(SD_BUS_TYPE_ARRAY, "s");
    while (!cursor.isAtEnd()) {
        if (actions.size() == mostActions) {
            throw BusErrors::limitExceeded("A notification has no more than " +
                                           std::to_string(mostActions) + " actions");
        }
        const QString key = cursor.readText();
        if (cursor.isAtEnd()) {
            throw BusErrors::invalidArguments("Each action takes a key and a label");
        }
        actions.append({key, plainLine(cursor.readText())});
    }
    cursor.leave();
    return actions;
}

using Hint = void (*)(NotifyCall &call, MessageCursor &cursor);

template <QString DesktopNotification::*field>
void readLine(NotifyCall &call, MessageCursor &cursor)
{
    call.notification.*field = plainLine(cursor.readTextVariant().value_or(QString()));
}

template <QString NotifyCall::*field>
void readSound(NotifyCall &call, MessageCursor &cursor)
{
    call.*field = cursor.readTextVariant().value_or(QString());
}

template <bool DesktopNotification::*field>
void readTruth(NotifyCall &call, MessageCursor &cursor)
{
    call.notification.*field = cursor.readNumberVariant().value_or(0) != 0;
}

void readSilence(NotifyCall &call, MessageCursor &cursor)
{
    call.isSilent = cursor.readNumberVariant().value_or(0) != 0;
}

void readUrgency(NotifyCall &call, MessageCursor &cursor)
{
    const auto urgency = cursor.readNumberVariant();
    call.notification.priority = urgency == urgencyLow ? TavoNotificationItemPriority::Low
                                 : urgency == urgencyCritical
                                     ? TavoNotificationItemPriority::Urgent
                                     : TavoNotificationItemPriority::Normal;
}

void readExactPriority(NotifyCall &call, MessageCursor &cursor)
{
    const auto priority = cursor.readNumberVariant();
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
        {QStringLiteral("transient"), readTruth<&DesktopNotification::isTransient>},
        {QStringLiteral("resident"), readTruth<&DesktopNotification::isResident>},
        {QStringLiteral("sound-file"), readSound<&NotifyCall::soundFile>},
        {QStringLiteral("sound-name"), readSound<&NotifyCall::soundName>},
        {QStringLiteral("suppress-sound"), readSilence}};
    return hints;
}

void readHints(NotifyCall &call, MessageCursor &cursor)
{
    cursor.enter(SD_BUS_TYPE_ARRAY, "{sv}");
    while (!cursor.isAtEnd()) {
        cursor.enter(SD_BUS_TYPE_DICT_ENTRY, "sv");
        const auto hint = knownHints().constFind(cursor.readText());
        if (hint != knownHints().constEnd()) {
            (*hint)(call, cursor);
        } else {
            cursor.skip();
        }
        cursor.leave();
    }
    cursor.leave();
}

/// The client's wish, or the default for one that has none.
int timeoutFor(const NotifyCall &call, qint32 wish, const NotifyCall::Timeouts &timeouts)
{
    if (wish >= 0) {
        return wish;
    }
    const bool isCritical = call.notification.priority == TavoNotificationItemPriority::Urgent;
    return isCritical ? timeouts.critical : timeouts.normal;
}
} // namespace

NotifyCall NotifyCall::read(const sdbus::MethodCall &call, const Timeouts &timeouts, int mostBytes)
{
    MessageCursor cursor(rawMessage(call), mostBytes);
    NotifyCall result;
    DesktopNotification &notification = result.notification;
    notification.application = plainLine(cursor.readText());
    result.replacedId = cursor.readUnsigned();
    const QString icon = plainLine(cursor.readText());
    notification.title = plainLine(cursor.readText());
    if (notification.title.isEmpty()) {
        notification.title = notification.application;
    }
    notification.text = plainText(cursor.readText());
    notification.actions = readActions(cursor);
    readHints(result, cursor);
    notification.priority = result.exactPriority.value_or(notification.priority);
    if (notification.icon.isEmpty()) {
        notification.icon = icon;
    }
    notification.timeout = timeoutFor(result, cursor.readSigned(), timeouts);
    return result;
}
