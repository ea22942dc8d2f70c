// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotifyCall.h"

#include "modules/dbus/clients/Quotas.h"
#include "PlainText.h"
#include <base/MessageNode.h>
#include <bus/BusReader.h>

#include <utility>

namespace {
/// Whether a person can choose the action. A click on the whole notification needs no label.
bool canBeChosen(const DesktopNotification::Action &action)
{
    return action.key.toUtf8().size() <= MessageNode::maxKeyBytes &&
           (!action.label.trimmed().isEmpty() || action.key == QLatin1String("default"));
}

void readActions(NotifyCall &call, BusReader &reader)
{
    QVector<DesktopNotification::Action> &actions = call.notification.actions;
    reader.enterArray("s");
    for (int read = 0; read < MessageNode::maxActions && !reader.isAtEnd(); ++read) {
        DesktopNotification::Action action;
        action.key = reader.readString();
        const bool hasLabel = !reader.isAtEnd();
        action.label = hasLabel ? plainLine(reader.readString()) : QString();
        if (hasLabel && canBeChosen(action)) {
            actions.append(action);
        } else {
            call.hasBadActions = true;
        }
    }
    while (!reader.isAtEnd()) {
        reader.skip();
        call.hasBadActions = true;
    }
    reader.leave();
}

/// The timeout that the client requests, or the default.
int timeoutFor(const NotifyCall &call, qint32 requested, const NotifyCall::Timeouts &timeouts)
{
    if (requested >= 0) {
        return requested;
    }
    const bool isCritical = call.notification.priority >= TavoNotificationItemPriority::Urgent;
    return isCritical ? timeouts.critical : timeouts.normal;
}

std::size_t sizeOf(const DesktopNotification &notification)
{
    std::size_t size = 0;
    for (const QString &text :
         {notification.title, notification.text, notification.markup, notification.application,
          notification.icon, notification.imageSource, notification.category,
          notification.desktopEntry}) {
        size += std::size_t(text.size());
    }
    for (const DesktopNotification::Action &action : notification.actions) {
        size += MessageNode::actionBytes(action.key) + std::size_t(action.label.size());
    }
    return size;
}
} // namespace

NotifyCall NotifyCall::read(const BusMessage &call, const Timeouts &timeouts,
                            const ClientLimits &limits)
{
    BusReader reader(call, limits.valueBytes);
    NotifyCall result;
    DesktopNotification &notification = result.notification;
    notification.application = plainLine(reader.readString());
    result.replacedId = reader.readUInt32();
    notification.icon = plainLine(reader.readString());
    notification.title = plainLine(reader.readString());
    if (notification.title.isEmpty()) {
        notification.title = notification.application;
    }
    BodyText body = readBody(reader.readString());
    notification.text = std::move(body.text);
    notification.markup = std::move(body.markup);
    readActions(result, reader);
    result.hints = NotifyHints::read(reader);
    const NotifyHints &hints = result.hints;
    notification.priority = limits.allowedPriority(hints.exactPriority.value_or(hints.priority));
    notification.imageSource = hints.imageSource;
    const bool hasOtherPicture = !notification.icon.isEmpty() || !hints.imageSource.isEmpty();
    notification.image = hints.image || hasOtherPicture ? hints.image : hints.icon;
    notification.progress = hints.progress;
    notification.hasActionIcons = hints.hasActionIcons;
    notification.category = hints.category;
    notification.desktopEntry = hints.desktopEntry;
    notification.isTransient = hints.isTransient;
    notification.isResident = hints.isResident;
    notification.timeout = timeoutFor(result, reader.readInt32(), timeouts);
    const std::size_t pixels = notification.image ? notification.image->scaledBytes() : 0;
    result.storedBytes = Quotas::storedBytes(sizeOf(notification)) + pixels;
    return result;
}
