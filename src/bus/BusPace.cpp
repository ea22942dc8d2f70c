// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusPace.h"

#include "bus/BusConnection.h"
#include "bus/BusError.h"
#include <core/base/connect.h>

namespace {
/// What dbus-daemon reads from a connection in a turn.
constexpr std::size_t bytesPerTurn = 1 << 12;

/// How long others may wait for one message.
constexpr std::chrono::milliseconds maxTime(400);

/// A bus that has little else to do reads faster than its turns tell: they are mostly the time until it
/// and this thread get the processor.
constexpr std::chrono::milliseconds quickTurn(3);

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
    if (m_isMeasuring) {
        return;
    }
    try {
        // The first reply may come in the middle of a turn, the second one comes a turn later.
        call(&BusPace::on_turn_begun);
        m_isMeasuring = true;
    } catch (const BusError &) {
        // The bus has gone.
    }
}

void BusPace::call(void (BusPace::*handler)())
{
    m_bus.send(m_bus.createCall(busName, busPath, busName, "GetId"), timeout,
               [this, handler](const BusMessage &) { (this->*handler)(); });
}

void BusPace::on_turn_begun()
{
    m_begun = Clock::now();
    call(&BusPace::on_turn_ended);
}

void BusPace::on_turn_ended()
{
    m_isMeasuring = false;
    m_measured = Clock::now();
    m_turn = m_measured - m_begun;
    Q_EMIT changed();
}

void BusPace::on_bus_lost()
{
    m_isMeasuring = false;
    m_measured = {};
}
