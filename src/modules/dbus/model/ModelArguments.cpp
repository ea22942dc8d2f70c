// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelArguments.h"

#include "modules/dbus/clients/Refusals.h"
#include <bus/BusReader.h>

namespace {
/// In characters. Short enough to keep thousands of paths.
constexpr int maxPathLength = 4096;

/// In characters, with the arguments. Nobody reads more on a display, and every listing takes time for them.
constexpr int maxTitleLength = 1000;
constexpr int maxMessageLength = 65536;
constexpr int maxIdLength = 256;    // as the history keeps
constexpr int maxNameLength = 4096; // it may be the path of an icon

void check(const QString &text, const char *what, int maxLength)
{
    if (text.size() > maxLength) {
        throw Refusals::textTooLong(what, maxLength);
    }
}

void check(const TrString &text, const char *what, int maxLength)
{
    check(text.toString(), what, maxLength);
}

CMPath pathOf(const QString &text)
{
    if (text.size() > maxPathLength) {
        throw Refusals::pathTooLong(maxPathLength);
    }
    CMPath path(text);
    if (path.isEmpty() || path.toString() != text) {
        throw Refusals::notAPath(text.toStdString());
    }
    return path;
}

void checkMessagePath(const CMPath &path)
{
    if (path.toString().size() > maxPathLength) {
        throw Refusals::pathTooLong(maxPathLength);
    }
    // A node that changes with each notification would have the display follow its own changes.
    const bool isOfNotifications = path.isBelow(TavoNotificationsPath()) &&
                                   !path.isBelow(TavoNotificationDisplaySimpleMessageNodePath());
    const bool isOfAttention =
        path.isBelow(TavoAttentionPath()) && !path.isBelow(TavoAttentionMessagesPath());
    if (isOfNotifications || isOfAttention) {
        throw Refusals::notAMessage();
    }
}
} // namespace

CMPath ModelArguments::readPath(BusReader &reader)
{
    return pathOf(reader.readString());
}

CMPath ModelArguments::readPath(const BusMessage &call)
{
    BusReader reader(call);
    return readPath(reader);
}

CMPath ModelArguments::readPathOrRoot(const BusMessage &call)
{
    const QString text = BusReader(call).readString();
    return text == QLatin1String("/") ? CMPath() : pathOf(text);
}

Subscriptions::Change ModelArguments::readChange(BusReader &reader)
{
    const QString change = reader.readString();
    if (change == QLatin1String("value")) {
        return CMAbstractWorker::ValueChange;
    }
    if (change == QLatin1String("rows")) {
        return CMAbstractWorker::RowsChange;
    }
    if (change == QLatin1String("node")) {
        return CMAbstractWorker::NodeChange;
    }
    throw Refusals::unknownChange();
}

void ModelArguments::checkTexts(const QVariant &value)
{
    const TavoValue request(value.toHash());
    const TavoNotificationDisplayItem message = request.notificationDisplayItem();
    check(message.id(), "id", maxIdLength);
    check(message.title(), "title", maxTitleLength);
    check(message.message(), "message", maxMessageLength);
    checkMessagePath(message.path());
    check(request.notificationPlayerItem().id(), "id", maxIdLength);
    const TavoAttentionItem item = request.attentionItem();
    check(item.id(), "id", maxIdLength);
    check(item.sound().id(), "id", maxIdLength);
    for (const QString &name : {item.application(), item.source(), item.icon(), item.category(),
                                item.group(), item.language()}) {
        check(name, "name", maxNameLength);
    }
    check(item.speech(), "text", maxMessageLength);
    check(item.title(), "title", maxTitleLength);
    check(item.text(), "text", maxMessageLength);
    checkMessagePath(item.path());
    const auto actions = item.actions(); // converted each time, if they are no records
    for (int index = 0; index < actions.size(); ++index) {
        check(actions.at(index).label(), "label", maxTitleLength);
    }
}
