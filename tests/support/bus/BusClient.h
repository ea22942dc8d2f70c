// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusObjects.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A call over a bus, as its caller sees it. Copies share the same call.
class BusCall
{
public:
    /// Turns the event loop until the reply is there.
    bool waitForAnswer() const
    {
        return waitFor([this] { return isAnswered() || m_state->isLost; },
                       std::chrono::seconds(20)) &&
               isAnswered();
    }
    bool isAnswered() const { return m_state->reply.has_value(); }

    // These wait for the reply and return its value. A missing reply is an error.

    bool succeeds() const { return errorName().empty(); }
    std::string errorName() const;
    std::string errorMessage() const;

    /// The reply, even if it is an error. Throws if there is none yet.
    BusMessage reply() const { return m_state->reply.value(); }

    /// Reads the reply. Throws if there is none or if it is an error.
    BusReader reader() const;
    QVariant variant() const { return reader().readVariant(); }
    QString text() const { return reader().readString(); }

private:
    friend class BusClient;

    struct State
    {
        std::optional<BusMessage> reply;
        bool isLost = false; ///< the connection has ended
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

/// A client of a bus, in the test's thread, which may also serve the calls.
class BusClient
{
public:
    using Write = std::function<void(BusWriter &)>;

    /// Returns when the client is connected. Throws on error.
    explicit BusClient(const QString &address);
    ~BusClient();
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;

    std::string name() const { return m_connection->uniqueName(); }
    BusConnection &connection() { return *m_connection; }

    /// Takes a well-known name. Throws if another client has it.
    void takeName(const QString &name);
    void releaseName(const QString &name);

    /// Sets the object that is called.
    BusClient &setTarget(const std::string &service, const std::string &path,
                         const std::string &interface);

    // Calls get no reply if the bus ends or the client leaves.

    BusCall call(
        const std::string &method, const Write &write = [](BusWriter &) {});
    BusCall callBus(const char *method, const Write &write); ///< the bus itself
    BusMessage createCall(const std::string &method) const;
    BusCall send(const BusMessage &message);

    /// Sends a signal to one client, as if it came from the object.
    void sendSignal(const BusInterface &interface, const char *name, const std::string &receiver,
                    const Write &write);

    /// Serves the object until one of the two ends.
    void serve(BusObject &object);

    /// Handles signals until the client leaves the bus.
    void listen(const std::string &rule, const BusCalls::Handler &handler)
    {
        m_signals = m_connection->addMatch(rule, handler);
    }

    /// Leaves the bus at once, even with calls in flight.
    void leave();

private:
    void giveUp();

    std::unique_ptr<BusConnection> m_connection;
    QObject m_context; ///< of callbacks, until the client leaves the bus
    std::string m_service;
    std::string m_path;
    std::string m_interface;
    std::vector<std::weak_ptr<BusCall::State>> m_calls;
    BusSlot m_signals;
    BusObjects m_objects;
    BusSlot m_served;
};
