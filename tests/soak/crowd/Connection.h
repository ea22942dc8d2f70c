// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/BusUser.h"
#include <bus/BusHandles.h>
#include <bus/BusMessage.h>

#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A client's connection to the bus, for programs that do without an event loop. Nothing is read unless a
/// function says so.
///
/// Used by one thread, except for cut(). Throws ConnectionLost when the connection has ended.
class Connection
{
public:
    using Handler = std::function<void(const BusMessage &)>;

    /// What the host offers, and the bus itself.
    struct Target
    {
        const char *service;
        const char *path;
        const char *interface;
    };
    static const Target model;
    static const Target desktop;
    static const Target bus;

    /// Connects as the user; as this process's user without one.
    Connection(const QString &address, const std::optional<BusUser> &user);

    BusMessage createCall(const Target &target, const char *method) const;

    /// Sends a message and waits until the bus has taken it.
    void send(const BusMessage &message, bool wantsReply = true);

    /// Sends a call and waits for its reply, which may be an error. Returns nothing if it does not
    /// come in time. Other messages that come first go to the handler.
    std::optional<BusMessage> call(
        const BusMessage &message, std::chrono::milliseconds timeout,
        const Handler &others = [](const BusMessage &) {});

    /// Passes incoming messages to the handler for this long.
    void read(std::chrono::milliseconds duration, const Handler &handler);

    /// Ends the connection, so that another thread that uses it does not wait any longer.
    void cut();

private:
    using Clock = std::chrono::steady_clock;

    /// Waits until there is something to read or write.
    void waitUntil(Clock::time_point end);

    /// Reads one message and hands it over. False if there is none.
    bool readOne(const Handler &handler);

    BusHandle m_bus;
    int m_descriptor = -1;
};

/// The bus has ended the connection, or cut() has.
struct ConnectionLost
{
};

/// Writes arguments as sd_bus_message_append() takes them.
template <typename... Arguments>
void append(const BusMessage &message, const char *types, Arguments... arguments)
{
    if (sd_bus_message_append(message.get(), types, arguments...) < 0) {
        throw ConnectionLost();
    }
}
