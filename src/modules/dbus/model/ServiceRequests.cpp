// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ServiceRequests.h"

#include "modules/dbus/clients/Clients.h"
#include "modules/dbus/clients/Refusals.h"

#include <algorithm>

namespace {
// Of requesters of ducking, and of registrations. The player and the power manager accept 256 of all clients and
// modules together.
constexpr std::size_t maxOfClient = 16;
constexpr std::size_t maxOfAll = 224;

/// A quarter of what other users leave, so that it takes eighteen users to leave nothing.
constexpr std::size_t maxOfUser(std::size_t ofOthers)
{
    constexpr std::size_t part = 4;
    return (maxOfAll - ofOthers + part - 1) / part;
}

/// In characters. The state of the power manager has each name up to five times, and must fit into a message.
constexpr int maxNameLength = 64;

/// An empty name stays empty, so that the services refuse it.
QString nameOf(const std::string &client, const QString &name)
{
    if (name.size() > maxNameLength) {
        throw Refusals::textTooLong("name of a module or requester", maxNameLength);
    }
    return name.isEmpty()
               ? name
               : name + QLatin1String(" (") + QString::fromStdString(client) + QLatin1Char(')');
}
} // namespace

ServiceRequests::ServiceRequests(Clients &clients, const Inboxes &inboxes)
    : m_clients(clients)
    , m_inboxes(inboxes)
{
    tavoConnect(&clients, &Clients::left, this, &ServiceRequests::on_clients_left);
}

CMReply<QVariant> ServiceRequests::send(const std::string &client, const CMPath &path,
                                        const QVariant &value)
{
    if (path == TavoPowerManagerModuleRegisterPath() &&
        value.userType() == QMetaType::QVariantHash) {
        return registerModule(client, value.toHash());
    }
    return CMRoot()->invoke(path, adapted(client, path, value), {});
}

QVariant ServiceRequests::adapted(const std::string &client, const CMPath &path,
                                  const QVariant &value)
{
    if (value.userType() != QMetaType::QVariantHash) {
        return value;
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

CMReply<QVariant> ServiceRequests::registerModule(const std::string &client,
                                                  TavoPowerManagerModuleRegister request)
{
    for (const CMPath &target :
         {request.revokeResourcesPath(), request.postRevokeResourcesPath()}) {
        if (!target.isEmpty() && !m_inboxes.isOf(client, target)) {
            throw Refusals::notAnInboxOfTheCaller();
        }
    }
    const QString name = nameOf(client, request.moduleName());
    add(m_modules, client, name, "registrations");
    const CMPath target = request.revokeResourcesPath();
    const std::uint64_t number = ++m_lastRegistration;
    // The power manager forgets a module whose node goes. One that had gone before would stay for good.
    m_registrations[number] = {client, target.isEmpty() ? nullptr : m_inboxes.nodeOf(target)};
    CMReply<QVariant> reply = CMRoot()->invoke(TavoPowerManagerModuleRegisterPath(),
                                               request.setModuleName(name).__variant(), {});
    reply.onFinished(this, [this, number](const CMReply<QVariant> & /*finished*/) {
        registrationAnswered(number);
    });
    return reply;
}

void ServiceRequests::registrationAnswered(std::uint64_t number)
{
    const std::string client = m_registrations.extract(number).mapped().client;
    if (!m_clients.quotas().knows(client) && !isRegistering(client)) {
        m_modules.erase(client);
    }
}

bool ServiceRequests::isRegistering(const std::string &client) const
{
    return std::any_of(m_registrations.begin(), m_registrations.end(),
                       [&client](const auto &entry) { return entry.second.client == client; });
}

QVariant ServiceRequests::ducking(const std::string &client, TavoPlayerAudioDuckingRequest request)
{
    const QString name = nameOf(client, request.requester());
    if (request.duckAudio()) {
        add(m_requesters, client, name, "requesters of ducking");
    } else if (const auto known = m_requesters.find(client); known != m_requesters.end()) {
        known->second.erase(name);
    }
    return request.setRequester(name).__variant();
}

void ServiceRequests::add(Names &names, const std::string &client, const QString &name,
                          const char *what)
{
    if (!names[client].insert(name).second) {
        return;
    }
    const Quotas &quotas = m_clients.quotas();
    std::size_t ofUser = 0;
    std::size_t ofAll = 0;
    for (const auto &[other, known] : names) {
        ofAll += known.size();
        ofUser += quotas.userOf(other) == quotas.userOf(client) ? known.size() : 0;
    }
    const std::size_t ofClient = names[client].size();
    const std::size_t mostOfUser = maxOfUser(ofAll - ofUser);
    if (ofClient <= maxOfClient && ofUser <= mostOfUser) {
        return;
    }
    names[client].erase(name);
    if (ofClient > maxOfClient) {
        throw Refusals::clientHoldsTooMuch(maxOfClient, what);
    }
    throw ofAll > maxOfAll ? Refusals::allClientsHoldTooMuch(maxOfAll, what)
                           : Refusals::userHoldsTooMuch(mostOfUser, what);
}

void ServiceRequests::on_clients_left(const std::string &client)
{
    if (!isRegistering(client)) {
        m_modules.erase(client);
    }
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
