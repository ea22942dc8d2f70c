// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LeftMessages.h"
#include "PathPlaces.h"
#include "Quotas.h"
#include "SlowRequests.h"
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <map>
#include <string>

class Clients;
class ClientSounds;

/// The notifications that clients request of the module for attention. Each counts from its request until
/// it ends, even after its client has left; its sound counts as one of the client's sounds.
///
/// Owned by the worker, used in its thread.
class ClientAttention : public QObject
{
    Q_OBJECT

public:
    ClientAttention(Clients &clients, ClientSounds &sounds);

    /// Passes on a client's request to notify people, whose value has this many bytes. Throws
    /// BusError::limitExceeded() when the client holds too much, and BusError::accessDenied() for a sound
    /// that is not allowed; nothing has been done then.
    CMReply<QVariant> notify(const std::string &client, const QVariant &value, std::size_t bytes);

    /// The same for a request to change a notification, which is this client's from now on. Throws
    /// BusError::accessDenied() for another user's.
    CMReply<QVariant> replace(const std::string &client, const QVariant &value, std::size_t bytes);

    /// Passes on a request to end a notification. Clients can't say how it ended.
    static CMReply<QVariant> close(const QVariant &value);

    /// Passes on a request for a page of the history, after those of the same user. Throws
    /// BusError::limitExceeded() while the client waits for another one: pages are large.
    CMReply<QVariant> readHistory(const std::string &client, const QVariant &value);

private Q_SLOTS:
    void on_attention_ended(const CMPath &path, const QVariant &value);
    void on_attention_nodeChanged(const CMPath &path, bool published);

private:
    struct Notification
    {
        TavoAttentionItem item; ///< without its sound
        Quotas::Charge charge;
        PathPlaces::Place place{};
        LeftMessages::Place left{}; ///< once its client has left
    };

    /// The request without unknown fields and without its sound.
    TavoAttentionItem itemOf(const std::string &client, const QVariant &value) const;

    /// Sends the item, and after it its sound, if it has one.
    CMReply<QVariant> send(const CMPath &path, const TavoAttentionItem &item,
                           const CMPath &preparedSound);
    PathPlaces::Place placeFor(const std::string &client, const TavoAttentionItem &item) const;
    Quotas::Charge chargeFor(const std::string &client, const TavoAttentionItem &item,
                             std::size_t bytes);
    void forgetIfRefused(const std::string &id, const CMReply<QVariant> &reply);
    CMPath prepareSound(const std::string &client, const QVariant &value, std::size_t bytes,
                        const QString &notification);
    void takeLeft(const std::string &id);
    void giveWay(const QString &id);

    Clients &m_clients;
    ClientSounds &m_sounds;
    std::map<std::string, Notification>
        m_notifications;  ///< by id, which might be chosen to have equal hashes
    SlowRequests m_pages; ///< of the history
};
