// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotifyCall.h"

#include "modules/dbus/clients/Refusals.h"
#include "NotifyHints.h"
#include "PlainText.h"
#include <bus/BusReader.h>

namespace {
/// More than a person can choose from.
constexpr int maxActions = 64;

QVector<DesktopNotification::Action> readActions(BusReader &reader)
{
    QVector<DesktopNotification::Action> actions;
    reader.enterArray("s");
    while (!reader.isAtEnd()) {
        if (actions.size() == maxActions) {
            throw Refusals::tooManyActions(maxActions);
        }
        const QString key = reader.readString();
        if (reader.isAtEnd()) {
            throw Refusals::actionWithoutLabel();
        }
        actions.append({key, plainLine(reader.readString())});
    }
    reader.leave();
    return actions;
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
    NotifyHints::read(result, reader);
    notification.priority = result.exactPriority.value_or(notification.priority);
    if (notification.icon.isEmpty()) {
        notification.icon = icon;
    }
    notification.timeout = timeoutFor(result, reader.readInt32(), timeouts);
    return result;
}
