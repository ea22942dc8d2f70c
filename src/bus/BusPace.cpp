// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusPace.h"

#include "bus/BusConnection.h"
#include "bus/BusError.h"
#include <core/base/connect.h>

#include <algorithm>

namespace {
/// What dbus-daemon reads from a connection in a turn.
constexpr std::size_t bytesPerTurn = 1 << 12;

/// How long others may wait for one message.
constexpr std::chrono::milliseconds maxTime(300);

/// The longest of some turns counts: what is large waits for a short one, and long ones may follow.
constexpr int turnsPerMeasurement = 4;

/// If one of them is as short as this, the bus has little else to do, and reads faster than the others tell:
/// they are mostly the time until it and this thread get the processor.
constexpr std::chrono::milliseconds quickTurn(1);

/// After one as long as this, no other is measured: a message that still fits would wait too long.
constexpr std::chrono::milliseconds longTurn(50);

/// How long a measurement holds.
constexpr std::chrono::milliseconds validity(100);

constexpr std::chrono::seconds timeout(25);

constexpr const char *busName = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";
} // namespace

BusPace::BusPace(BusConnection &bus)
    : m_bus(bus)
{
    tavoConnect(&m_bus, &BusConnection::lost, this, &BusPace::on_bus_lost);
}

bool BusPace::allows(std::size_t bytes)
{
    if (bytes <= bytesPerTurn || isEnough(bytes)) {
        return true;
    }
    measure();
    return false;
}

bool BusPace::isEnough(std::size_t bytes) const
{
    return Clock::now() - m_measured < validity &&
           (m_turn <= quickTurn || m_turn * (bytes / bytesPerTurn) <= maxTime);
}

void BusPace::measure()
{
    if (m_turnsLeft > 0) {
        return;
    }
    // The first reply may come in the middle of a turn, each further one comes a turn later.
    m_turnsLeft = turnsPerMeasurement + 1;
    m_shortest = Clock::duration::max();
    m_longest = {};
    beginTurn();
}

void BusPace::beginTurn()
{
    m_begun = Clock::now();
    try {
        m_bus.send(m_bus.createCall(busName, busPath, busName, "GetId"), timeout,
                   [this](const BusMessage &) { on_bus_replied(); });
    } catch (const BusError &) {
        m_turnsLeft = 0; // The bus has gone.
    }
}

void BusPace::on_bus_replied()
{
    if (m_turnsLeft <= turnsPerMeasurement) {
        const Clock::duration turn = Clock::now() - m_begun;
        m_shortest = std::min(m_shortest, turn);
        m_longest = std::max(m_longest, turn);
    }
    if (--m_turnsLeft > 0 && m_longest < longTurn) {
        beginTurn();
        return;
    }
    m_turnsLeft = 0;
    m_measured = Clock::now();
    m_turn = m_shortest <= quickTurn && m_longest < longTurn ? m_shortest : m_longest;
    Q_EMIT changed();
}

void BusPace::on_bus_lost()
{
    m_turnsLeft = 0;
    m_measured = {};
}
