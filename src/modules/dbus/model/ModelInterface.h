// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Inboxes.h"
#include "ModelSignals.h"
#include "modules/dbus/clients/ClientAttention.h"
#include "modules/dbus/clients/ClientInhibitions.h"
#include "modules/dbus/clients/ClientMessages.h"
#include "modules/dbus/clients/ClientSounds.h"
#include "modules/dbus/clients/PendingCalls.h"
#include "ServiceRequests.h"
#include "Subscriptions.h"
#include <bus/BusObject.h>
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

class BusConnection;
class Clients;

/// org.tavo.Model1: the model as clients on the bus see it. data/dbus/org.tavo.Model1.xml says what
/// each method does.
///
/// Owned by the worker, used in its thread. Every call is answered, except those of clients that read
/// nothing (see Clients). Nothing waits for a module's reply.
class ModelInterface : public QObject
{
    Q_OBJECT

public:
    ModelInterface(BusConnection &bus, Clients &clients, CMNodes *nodes, ClientSounds &sounds,
                   ClientInhibitions &inhibitions);

    /// Closes the notification whose message the module for attention shows at the path; false if there is none.
    using CloseAttended = std::function<bool(const CMPath &message)>;
    void setCloseAttended(const CloseAttended &function) { m_closeAttended = function; }

Q_SIGNALS:
    /// A client has requested the display to close the message at the path.
    void messageCancelled(const CMPath &message);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();

private:
    void getValue(const BusMessage &call);
    void callNode(const BusMessage &call);
    void list(const BusMessage &call);
    void tree(const BusMessage &call);
    void describe(const BusMessage &call);
    void getRows(const BusMessage &call);
    void preview(const BusMessage &call);
    void matchRow(const BusMessage &call);
    void closeNode(const BusMessage &call);
    void subscribe(const BusMessage &call);
    void unsubscribe(const BusMessage &call);
    void openInbox(const BusMessage &call);
    void closeInbox(const BusMessage &call);

    /// Checks a message or a sound that a client requests: its texts, and who gets its responses. Throws BusError.
    void checkItem(const std::string &client, const QVariant &value) const;

    /// Sends a client's request to a node. The value has this many bytes.
    CMReply<QVariant> send(const std::string &client, const CMPath &path, const QVariant &value,
                           std::size_t bytes);
    CMReply<QVariant> cancelMessage(const QVariant &value);

    BusConnection &m_bus;
    Clients &m_clients;
    PendingCalls m_calls;
    ClientAttention m_attention;
    ClientMessages m_messages;
    Subscriptions m_subscriptions;
    Inboxes m_inboxes;
    ModelSignals m_signals;
    ServiceRequests m_services;
    ClientSounds &m_sounds;
    ClientInhibitions &m_inhibitions;
    CloseAttended m_closeAttended = [](const CMPath & /*message*/) { return false; };
    std::unique_ptr<BusObject> m_object; ///< while connected
};
