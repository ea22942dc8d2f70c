// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LeftMessages.h"
#include "PathHash.h"
#include "PathPlaces.h"
#include "Quotas.h"
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

class Clients;

/// The messages that clients show by requests to the display. Each counts from its request until it
/// leaves the display's queue, even after its client has left.
///
/// Owned by the worker, used in its thread. A message's node is made here and disposed of together
/// with the message. The display would make such a node, too, but never dispose of it.
class ClientMessages : public QObject
{
    Q_OBJECT

public:
    ClientMessages(Clients &clients, CMNodes *nodes);

    /// Passes on a client's request, whose value has this many bytes. Throws BusError::limitExceeded()
    /// when the client shows too much.
    CMReply<QVariant> open(const std::string &client, const QVariant &value, std::size_t bytes);

private Q_SLOTS:
    void on_display_ended(const CMPath &path, const QVariant &value);
    void on_queue_nodeChanged(const CMPath &path, bool published);

private:
    struct Message
    {
        TavoNotificationDisplayItem item; ///< as the display queues it, without the texts
        Quotas::Charge charge{};
        PathPlaces::Place place{};      ///< if the client named a node
        CMListRowsNode *node = nullptr; ///< owned by the node set; null if the client named a node
        std::optional<LeftMessages::Place> left{}; ///< once its client has left, until it gives way
        bool isClosing =
            false; ///< queued anew when the display has closed it, unless it is given up
        bool isGivenUp = false;
    };

    CMListRowsNode *createNode(const CMPath &path, const TavoNotificationDisplayItem &item);
    CMReply<QVariant> queue(quint32 number, Message message);

    /// Requests the display to close the message. It can only close all messages with the same path.
    void close(quint32 number);

    void takeLeft(quint32 number);

    /// Makes room for another client. The other messages of the same user with the same path go, too:
    /// to queue them all again for each one would take long.
    void giveUp(quint32 number);
    void forget(quint32 number);

    using Messages = std::map<quint32, Message>;
    Message remove(Messages::iterator message);

    Clients &m_clients;
    CMNodes *m_nodes;
    Messages m_messages;                                               ///< by number
    std::unordered_map<CMPath, std::set<quint32>, PathHash> m_numbers; ///< of messages, by path
    quint32 m_lastNumber = 0;
    bool m_isFollowing = false; ///< the ends that the display reports, while there are messages
};
