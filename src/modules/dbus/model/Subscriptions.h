// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/Quotas.h"
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

class Clients;

/// The changes to which each client has subscribed. Subscribes to the model once for all clients that
/// want the same change.
///
/// Owned by ModelInterface, used in its thread. When a client leaves, its subscriptions end.
class Subscriptions : public QObject
{
    Q_OBJECT

public:
    using Change = CMAbstractWorker::ChangeType;
    using Names = std::vector<std::string>;

    explicit Subscriptions(Clients &clients);

    /// Does nothing when the client has the subscription already. Throws BusError::limitExceeded() when
    /// the client has too many.
    void add(const std::string &client, Change change, const CMPath &path);

    /// False when the client has no such subscription.
    bool remove(const std::string &client, Change change, const CMPath &path);

    /// Ends all subscriptions of a client. False when there are none.
    bool end(const std::string &client);

Q_SIGNALS:
    void valueChanged(const Subscriptions::Names &clients, const CMPath &path,
                      const QVariant &value);
    void rowsChanged(const Subscriptions::Names &clients, const CMPath &path,
                     const QStringList &changes, int first, int count);
    void nodeChanged(const Subscriptions::Names &clients, const CMPath &path, bool published);

private Q_SLOTS:
    void on_clients_left(const std::string &client);
    void on_model_valueChanged(const CMPath &path, const QVariant &value);
    void on_model_rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);
    void on_model_nodeChanged(const CMPath &path, bool published);

private:
    struct Subscription
    {
        Change change;
        CMPath path;

        bool operator==(const Subscription &other) const
        {
            return change == other.change && path == other.path;
        }
    };
    struct Hash
    {
        std::size_t operator()(const Subscription &subscription) const
        {
            return qHash(subscription.path) + std::size_t(subscription.change);
        }
    };

    void drop(const std::string &client, const Subscription &subscription);
    Names namesOf(const Subscription &subscription) const;
    void subscribe(const Subscription &subscription);
    void unsubscribe(const Subscription &subscription);

    Clients &m_clients;
    std::unordered_map<Subscription, Names, Hash> m_names;

    /// The same by client.
    std::unordered_map<std::string, std::unordered_map<Subscription, Quotas::Charge, Hash>> m_held;
};
