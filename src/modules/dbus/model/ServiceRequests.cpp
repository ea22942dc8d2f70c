// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ServiceRequests.h"

#include "Inboxes.h"
#include "modules/dbus/clients/Clients.h"
#include "modules/dbus/clients/Refusals.h"

namespace {
/// For each client. The player accepts 256 requesters, of all clients and modules together.
constexpr std::size_t maxRequesters = 16;

/// In characters. The services refuse longer names, so they need not be tracked.
constexpr int maxNameLength = 256;

/// An empty name stays empty, so that the services refuse it.
QString nameOf(const std::string &client, const QString &name)
{
    return name.isEmpty()
               ? name
               : name + QLatin1String(" (") + QString::fromStdString(client) + QLatin1Char(')');
}
} // namespace

ServiceRequests::ServiceRequests(Clients &clients, const Inboxes &inboxes)
    : m_inboxes(inboxes)
{
    tavoConnect(&clients, &Clients::left, this, &ServiceRequests::on_clients_left);
}

QVariant ServiceRequests::adapted(const std::string &client, const CMPath &path,
                                  const QVariant &value)
{
    if (value.userType() != QMetaType::QVariantHash) {
        return value;
    }
    if (path == TavoPowerManagerModuleRegisterPath()) {
        return registration(client, value.toHash());
    }
    if (path == TavoPowerManagerResourceRequestPath()) {
        TavoPowerManagerResourceRequest request(value.toHash());
        return request.setModuleName(nameOf(client, request.moduleName())).__variant();
    }
    if (path == TavoPlayerMainAudioDuckingPath()) {
        return ducking(client, value.toHash());
    }
    return value;
}

QVariant ServiceRequests::registration(const std::string &client,
                                       TavoPowerManagerModuleRegister request) const
{
    for (const CMPath &target :
         {request.revokeResourcesPath(), request.postRevokeResourcesPath()}) {
        if (!target.isEmpty() && !m_inboxes.isOf(client, target)) {
            throw Refusals::notAnInboxOfTheCaller();
        }
    }
    return request.setModuleName(nameOf(client, request.moduleName())).__variant();
}

QVariant ServiceRequests::ducking(const std::string &client, TavoPlayerAudioDuckingRequest request)
{
    const QString name = nameOf(client, request.requester());
    if (name.size() <= maxNameLength) {
        std::set<QString> &known = m_requesters[client];
        if (!request.duckAudio()) {
            known.erase(name);
        } else if (known.insert(name).second && known.size() > maxRequesters) {
            known.erase(name);
            throw Refusals::clientHoldsTooMuch(maxRequesters, "requesters of ducking");
        }
    }
    return request.setRequester(name).__variant();
}

void ServiceRequests::on_clients_left(const std::string &client)
{
    const auto left = m_requesters.extract(client);
    if (left.empty()) {
        return;
    }
    for (const QString &name : left.mapped()) {
        CMRoot()->invoke(TavoPlayerMainAudioDuckingPath(),
                         TavoPlayerAudioDuckingRequest().setDuckAudio(false).setRequester(name),
                         {});
    }
}
