// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/DbusConfiguration.h"
#include "PathHash.h"
#include "Quotas.h"
#include "SoundAccess.h"

#include <core/tavo.h>

#include <QObject>

#include <string>
#include <unordered_map>

class Clients;

/// The sounds that clients have enqueued, and those of their notifications, each from its request to
/// its end. All count, those of clients that have left too.
///
/// Thread and owner: its worker's. Each is watched by a node of its own, which hands its responses on
/// to where the client wants them. What loops ends with its client; the rest is heard to its end.
class ClientSounds : public QObject
{
    Q_OBJECT

public:
    ClientSounds(Clients &clients, CMNodes *nodes, const DbusConfiguration::Sounds &configuration);

    /// Sends a client's request for a sound on; the reply is the player's. Throws
    /// BusError::limitExceeded() for one too many, BusError::accessDenied() for a sound that
    /// clients may not have played, or a response path as checkTarget() does.
    CMReply<QVariant> enqueue(const std::string &client, const QVariant &value);

    /// Enqueues a sound on behalf of a client, who named its location or not. Throws
    /// BusError::limitExceeded() as enqueue() does.
    CMReply<QVariant> play(const std::string &client, const TavoNotificationPlayerItem &item);

    /// Sends a client's request for music on. Throws BusError::accessDenied() as enqueue() does.
    CMReply<QVariant> playMusic(const QVariant &value) const;

    /// Throws BusError::accessDenied() for a path where only the player reports: a client that did
    /// could have a sound forgotten that still plays.
    static void checkTarget(const CMPath &path);

private Q_SLOTS:
    void on_clients_left(const std::string &client);
    void on_player_nodeChanged(const CMPath &path, bool published);
    void on_sound_responded(const CMSetDataRequest &request);

private:
    struct Sound
    {
        Quotas::Charge charge;
        TavoNotificationPlayerItem item;
        CMActivateNode *node; ///< the node set's
    };

    CMReply<QVariant> send(const std::string &client, TavoNotificationPlayerItem item,
                           TavoValue wish);
    void checkAccess(TavoNotificationPlayerItem &item) const;
    QString allowed(const QString &location, SoundAccess::Kind kind) const;
    CMPath watch(const std::string &client, const TavoNotificationPlayerItem &item);
    void forget(const CMPath &path);

    Clients &m_clients;
    const SoundAccess m_access;
    CMNodes *m_nodes;
    std::unordered_map<CMPath, Sound, PathHash> m_sounds; ///< by their nodes
    quint64 m_lastNumber = 0;
};
