// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Inboxes.h"
#include <core/tavo.h>

#include <QObject>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <unordered_map>

class Clients;

/// Adapts what clients request of the power manager and of the player's ducking. These services know a
/// module by the name in the request, so a client could use the name of any module. Here, each client has
/// its own names: "alarm" becomes "alarm (:1.42)".
///
/// Owned by ModelInterface, used in its thread. When a client leaves, its ducking ends.
class ServiceRequests : public QObject
{
    Q_OBJECT

public:
    ServiceRequests(Clients &clients, const Inboxes &inboxes);

    /// Sends the client's value to the path, or another value instead. Throws BusError::accessDenied() for a
    /// registration whose messages would not go to the client, and BusError::limitExceeded() when the
    /// client, its user or all clients would have too many requesters of ducking or registrations.
    CMReply<QVariant> send(const std::string &client, const CMPath &path, const QVariant &value);

private Q_SLOTS:
    void on_clients_left(const std::string &client);

private:
    using Names = std::unordered_map<std::string, std::set<QString>>; ///< of each client

    /// A registration that the power manager has not answered yet.
    struct Registration
    {
        std::string client;
        Inboxes::Node revokeNode;
    };

    QVariant adapted(const std::string &client, const CMPath &path, const QVariant &value);
    CMReply<QVariant> registerModule(const std::string &client,
                                     TavoPowerManagerModuleRegister request);
    void registrationAnswered(std::uint64_t number);
    bool isRegistering(const std::string &client) const;
    QVariant ducking(const std::string &client, TavoPlayerAudioDuckingRequest request);

    void add(Names &names, const std::string &client, const QString &name, const char *what);

    Clients &m_clients;
    const Inboxes &m_inboxes;

    Names m_requesters; ///< for which it ducks
    Names m_modules;    ///< that it has registered
    std::map<std::uint64_t, Registration> m_registrations;
    std::uint64_t m_lastRegistration = 0;
};
