// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QObject>

#include <set>
#include <string>
#include <unordered_map>

class Clients;
class Inboxes;

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

    /// The value to send to the path instead of the client's. Throws BusError::accessDenied() for a
    /// registration whose messages would not go to the client, and BusError::limitExceeded() when the
    /// client ducks for too many requesters.
    QVariant adapted(const std::string &client, const CMPath &path, const QVariant &value);

private Q_SLOTS:
    void on_clients_left(const std::string &client);

private:
    QVariant registration(const std::string &client, TavoPowerManagerModuleRegister request) const;
    QVariant ducking(const std::string &client, TavoPlayerAudioDuckingRequest request);

    const Inboxes &m_inboxes;

    /// The names for which each client ducks.
    std::unordered_map<std::string, std::set<QString>> m_requesters;
};
