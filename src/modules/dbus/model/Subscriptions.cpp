// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Subscriptions.h"

#include "modules/dbus/clients/Clients.h"

#include <algorithm>

Subscriptions::Subscriptions(Clients &clients)
    : m_clients(clients)
{
    tavoConnect(&m_clients, &Clients::left, this, &Subscriptions::on_clients_left);
}

void Subscriptions::add(const std::string &client, Change change, const CMPath &path)
{
    const Subscription subscription{change, path};
    auto &held = m_held[client];
    if (held.count(subscription) > 0) {
        return;
    }
    const std::size_t bytes = Quotas::storedBytes(std::size_t(path.toString().toUtf8().size()));
    held.emplace(subscription,
                 m_clients.quotas().charge(client, {Quotas::Subscriptions, 1, bytes}));
    Names &names = m_names[subscription];
    names.push_back(client);
    if (names.size() == 1) {
        subscribe(subscription);
    }
}

bool Subscriptions::remove(const std::string &client, Change change, const CMPath &path)
{
    const Subscription subscription{change, path};
    const auto held = m_held.find(client);
    if (held == m_held.end() || held->second.erase(subscription) == 0) {
        return false;
    }
    drop(client, subscription);
    return true;
}

void Subscriptions::drop(const std::string &client, const Subscription &subscription)
{
    const auto names = m_names.find(subscription);
    names->second.erase(std::find(names->second.begin(), names->second.end(), client));
    if (names->second.empty()) {
        m_names.erase(names);
        unsubscribe(subscription);
    }
}

bool Subscriptions::end(const std::string &client)
{
    const auto held = m_held.extract(client);
    if (held.empty()) {
        return false;
    }
    for (const auto &[subscription, charge] : held.mapped()) {
        drop(client, subscription);
    }
    return !held.mapped().empty();
}

Subscriptions::Names Subscriptions::namesOf(const Subscription &subscription) const
{
    const auto names = m_names.find(subscription);
    return names == m_names.end() ? Names() : names->second;
}

void Subscriptions::on_clients_left(const std::string &client)
{
    end(client);
}

void Subscriptions::subscribe(const Subscription &subscription)
{
    const CMPath &path = subscription.path;
    switch (subscription.change) {
    case CMAbstractWorker::ValueChange:
        return CMRoot()->connectValueChange(path, this, &Subscriptions::on_model_valueChanged);
    case CMAbstractWorker::NodeChange:
        return CMRoot()->connectNodeChange(path, this, &Subscriptions::on_model_nodeChanged);
    case CMAbstractWorker::RowsChange:
        return CMRoot()->connectRowsChange(path, this, &Subscriptions::on_model_rowsChanged);
    }
}

void Subscriptions::unsubscribe(const Subscription &subscription)
{
    const CMPath &path = subscription.path;
    switch (subscription.change) {
    case CMAbstractWorker::ValueChange:
        return CMRoot()->disconnectValueChange(path, this, &Subscriptions::on_model_valueChanged);
    case CMAbstractWorker::NodeChange:
        return CMRoot()->disconnectNodeChange(path, this, &Subscriptions::on_model_nodeChanged);
    case CMAbstractWorker::RowsChange:
        return CMRoot()->disconnectRowsChange(path, this, &Subscriptions::on_model_rowsChanged);
    }
}

void Subscriptions::on_model_valueChanged(const CMPath &path, const QVariant &value)
{
    Q_EMIT valueChanged(namesOf({CMAbstractWorker::ValueChange, path}), path, value);
}

void Subscriptions::on_model_rowsChanged(const CMPath &path, const QStringList &changes, int first,
                                         int count)
{
    Q_EMIT rowsChanged(namesOf({CMAbstractWorker::RowsChange, path}), path, changes, first, count);
}

void Subscriptions::on_model_nodeChanged(const CMPath &path, bool published)
{
    Q_EMIT nodeChanged(namesOf({CMAbstractWorker::NodeChange, path}), path, published);
}
