// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientMessages.h"

#include "Clients.h"

#include <utility>

namespace {
DisplayOrder::Opening openingOf(quint32 number)
{
    return {number, 0};
}

void askDisplayToClose(const CMPath &path)
{
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path),
                     CMReply<QVariant>());
}
} // namespace

ClientMessages::ClientMessages(Clients &clients, CMNodes *nodes)
    : m_clients(clients)
    , m_nodes(nodes)
{
    tavoConnect(&m_clients, &Clients::left, this, &ClientMessages::on_clients_left);
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
    Message message;
    message.charge = m_clients.quotas().charge(
        client, {Quotas::OpenNotifications, 1, Quotas::storedBytes(bytes), priority},
        [path] { askDisplayToClose(path); });
    if (hasMessage) {
        message.node = createNode(path, item);
    }
    // The texts are left out, and so are unknown fields, which the display would store.
    message.item = TavoNotificationDisplayItem()
                       .setId(item.id())
                       .setTimeout(item.timeout())
                       .setPriority(priority)
                       .setPath(path);
    const CMReply<QVariant> reply = queue(std::move(message));
    m_clients.leftMessages().makeWay(priority);
    return reply;
}

CMReply<QVariant> ClientMessages::queue(Message message)
{
    if (!std::exchange(m_isFollowing, true)) {
        CMRoot()->connectRowsChange(TavoNotificationDisplayQueuePath(), this,
                                    &ClientMessages::on_queue_rowsChanged);
    }
    const quint32 number = ++m_lastNumber;
    const TavoNotificationDisplayItem item = message.item;
    m_messages.emplace(number, std::move(message));
    const CMReply<QVariant> reply;
    // The watcher is added before the request is sent, and its call is queued. So the reply arrives right
    // after the report of the inserted row, and tells whose row it is.
    reply.addWatcher(
        this, [this, number](const CMVoidReply &answer) { on_open_finished(number, answer); },
        Qt::QueuedConnection);
    return CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                            TavoValue().setNotificationDisplayItem(item), reply);
}

void ClientMessages::giveWay(quint32 number)
{
    auto given = m_messages.extract(number);
    if (given.empty()) {
        return;
    }
    Message &message = given.mapped();
    askDisplayToClose(message.item.path());
    message.item.setPriority(LeftMessages::below(message.item.priority()));
    queue(std::move(message));
}

void ClientMessages::on_clients_left(const std::string &client)
{
    if (m_clients.quotas().held(client, Quotas::OpenNotifications) == 0) {
        return;
    }
    for (auto &[number, message] : m_messages) {
        const auto priority = message.item.priority();
        if (message.charge.client() == client &&
            LeftMessages::givesWay(priority, message.item.timeout())) {
            message.left = m_clients.leftMessages().add(
                priority, [this, number = number] { giveWay(number); });
        }
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

void ClientMessages::on_open_finished(quint32 number, const CMVoidReply &reply)
{
    if (reply.error().isError()) {
        forget(number);
    } else {
        m_order.nameLast(openingOf(number));
    }
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
    m_messages.erase(message);
    if (m_messages.empty()) {
        m_isFollowing = false;
        CMRoot()->disconnectRowsChange(TavoNotificationDisplayQueuePath(), this,
                                       &ClientMessages::on_queue_rowsChanged);
        m_order.clear();
    }
}

void ClientMessages::on_queue_rowsChanged(const CMPath & /*path*/, const QStringList &changes,
                                          int first, int count)
{
    for (int i = 0; i < count && changes.contains(CMSubscribe::RowsChangeInserted()); ++i) {
        m_order.insert(first + i);
    }
    for (int i = 0; i < count && changes.contains(CMSubscribe::RowsChangeRemoved()); ++i) {
        forget(m_order.remove(first).id);
    }
}

void ClientMessages::on_queue_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (published) {
        return;
    }
    m_order.clear();
    while (!m_messages.empty()) {
        forget(m_messages.begin()->first);
    }
}
