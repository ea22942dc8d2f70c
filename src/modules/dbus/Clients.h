// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DbusConfiguration.h"

#include <bus/BusHandles.h>

#include <QObject>

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <string>
#include <unordered_map>

class BusConnection;

/// The programs on the bus that have asked for something, by their unique names.
///
/// Thread and owner: its worker's. Every call that comes in goes through count(), so that a client
/// is known from its first call to its end.
class Clients : public QObject
{
    Q_OBJECT

public:
    Clients(BusConnection &bus, const DbusConfiguration::Limits &limits);

    const DbusConfiguration::Limits &limits() const { return m_limits; }

    /// Counts a call of the client's. Throws BusErrors::limitExceeded() for one too many.
    void count(const std::string &client);

    /// Throws BusErrors::limitExceeded() unless there is room for one more of what is named.
    static void checkRoom(int used, int most, const char *what);

Q_SIGNALS:
    /// A client has left the bus, or the bus has gone with all of them: what it had ends.
    void left(const std::string &client);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();

private:
    using Clock = std::chrono::steady_clock;

    /// What a client may still ask for, refilled with time.
    struct Allowance
    {
        double requests;
        Clock::time_point since;
    };

    void on_name_vanished(sdbus::Message &message);

    BusConnection &m_bus;
    const DbusConfiguration::Limits &m_limits;
    BusSlot m_vanished; ///< while connected
    std::unordered_map<std::string, Allowance> m_known;
};
