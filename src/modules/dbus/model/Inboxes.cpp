// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Inboxes.h"

#include "modules/dbus/clients/Clients.h"
#include "modules/dbus/clients/Refusals.h"

#include <algorithm>
#include <utility>

namespace {
/// What a short request counts for.
constexpr std::size_t messageBytes = 1024;

CMPath parentPath()
{
    static const CMPath path(QStringLiteral("/dbus/inbox"));
    return path;
}

/// Inboxes, and messages, whose clients are told when an action is chosen.
bool reachesClients(const CMPath &path)
{
    static const CMPath notifications(QStringLiteral("/dbus/notifications"));
    return path.isBelow(parentPath()) || path.isBelow(notifications) ||
           path.isBelow(TavoAttentionMessagesPath());
}
} // namespace

Inboxes::Inboxes(Clients &clients, CMNodes *nodes)
    : m_clients(clients)
    , m_nodes(nodes)
{
    tavoConnect(&m_clients, &Clients::left, this, &Inboxes::on_clients_left);
}

CMPath Inboxes::open(const std::string &client)
{
    CMPath path = parentPath() + QString::number(++m_lastNumber);
    const std::size_t bytes = Quotas::storedBytes(std::size_t(path.toString().size()));
    Quotas::Charge charge = m_clients.quotas().charge(client, {Quotas::Inboxes, 1, bytes});
    const Node node(CMActivateNode::create(m_nodes, path),
                    [](CMActivateNode *closed) { closed->dispose(); });
    m_inboxes.emplace(path, Inbox{std::move(charge), node});
    m_paths[client].push_back(path);
    node->setInvoke(this, &Inboxes::on_inbox_activated, Qt::QueuedConnection);
    return path;
}

bool Inboxes::isOf(const std::string &client, const CMPath &path) const
{
    const auto inbox = m_inboxes.find(path);
    return inbox != m_inboxes.end() && inbox->second.charge.client() == client;
}

void Inboxes::checkReceiver(const std::string &client, const CMPath &path) const
{
    if (!reachesClients(path)) {
        return;
    }
    const auto inbox = m_inboxes.find(path);
    if (inbox == m_inboxes.end() || !m_clients.isOfUser(client, inbox->second.charge.user())) {
        throw Refusals::noSuchInbox(path.toString().toStdString());
    }
}

void Inboxes::admit(const std::string &client, const CMPath &path, std::size_t bytes)
{
    const Quotas &quotas = m_clients.quotas();
    const Quotas::UserId user = quotas.userOf(client);
    const auto inbox = m_inboxes.find(path);
    const bool isOwn = inbox != m_inboxes.end() && user && inbox->second.charge.user() == user;
    if (!quotas.hasManyUsers() || isOwn || !reachesClients(path)) {
        return;
    }
    const double perSecond = m_clients.limits().messageBytes;
    const Clock::time_point now = Clock::now();
    Budget &budget = m_budgets.try_emplace(user, Budget{perSecond, now}).first->second;
    const std::chrono::duration<double> elapsed = now - std::exchange(budget.refilled, now);
    budget.bytes = std::min(perSecond, budget.bytes + elapsed.count() * perSecond);
    if (budget.bytes <= 0) {
        throw Refusals::tooMuchForInboxes(m_clients.limits().messageBytes);
    }
    budget.bytes -= double(bytes + messageBytes);
}

bool Inboxes::close(const std::string &client, const CMPath &path)
{
    if (!isOf(client, path)) {
        return false;
    }
    const auto paths = m_paths.find(client);
    paths->second.erase(std::find(paths->second.begin(), paths->second.end(), path));
    if (paths->second.empty()) {
        m_paths.erase(paths);
    }
    m_inboxes.erase(path);
    return true;
}

void Inboxes::on_clients_left(const std::string &client)
{
    const auto paths = m_paths.extract(client);
    if (paths.empty()) {
        return;
    }
    for (const CMPath &path : paths.mapped()) {
        m_inboxes.erase(path);
    }
}

void Inboxes::on_inbox_activated(const CMSetDataRequest &request)
{
    request.reply().setValue(QVariant());
    const auto inbox = m_inboxes.find(request.path());
    if (inbox != m_inboxes.end()) {
        Q_EMIT received(inbox->second.charge.client(), request.path(), request.value());
    }
}
