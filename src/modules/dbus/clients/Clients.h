// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/DbusConfiguration.h"
#include "Quotas.h"
#include "UnreadBytes.h"

#include <bus/BusHandles.h>
#include <bus/BusMessage.h>
#include <bus/CallFilter.h>

#include <QObject>

#include <functional>
#include <memory>
#include <string>

class BusConnection;
class BusError;

/// The programs on the bus that have asked for something, by their unique names.
///
/// Thread and owner: its worker's. Every call that comes in is counted before anything answers it, so
/// that a client is known from its first call to its end. What is sent to clients goes through here
/// too, so that who reads nothing stops nobody.
class Clients : public QObject
{
    Q_OBJECT

public:
    Clients(BusConnection &bus, const DbusConfiguration::Limits &limits);

    const DbusConfiguration::Limits &limits() const { return m_limits; }
    Quotas &quotas() { return m_quotas; }

    using Handler = std::function<void(const BusMessage &call)>;

    /// Has a call handled, and answers what that throws: now, or when it is known that the client reads
    /// its answers. Calls of one client are handled in their order. Throws nothing.
    void handle(const BusMessage &call, const Handler &handler);

    /// Calls a handler at once; what it throws is sent as the error reply.
    void run(const BusMessage &call, const Handler &handler);

    /// Sends the answer to a call, of about so many bytes beside its head; or a refusal when too much
    /// of what the client was sent is unread. Throws nothing.
    void answer(const BusMessage &call, const BusMessage &answer, std::size_t bytes);

    /// Sends a signal to the client alone, if it is there; false when it reads too little for that.
    bool send(const std::string &client, const BusMessage &signal, std::size_t bytes);

Q_SIGNALS:
    /// A client has left the bus, or the bus has gone with all of them: what it had ends.
    void left(const std::string &client);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();

private:
    bool pass(const BusMessage &call);
    void refuse(const BusMessage &call, const BusError &error);
    void refuseUnread(const BusMessage &call, UnreadBytes::Verdict verdict);
    void forget(const std::string &client);
    void on_name_vanished(const BusMessage &message);

    BusConnection &m_bus;
    const DbusConfiguration::Limits &m_limits;
    Quotas m_quotas;
    UnreadBytes m_unread;
    std::unique_ptr<CallFilter> m_filter; ///< while connected
    BusSlot m_vanished;                   ///< while connected
};
