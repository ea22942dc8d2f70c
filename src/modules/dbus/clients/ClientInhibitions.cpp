// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientInhibitions.h"

#include "Clients.h"

#include <utility>

ClientInhibitions::ClientInhibitions(Clients &clients)
    : m_clients(clients)
{
    tavoConnect(&m_clients, &Clients::left, this, &ClientInhibitions::on_clients_left);
    CMRoot()->connectNodeChange(TavoAttentionInhibitPath(), this,
                                &ClientInhibitions::on_attention_nodeChanged);
}

ClientInhibitions::~ClientInhibitions()
{
    for (auto &[key, inhibition] : m_inhibitions) {
        tell(inhibition.item.setOn(false));
    }
}

CMReply<QVariant> ClientInhibitions::tell(const TavoAttentionInhibition &item)
{
    return CMRoot()->invoke(TavoAttentionInhibitPath(), TavoValue().setAttentionInhibition(item),
                            {});
}

CMReply<QVariant> ClientInhibitions::send(const std::string &client,
                                          const TavoAttentionInhibition &requested,
                                          std::size_t bytes)
{
    const QString name = QString::fromStdString(client);
    const Key key{client, requested.id()};
    const auto item =
        TavoAttentionInhibition()
            .setId(QStringLiteral("%1 %2").arg(name, requested.id()))
            .setOn(requested.on())
            .setApplication(requested.application().isEmpty() ? name : requested.application())
            .setReason(requested.reason());
    if (!item.on()) {
        m_inhibitions.erase(key);
        return tell(item);
    }
    const Quotas::Cost cost{Quotas::Inhibitions, 1, Quotas::storedBytes(bytes)};
    const auto known = m_inhibitions.find(key);
    if (known != m_inhibitions.end()) {
        m_clients.quotas().change(known->second.charge, cost.storedBytes, cost.priority);
        known->second.item = item;
    } else {
        auto charge = m_clients.quotas().charge(client, cost, [this, key] { end(key); });
        m_inhibitions.emplace(key, Inhibition{item, std::move(charge)});
    }
    CMReply<QVariant> reply = tell(item);
    reply.onFinished(this, [this, key](const CMReply<QVariant> &finished) {
        if (finished.error().isError()) {
            m_inhibitions.erase(key);
        }
    });
    return reply;
}

void ClientInhibitions::end(const Key &key)
{
    const auto inhibition = m_inhibitions.find(key);
    if (inhibition != m_inhibitions.end()) {
        tell(inhibition->second.item.setOn(false));
        m_inhibitions.erase(inhibition);
    }
}

void ClientInhibitions::on_clients_left(const std::string &client)
{
    auto inhibition = m_inhibitions.lower_bound({client, QString()});
    while (inhibition != m_inhibitions.end() && inhibition->first.first == client) {
        tell(inhibition->second.item.setOn(false));
        inhibition = m_inhibitions.erase(inhibition);
    }
}

void ClientInhibitions::on_attention_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (!published) {
        return;
    }
    for (const auto &[key, inhibition] : m_inhibitions) {
        tell(inhibition.item);
    }
}
