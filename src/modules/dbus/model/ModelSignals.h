// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/PathHash.h"
#include "Subscriptions.h"
#include <bus/BusMessage.h>
#include <core/tavo.h>

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>

class BusObject;
class BusWriter;
class Clients;
class Inboxes;

/// Sends the signals of org.tavo.Model1, each to the clients that want it. Signals that a client leaves no
/// room for are left out, and counted: it is told how many, by path, as soon as it reads again, and before
/// any further signal of that path.
///
/// Owned by ModelInterface, used in its thread.
class ModelSignals : public QObject
{
    Q_OBJECT

public:
    ModelSignals(Clients &clients, const Subscriptions &subscriptions, const Inboxes &inboxes);

    /// The object that sends the signals; null while there is no bus.
    void setObject(const BusObject *object);

private Q_SLOTS:
    void on_timer_timeout();
    void on_clients_left(const std::string &client);
    void on_subscriptions_valueChanged(const Subscriptions::Names &clients, const CMPath &path,
                                       const QVariant &value);
    void on_subscriptions_rowsChanged(const Subscriptions::Names &clients, const CMPath &path,
                                      const QStringList &changes, int first, int count);
    void on_subscriptions_nodeChanged(const Subscriptions::Names &clients, const CMPath &path,
                                      bool published);
    void on_inboxes_received(const std::string &client, const CMPath &inbox, const QVariant &value);

private:
    using Write = std::function<void(BusWriter &)>;
    using Counts = std::unordered_map<CMPath, quint32, PathHash>;

    /// Sends the path, and what the function writes after it. Changes are left out while they come faster than
    /// the bus takes them.
    void emitTo(const char *signal, const Subscriptions::Names &clients, const CMPath &path,
                const Write &write, bool isChange = true);
    void send(const std::string &client, const CMPath &path, const BusMessage &signal,
              std::size_t bytes);
    bool hasDropped(const std::string &client, const CMPath &path) const;
    bool drop(const std::string &client, const CMPath &path);

    BusMessage createDropped(const CMPath &path, quint32 count) const;
    void reportDropped(const std::string &client, Counts &counts);

    Clients &m_clients;
    const BusObject *m_object = nullptr;
    std::unordered_map<std::string, Counts>
        m_dropped;  ///< until nothing was left out for an interval
    QTimer m_timer; ///< runs while there are any
};
