// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>

#include <chrono>
#include <cstddef>

class BusConnection;

/// Measures how fast the bus reads. It reads a little from each connection in turn. While many others keep
/// it busy, it takes seconds for a large message, and all that is sent later waits for that.
///
/// Lives in the connection's thread.
class BusPace : public QObject
{
    Q_OBJECT

public:
    explicit BusPace(BusConnection &bus);

    /// Whether the bus can read a message of this many bytes soon. Always true for what it reads in one
    /// turn. After false, changed() follows.
    bool allows(std::size_t bytes);

Q_SIGNALS:
    /// The pace has been measured again.
    void changed();

private Q_SLOTS:
    void on_bus_lost();

private:
    using Clock = std::chrono::steady_clock;

    bool isEnough(std::size_t bytes) const;
    void measure();
    void beginTurn();
    void on_bus_replied();

    BusConnection &m_bus;
    int m_turnsLeft = 0;          ///< to measure
    Clock::time_point m_begun;    ///< the turn that is being measured
    Clock::duration m_shortest{}; ///< of the turns of this measurement
    Clock::duration m_longest{};  ///< of them, too
    Clock::time_point m_measured; ///< when m_turn was measured
    Clock::duration m_turn{};
};
