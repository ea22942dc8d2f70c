// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Inboxes.h"
#include "modules/dbus/clients/ClientSounds.h"
#include "modules/dbus/clients/PendingCalls.h"
#include "Subscriptions.h"

#include <bus/BusObject.h>
#include <core/tavo.h>

#include <QObject>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class BusConnection;
class BusWriter;
class Clients;

/// org.tavo.Model1: the model as clients on the bus see it. data/dbus/org.tavo.Model1.xml says what
/// each method does.
///
/// Thread and owner: its worker's. Every call is answered, but for those of clients that
/// read nothing (see Clients), and nothing waits for a module to do so.
class ModelInterface : public QObject
{
    Q_OBJECT

public:
    ModelInterface(BusConnection &bus, Clients &clients, CMNodes *nodes, ClientSounds &sounds);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();
    void on_subscriptions_valueChanged(const Subscriptions::Names &clients, const CMPath &path,
                                       const QVariant &value);
    void on_subscriptions_rowsChanged(const Subscriptions::Names &clients, const CMPath &path,
                                      const QStringList &changes, int first, int count);
    void on_subscriptions_nodeChanged(const Subscriptions::Names &clients, const CMPath &path,
                                      bool published);
    void on_inboxes_received(const std::string &client, const CMPath &inbox, const QVariant &value);

private:
    using Handler = void (ModelInterface::*)(const BusMessage &call);

    void add(const char *method, Handler handler);

    void getValue(const BusMessage &call);
    void callNode(const BusMessage &call);
    void list(const BusMessage &call);
    void tree(const BusMessage &call);
    void getRows(const BusMessage &call);
    void matchRow(const BusMessage &call);
    void closeNode(const BusMessage &call);
    void subscribe(const BusMessage &call);
    void unsubscribe(const BusMessage &call);
    void openInbox(const BusMessage &call);
    void closeInbox(const BusMessage &call);

    /// Sends a client's request into the model.
    CMReply<QVariant> send(const std::string &client, const CMPath &path, const QVariant &value);

    /// Sends a signal that the function writes to each of the clients.
    void emitTo(const char *signal, const Subscriptions::Names &clients,
                const std::function<void(BusWriter &)> &write);

    BusConnection &m_bus;
    Clients &m_clients;
    PendingCalls m_calls;
    Subscriptions m_subscriptions;
    Inboxes m_inboxes;
    ClientSounds &m_sounds;
    std::unique_ptr<BusObject> m_object; ///< while connected
};
