// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Clients.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <core/tavo/connect.h>

#include <algorithm>
#include <utility>

namespace {
/// Those who start with much to ask shall not have to wait.
constexpr double burstSeconds = 2;

/// One rule for all clients: the bus tells of every name that nobody has any more.
constexpr const char *vanishedRule =
    "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''";
} // namespace

Clients::Clients(BusConnection &bus, const DbusConfiguration::Limits &limits)
    : m_bus(bus)
    , m_limits(limits)
{
    tavoConnect(&m_bus, &BusConnection::connected, this, &Clients::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &Clients::on_bus_lost);
}

void Clients::count(const std::string &client)
{
    const double most = burstSeconds * m_limits.requestsPerSecond;
    const Clock::time_point now = Clock::now();
    Allowance &allowance = m_known.try_emplace(client, Allowance{most, now}).first->second;
    if (m_limits.requestsPerSecond == 0) {
        return;
    }
    const std::chrono::duration<double> elapsed = now - std::exchange(allowance.since, now);
    allowance.requests =
        std::min(most, allowance.requests + elapsed.count() * m_limits.requestsPerSecond);
    if (allowance.requests < 1) {
        throw BusErrors::limitExceeded("No more than " +
                                       std::to_string(m_limits.requestsPerSecond) +
                                       " requests a second are taken from a client");
    }
    allowance.requests -= 1;
}

void Clients::checkRoom(int used, int most, const char *what)
{
    if (used >= most) {
        throw BusErrors::limitExceeded("A client may have no more than " + std::to_string(most) +
                                       ' ' + what);
    }
}

void Clients::on_bus_connected()
{
    m_vanished = m_bus.addMatch(vanishedRule,
                                [this](sdbus::Message &message) { on_name_vanished(message); });
}

void Clients::on_bus_lost()
{
    m_vanished.reset();
    for (const auto &[client, allowance] : std::exchange(m_known, {})) {
        Q_EMIT left(client);
    }
}

void Clients::on_name_vanished(sdbus::Message &message)
{
    std::string name;
    message >> name;
    if (BusConnection::isFromBus(message) && m_known.erase(name) > 0) {
        Q_EMIT left(name);
    }
}
