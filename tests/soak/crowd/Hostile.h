// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Connection.h"
#include "load/Dice.h"
#include "Setting.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

struct Attack;

/// A run of an attack, for the table.
struct Run
{
    const Attack *attack;
    std::chrono::steady_clock::time_point start;
    std::chrono::steady_clock::time_point end;
    long sent = 0;
    long answered = 0;
    long refused = 0; ///< of those answered
};

/// One member of the crowd: attacks as often as it can, each time over a new connection.
///
/// Lives in its own thread, which calls attack(). The other functions may be called from any thread.
class Hostile
{
public:
    using Clock = std::chrono::steady_clock;

    Hostile(const Setting &setting, int number, std::uint64_t seed);

    /// Runs an attack for some seconds, or until stop().
    void attack(const Attack &attack);

    void stop() { m_stopped = true; }
    bool isStopped() const { return m_stopped; }

    /// Ends a connection that is overdue because the bus does not take what it sends.
    void cutOverdue();

    /// All runs that have ended.
    std::vector<Run> runs() const;

    /// Violations that an attack has found, such as a reply to an outsider.
    std::vector<std::string> findings() const;

    // For attacks:

    bool goesOn() const { return !m_stopped && Clock::now() < m_end; }
    Dice &dice() { return m_dice; }
    const Setting &setting() const { return m_setting; }
    Connection &connection() { return *m_connections.front(); }

    /// Connects once more as the same user. The connection ends with the attack.
    Connection &connectAgain();

    /// A name that was never given before.
    std::string newName();

    template <typename... Arguments>
    void send(const Connection::Target &target, const char *method, const char *types,
              Arguments... arguments)
    {
        const BusMessage call = connection().createCall(target, method);
        append(call, types, arguments...);
        send(call);
    }
    void send(const BusMessage &call, bool wantsReply = true);
    void send(Connection &connection, const BusMessage &call, bool wantsReply = true);

    /// Reads replies, errors included, until this many have come or the attack's time is over.
    void readReplies(long count);
    /// Reads what is there.
    void read();
    /// Reads nothing until the attack's time is over.
    void readNothing() const;

    /// Sends a call and waits for its reply; nothing if it is an error or late.
    std::optional<BusMessage> ask(const BusMessage &call);

    void find(const std::string &finding);

private:
    void chooseUser(const Attack &attack);
    void count(const BusMessage &message);

    const Setting &m_setting;
    const int m_number;
    Dice m_dice;
    long m_lastName = 0;
    bool m_isOutsider = false;
    std::optional<BusUser> m_user; ///< of the attack that runs
    std::atomic<bool> m_stopped{false};
    Clock::time_point m_end; ///< of the attack that runs
    Run m_run;
    mutable std::mutex m_mutex; ///< protects what follows
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::optional<Clock::time_point> m_overdue; ///< when the connections are cut
    std::vector<Run> m_runs;
    std::vector<std::string> m_findings;
};
