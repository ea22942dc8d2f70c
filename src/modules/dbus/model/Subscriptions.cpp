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
    Held &held = m_held[client];
    if (held.paths[change].contains(path)) {
        return;
    }
    Clients::checkRoom(held.count, m_clients.limits().subscriptions, "subscriptions");
    held.paths[change].insert(path);
    ++held.count;
    Names &names = m_names[change][path];
    names.push_back(client);
    if (names.size() == 1) {
        subscribe(change, path);
    }
}

bool Subscriptions::remove(const std::string &client, Change change, const CMPath &path)
{
    const auto held = m_held.find(client);
    if (held == m_held.end() || !held->second.paths[change].remove(path)) {
        return false;
    }
    --held->second.count;
    drop(client, change, path);
    return true;
}

void Subscriptions::drop(const std::string &client, Change change, const CMPath &path)
{
    const auto names = m_names[change].find(path);
    names->erase(std::find(names->begin(), names->end(), client));
    if (names->empty()) {
        m_names[change].erase(names);
        unsubscribe(change, path);
    }
}

bool Subscriptions::end(const std::string &client)
{
    auto held = m_held.extract(client);
    if (held.empty() || held.mapped().count == 0) {
        return false;
    }
    for (const Change change : {CMAbstractWorker::ValueChange, CMAbstractWorker::NodeChange,
                                CMAbstractWorker::RowsChange}) {
        for (const CMPath &path : qAsConst(held.mapped().paths[change])) {
            drop(client, change, path);
        }
    }
    return true;
}

void Subscriptions::on_clients_left(const std::string &client)
{
    end(client);
}

void Subscriptions::subscribe(Change change, const CMPath &path)
{
    switch (change) {
    case CMAbstractWorker::ValueChange:
        return CMRoot()->connectValueChange(path, this, &Subscriptions::on_model_valueChanged);
    case CMAbstractWorker::NodeChange:
        return CMRoot()->connectNodeChange(path, this, &Subscriptions::on_model_nodeChanged);
    case CMAbstractWorker::RowsChange:
        return CMRoot()->connectRowsChange(path, this, &Subscriptions::on_model_rowsChanged);
    }
}

void Subscriptions::unsubscribe(Change change, const CMPath &path)
{
    switch (change) {
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
    Q_EMIT valueChanged(m_names[CMAbstractWorker::ValueChange].value(path), path, value);
}

void Subscriptions::on_model_rowsChanged(const CMPath &path, const QStringList &changes, int first,
                                         int count)
{
    Q_EMIT rowsChanged(m_names[CMAbstractWorker::RowsChange].value(path), path, changes, first,
                       count);
}

void Subscriptions::on_model_nodeChanged(const CMPath &path, bool published)
{
    Q_EMIT nodeChanged(m_names[CMAbstractWorker::NodeChange].value(path), path, published);
}
