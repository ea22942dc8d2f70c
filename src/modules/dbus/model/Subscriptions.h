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

/// Which client wants to know of which changes. The model is asked once for all that want the same.
///
/// Thread and owner: its worker's. A client's subscriptions end when it leaves.
class Subscriptions : public QObject
{
    Q_OBJECT

public:
    using Change = CMAbstractWorker::ChangeType;
    using Names = std::vector<std::string>;

    explicit Subscriptions(Clients &clients);

    /// One more is no other: a client is told of each change once. Throws
    /// BusError::limitExceeded() for one too many.
    void add(const std::string &client, Change change, const CMPath &path);

    /// False when there is none.
    bool remove(const std::string &client, Change change, const CMPath &path);

    /// Ends all of a client's; false when there are none.
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

    /// The same the other way round.
    std::unordered_map<std::string, std::unordered_map<Subscription, Quotas::Charge, Hash>> m_held;
};
