// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/PathHash.h"
#include "modules/dbus/clients/Quotas.h"

#include <core/tavo.h>

#include <QObject>

#include <string>
#include <unordered_map>

class Clients;

/// Nodes of clients', at which others' requests reach them: where responses to what a client started
/// go, for instance.
///
/// Thread and owner: its worker's. A request is answered at once, with an empty value. A client's
/// nodes go when it leaves.
class Inboxes : public QObject
{
    Q_OBJECT

public:
    Inboxes(Clients &clients, CMNodes *nodes);

    /// Publishes a node for the client. Throws BusError::limitExceeded() for one too many.
    CMPath open(const std::string &client);

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
        CMActivateNode *node; ///< the node set's
    };

    Clients &m_clients;
    CMNodes *m_nodes;
    std::unordered_map<CMPath, Inbox, PathHash> m_inboxes;
    quint64 m_lastNumber = 0; ///< no inbox ever has the path of another
};
