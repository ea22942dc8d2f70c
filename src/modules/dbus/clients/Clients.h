// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CallTurns.h"
#include "ClientLimits.h"
#include "LeftMessages.h"
#include "ModuleLoad.h"
#include "Outbox.h"
#include "PathPlaces.h"
#include "Quotas.h"
#include "UnreadBytes.h"
#include <bus/BusHandles.h>
#include <bus/BusMessage.h>
#include <bus/BusObject.h>
#include <bus/BusObjects.h>

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>

class BusConnection;
class BusError;

/// The programs on the bus that have sent calls, by their unique names.
///
/// Owned by the worker, used in its thread. Every call is counted before it is handled, so that a client
/// is known from its first call until it leaves. Replies and signals go through here, too, so that a
/// client that does not read can't stop the others.
class Clients : public QObject
{
    Q_OBJECT

public:
    Clients(BusConnection &bus, const ClientLimits &limits);

    const ClientLimits &limits() const { return m_limits; }
    void setLimits(const ClientLimits &limits);
    Quotas &quotas() { return m_quotas; }
    LeftMessages &leftMessages() { return m_leftMessages; }
    PathPlaces &pathPlaces() { return m_pathPlaces; }

    /// A client's user, for modules: the number, "unknown" if the client had left before the bus could tell it, or
    /// nothing for the host's own user, who is everybody on a session's bus.
    QString userOf(const std::string &client) const;

    /// Whether the client belongs to the user.
    bool isOfUser(const std::string &client, Quotas::UserId user) const;

    using Handler = std::function<void(const BusMessage &call)>;

    /// Lets a member function handle the calls of a method; it sends the reply or throws the error.
    /// A call is handled when it is the client's turn, as soon as it is known that the client reads its
    /// replies; otherwise it is refused. One whose reply is its only effect is ignored when no reply is
    /// wanted. The calls of one client are handled in their order.
    template <typename Receiver>
    void serve(BusObject &object, const char *method, Receiver *receiver,
               void (Receiver::*member)(const BusMessage &call), CallTurns::Effect effect)
    {
        serve(
            object, method,
            [receiver, member](const BusMessage &call) { (receiver->*member)(call); }, effect);
    }
    void serve(BusObject &object, const char *method, const Handler &handler,
               CallTurns::Effect effect);

    ModuleLoad &moduleLoad() { return m_moduleLoad; }

    /// A user has sent a request to the module for attention: see ModuleLoad. Without others nobody waits behind it.
    void addAttentionLoad(Quotas::UserId user, const CMReply<QVariant> &reply)
    {
        if (m_quotas.hasManyUsers()) {
            m_moduleLoad.addForAttention(user, reply);
        }
    }

    /// Serves an object whose methods are set.
    void publish(BusObject &object) { object.publish(m_objects); }

    /// Thrown by a handler that was set by serve() and has done nothing yet, because it must wait. It is
    /// called again after goOn(); the client's other calls are handled after that.
    struct NotYet
    {
    };

    /// False if no handler of the client waits.
    bool goOn(const std::string &client);

    /// Calls a handler at once. An exception is sent as the error reply.
    template <typename Handle>
    void run(const BusMessage &call, const Handle &handle)
    {
        run(call.sender(), call, handle);
    }
    template <typename Handle>
    void run(const std::string &client, const BusMessage &call, const Handle &handle)
    {
        m_turns.spend(client, [&] {
            try {
                handle(call);
            } catch (...) {
                refuseForCaught(call);
            }
        });
    }

    /// Sends the reply to a call that was carried out; its body has about this many bytes. If the client has
    /// left too much unread, or the bus is too busy for a large reply, sends an error that says so in its
    /// place, or nothing. Throws nothing.
    void reply(const BusMessage &call, const BusMessage &reply, std::size_t bytes);

    /// Sends a short reply to a call that is being handled. Throws nothing.
    void reply(const BusMessage &call, const BusMessage &reply);

    /// Sends a signal to one client, if it is still there; of a sealed one, a copy, which is made only when it
    /// is sent: many clients may want the same signal. False when the client has left too much unread.
    /// See Outbox::send() for the last argument.
    bool send(const std::string &client, const BusMessage &signal, std::size_t bytes,
              const Outbox::Instead &instead = {});

    /// Whether signals to the client come faster than the bus takes them, and other users may have caused them.
    /// Replies to the client wait behind its signals.
    bool isLate(const std::string &client) const
    {
        return m_outbox.isLate(client) && m_quotas.hasManyUsers();
    }

    /// Sends a signal to everyone, after what was sent to the client before.
    void sendToAll(const std::string &client, const BusMessage &signal, std::size_t bytes);

    /// Waits until the bus has taken everything, but no longer than the timeout.
    void flush(std::chrono::milliseconds timeout);

Q_SIGNALS:
    /// The bus has told which user a client is.
    void userKnown();

    /// A client has left the bus, or the bus itself has gone. Slots must release what the client held.
    void left(const std::string &client);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();
    void on_turns_left(const std::string &client);
    void on_memoryTimer_timeout();
    void on_checkTimer_timeout();

private:
    bool isReady(const std::string &client);
    void receive(const BusMessage &call);
    void askUser(const std::string &client);
    void add(const BusMessage &call, CallTurns::Method &method);
    void handle(const BusMessage &call, CallTurns::Method &method, const Handler &handler);
    void replyToStandardCall(const BusMessage &call);

    /// Runs the action, which sends about this many bytes, as soon as it is known that the client
    /// reads its replies. If it does not, makes the error and sends that.
    template <typename Action, typename Refusal>
    void whenReading(const BusMessage &call, std::size_t bytes, const Action &action,
                     const Refusal &refusal);

    void refuse(const BusMessage &call, const BusError &error);
    void refuseForCaught(const BusMessage &call);
    void forget(const std::string &client);
    void leave(const std::string &client);
    void takeNames(const BusMessage &reply);
    void on_name_vanished(const BusMessage &message);

    BusConnection &m_bus;
    ClientLimits m_limits;
    Quotas m_quotas;
    LeftMessages m_leftMessages;
    PathPlaces m_pathPlaces;
    ModuleLoad m_moduleLoad;
    CallTurns m_turns;
    Outbox m_outbox;
    UnreadBytes m_unread;
    BusObjects m_objects; ///< while connected
    CallTurns::Method m_standardMethod;
    std::unordered_set<std::string> m_asked;   ///< clients whose user the bus is to tell
    std::unordered_set<std::string> m_waiting; ///< clients of which a handler has thrown NotYet
    BusSlot m_calls;                           ///< while connected
    BusSlot m_vanished;                        ///< while connected
    QTimer m_memoryTimer;                      ///< runs after clients have left
    QTimer m_checkTimer;                       ///< runs after a client has called
};
