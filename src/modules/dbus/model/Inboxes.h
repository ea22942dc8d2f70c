// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/PathHash.h"
#include "modules/dbus/clients/Quotas.h"
#include <core/tavo.h>

#include <QObject>

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Clients;

/// Nodes that clients have opened in the model to receive requests, such as the responses to a sound
/// that they started.
///
/// Owned by ModelInterface, used in its thread. Each request is answered at once, with an empty value.
/// When a client leaves, its inboxes are closed.
class Inboxes : public QObject
{
    Q_OBJECT

public:
    Inboxes(Clients &clients, CMNodes *nodes);

    /// Publishes a node for the client. Throws BusError::limitExceeded() when the client has too many.
    CMPath open(const std::string &client);

    bool has(const CMPath &path) const { return m_inboxes.count(path) > 0; }
    bool isOf(const std::string &client, const CMPath &path) const;

    /// The node of an inbox that is open. It stays until nobody holds it any more and the inbox is closed.
    using Node = std::shared_ptr<CMActivateNode>;
    Node nodeOf(const CMPath &path) const { return m_inboxes.at(path).node; }

    /// Throws BusError::invalidArguments() if responses to the client's requests must not go to the path: to an inbox
    /// of another user, or one that is not open yet, or to an action of a message. They would count as unread by
    /// somebody else.
    void checkReceiver(const std::string &client, const CMPath &path) const;

    /// Counts a request that takes about this many bytes, if it is to an inbox of another user or to an action of a
    /// message. Throws BusError::limitExceeded() if the client's user sends too much: others would not find their own
    /// messages among what reaches them.
    void admit(const std::string &client, const CMPath &path, std::size_t bytes);

    /// False when the client has no inbox at the path.
    bool close(const std::string &client, const CMPath &path);

Q_SIGNALS:
    void received(const std::string &client, const CMPath &inbox, const QVariant &value);

private Q_SLOTS:
    void on_clients_left(const std::string &client);
    void on_inbox_activated(const CMSetDataRequest &request);

private:
    struct Inbox
    {
        Quotas::Charge charge;
        Node node;
    };

    using Clock = std::chrono::steady_clock;

    /// What a user may send to others.
    struct Budget
    {
        double bytes;
        Clock::time_point refilled;
    };

    Clients &m_clients;
    CMNodes *m_nodes;
    std::unordered_map<CMPath, Inbox, PathHash> m_inboxes;
    std::unordered_map<std::string, std::vector<CMPath>> m_paths; ///< by client; none is empty
    quint64 m_lastNumber = 0;                                     ///< paths are never used again
    std::map<Quotas::UserId, Budget> m_budgets;
};
