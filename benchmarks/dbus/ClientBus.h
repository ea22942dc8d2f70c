// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Ends the process with the reason if an sd-bus function failed.
int checked(int result);

/// A connection to the session bus, and the measured calls.
class ClientBus
{
public:
    using Milliseconds = std::chrono::duration<double, std::milli>;

    ClientBus();
    ~ClientBus();
    ClientBus(const ClientBus &) = delete;
    ClientBus &operator=(const ClientBus &) = delete;

    sd_bus *bus() const { return m_bus; }

    /// Opens a notification that stays open, and returns its id.
    std::uint32_t notify(const std::string &body);

    /// Opens `count` notifications without waiting for each reply, or fewer if the time runs out.
    /// Appends their ids.
    void notifyMany(std::size_t count, Milliseconds timeout, std::vector<std::uint32_t> &ids);

    void close(std::uint32_t id);

    /// Closes notifications without waiting for each reply.
    void closeMany(const std::vector<std::uint32_t> &ids);

    /// Waits for the server's reply to Ping.
    void ping();

private:
    using Answered = std::function<void(sd_bus_message *reply)>;

    sd_bus_message *newCall(const char *member) const;
    sd_bus_message *notifyCall(const std::string &body) const;
    sd_bus_message *closeCall(std::uint32_t id) const;
    sd_bus_message *call(sd_bus_message *message) const;
    void send(sd_bus_message *message);
    void turnUntilFewerThan(std::size_t awaited);
    static int on_answered(sd_bus_message *reply, void *data, sd_bus_error *error);

    sd_bus *m_bus = nullptr;
    std::size_t m_awaited = 0; ///< calls without a reply so far
    Answered m_answered;
};
