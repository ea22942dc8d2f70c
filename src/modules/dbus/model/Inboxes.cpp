// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Inboxes.h"

#include "modules/dbus/clients/Clients.h"

Inboxes::Inboxes(Clients &clients, CMNodes *nodes)
    : m_clients(clients)
    , m_nodes(nodes)
{
    tavoConnect(&m_clients, &Clients::left, this, &Inboxes::on_clients_left);
}

CMPath Inboxes::open(const std::string &client)
{
    static const CMPath parent{QStringLiteral("/dbus/inbox")};
    const auto count = m_counts.find(client);
    Clients::checkRoom(count == m_counts.end() ? 0 : count->second, m_clients.limits().inboxes,
                       "inboxes");
    CMPath path = parent + QString::number(++m_lastNumber);
    CMActivateNode *node = CMActivateNode::create(m_nodes, path);
    m_inboxes.insert(path, {client, node});
    ++m_counts[client];
    node->setInvoke(this, &Inboxes::on_inbox_activated, Qt::QueuedConnection);
    return path;
}

bool Inboxes::close(const std::string &client, const CMPath &path)
{
    const auto inbox = m_inboxes.find(path);
    if (inbox == m_inboxes.end() || inbox->client != client) {
        return false;
    }
    inbox->node->dispose();
    m_inboxes.erase(inbox);
    const auto count = m_counts.find(client);
    if (--count->second == 0) {
        m_counts.erase(count);
    }
    return true;
}

void Inboxes::on_clients_left(const std::string &client)
{
    if (m_counts.erase(client) == 0) {
        return;
    }
    for (auto inbox = m_inboxes.begin(); inbox != m_inboxes.end();) {
        if (inbox->client == client) {
            inbox->node->dispose();
            inbox = m_inboxes.erase(inbox);
        } else {
            ++inbox;
        }
    }
}

void Inboxes::on_inbox_activated(const CMSetDataRequest &request)
{
    request.reply().setValue(QVariant());
    const auto inbox = m_inboxes.constFind(request.path());
    if (inbox != m_inboxes.constEnd()) {
        Q_EMIT received(inbox->client, request.path(), request.value());
    }
}
