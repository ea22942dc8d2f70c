// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientMessages.h"

#include "Clients.h"

#include <algorithm>
#include <utility>

namespace {
/// The id under which the display knows a message, whatever id its client gave it.
QString idOf(quint32 number)
{
    return QStringLiteral("dbus-message-%1").arg(number);
}

/// The number in an id; 0 if it is not one of ours.
quint32 numberIn(const QString &id)
{
    const quint32 number = id.midRef(id.lastIndexOf(QLatin1Char('-')) + 1).toUInt();
    return id == idOf(number) ? number : 0;
}
} // namespace

ClientMessages::ClientMessages(Clients &clients, CMNodes *nodes)
    : m_clients(clients)
    , m_nodes(nodes)
{
    CMRoot()->connectNodeChange(TavoNotificationDisplayQueuePath(), this,
                                &ClientMessages::on_queue_nodeChanged);
}

CMReply<QVariant> ClientMessages::open(const std::string &client, const QVariant &value,
                                       std::size_t bytes)
{
    const auto item = TavoValue(value.toHash()).notificationDisplayItem();
    const bool hasMessage = !item.message().isEmpty();
    if (!hasMessage && item.path().isEmpty()) {
        // The display refuses it.
        return CMRoot()->invoke(TavoNotificationDisplayOpenPath(), value, {});
    }
    const auto priority = m_clients.limits().allowedPriority(item.priority());
    CMPath path = item.path();
    if (hasMessage) {
        path = TavoNotificationDisplaySimpleMessageNodePath() + tavoGenerateUuid();
    }
    const quint32 number = ++m_lastNumber;
    Message message;
    if (!hasMessage) {
        message.place = m_clients.pathPlaces().take(m_clients.quotas().userOf(client), path);
    }
    message.charge = m_clients.quotas().charge(
        client, {Quotas::OpenNotifications, 1, Quotas::storedBytes(bytes), priority},
        [this, number] { giveUp(number); }, [this, number] { takeLeft(number); });
    if (hasMessage) {
        message.node = createNode(path, item);
    }
    // The texts are left out, and so are unknown fields, which the display would store.
    message.item = TavoNotificationDisplayItem()
                       .setTimeout(item.timeout())
                       .setPriority(priority)
                       .setPath(path);
    CMReply<QVariant> reply = queue(number, std::move(message));
    m_clients.leftMessages().makeWay(priority);
    return reply;
}

CMReply<QVariant> ClientMessages::queue(quint32 number, Message message)
{
    if (!std::exchange(m_isFollowing, true)) {
        CMRoot()->connectValueChange(TavoNotificationDisplayEndedPath(), this,
                                     &ClientMessages::on_display_ended);
    }
    const TavoNotificationDisplayItem item = message.item.setId(idOf(number));
    m_numbers[item.path()].insert(number);
    m_messages.emplace(number, std::move(message));
    const CMReply<QVariant> reply;
    reply.addWatcher(
        this,
        [this, number](const CMVoidReply &answer) {
            if (answer.error().isError()) {
                forget(number);
            }
        },
        Qt::QueuedConnection);
    return CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                            TavoValue().setNotificationDisplayItem(item), reply);
}

void ClientMessages::close(quint32 number)
{
    const auto closed = m_messages.find(number);
    if (closed == m_messages.end() || closed->second.isClosing) {
        return;
    }
    const CMPath path = closed->second.item.path();
    for (const quint32 each : m_numbers.at(path)) {
        m_messages.at(each).isClosing = true;
    }
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path),
                     CMReply<QVariant>());
}

void ClientMessages::giveUp(quint32 number)
{
    const auto given = m_messages.find(number);
    if (given == m_messages.end() || given->second.isGivenUp) {
        return;
    }
    const auto user = given->second.charge.user();
    for (const quint32 each : m_numbers.at(given->second.item.path())) {
        Message &message = m_messages.at(each);
        message.isGivenUp = message.isGivenUp || message.charge.user() == user;
    }
    close(number);
}

/// The client of a message has left.
void ClientMessages::takeLeft(quint32 number)
{
    const auto found = m_messages.find(number);
    if (found == m_messages.end()) {
        return;
    }
    Message &message = found->second;
    const auto priority = message.item.priority();
    if (LeftMessages::givesWay(priority, message.item.timeout())) {
        message.left = m_clients.leftMessages().add(priority, [this, number] { close(number); });
    }
}

CMListRowsNode *ClientMessages::createNode(const CMPath &path,
                                           const TavoNotificationDisplayItem &item)
{
    static const auto rowsRoles = TavoRowsRoles().setType({TavoRowsRolesType::Title});
    CMListRowsNode *node = CMListRowsNode::create(m_nodes, path);
    node->setRowsRoles(rowsRoles);
    node->rowsAppend(TavoRoles().setType(TavoRolesType::Text).setTitle(item.message()));
    const TrString title = item.title();
    node->setTitle(title.isEmpty() ? TAVO_TR("Message") : title);
    return node;
}

ClientMessages::Message ClientMessages::remove(Messages::iterator message)
{
    const auto numbers = m_numbers.find(message->second.item.path());
    numbers->second.erase(message->first);
    if (numbers->second.empty()) {
        m_numbers.erase(numbers);
    }
    Message removed = std::move(message->second);
    m_messages.erase(message);
    return removed;
}

void ClientMessages::forget(quint32 number)
{
    const auto message = m_messages.find(number);
    if (message == m_messages.end()) {
        return;
    }
    if (message->second.node != nullptr) {
        message->second.node->dispose();
    }
    remove(message);
    if (m_messages.empty()) {
        m_isFollowing = false;
        CMRoot()->disconnectValueChange(TavoNotificationDisplayEndedPath(), this,
                                        &ClientMessages::on_display_ended);
    }
}

void ClientMessages::on_display_ended(const CMPath & /*path*/, const QVariant &value)
{
    const auto ended = TavoValue(value.toHash()).displayEnded();
    const quint32 number = numberIn(ended.id());
    const auto found = m_messages.find(number);
    if (found == m_messages.end()) {
        return;
    }
    if (!found->second.isClosing || found->second.isGivenUp ||
        ended.end() != TavoNotificationDisplayEnd::Cancelled) {
        forget(number);
        return;
    }
    Message message = remove(found);
    message.isClosing = false;
    if (message.left) {
        message.left.reset();
        message.item.setPriority(LeftMessages::below(message.item.priority()));
    }
    if (message.item.timeout() > 0) {
        message.item.setTimeout(std::max(ended.remaining(), 1));
    }
    queue(number, std::move(message));
}

void ClientMessages::on_queue_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (published) {
        return;
    }
    while (!m_messages.empty()) {
        forget(m_messages.begin()->first);
    }
}
