// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/ServedConnection.h"
#include "support/EventLoop.h"

#include <bus/BusVariant.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// A call on its way over a bus, as its caller sees it. Copies share. Goes before its client does.
class BusCall
{
public:
    /// Turns the event loop until the answer is there.
    bool waitForAnswer() const
    {
        return waitFor([this] { return isAnswered(); }, std::chrono::seconds(20));
    }
    bool isAnswered() const { return m_state->answer || m_state->error; }

    /// These wait, and give what the answer says; an answer that doesn't come is an error.
    bool succeeds() const { return errorName().empty(); }
    std::string errorName() const;
    std::string errorMessage() const;

    /// The answer's next value, a variant or a text.
    QVariant variant() const { return BusVariant::read(answer()); }
    QString text() const { return BusVariant::readText(answer()); }

    /// The answer itself, to be read once. Throws when there is none or it is an error.
    sdbus::MethodReply &answer() const;

private:
    friend class BusClient;

    struct State
    {
        std::optional<sdbus::MethodReply> answer; ///< must not outlive its connection
        std::optional<sdbus::Error> error;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

/// A program on a bus, in the test's own thread: what it calls may be served there too. What it waits
/// for when it is thrown off the bus is an error.
class BusClient
{
public:
    using Append = std::function<void(sdbus::MethodCall &call)>;

    explicit BusClient(const QString &address);

    /// The unique name.
    std::string name() { return connection().getUniqueName(); }
    sdbus::IConnection &connection() { return m_bus->connection(); }

    /// The object that is called.
    BusClient &setTarget(const std::string &service, const std::string &object,
                         const std::string &interface);

    BusCall call(
        const std::string &method, const Append &append = [](sdbus::MethodCall &) {});

    /// Has signals handled as long as the client is on the bus.
    void listen(const std::string &rule, const std::function<void(sdbus::Message &)> &handle)
    {
        m_signals = connection().addMatch(rule, handle);
    }

    /// Leaves the bus at once, whatever is under way.
    void leave();

private:
    void giveUp();

    std::unique_ptr<ServedConnection> m_bus;
    std::string m_interface;
    std::unique_ptr<sdbus::IProxy> m_target;
    sdbus::Slot m_signals;
};
