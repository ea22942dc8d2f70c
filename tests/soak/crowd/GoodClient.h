// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Connection.h"
#include "Setting.h"

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A well-behaved client that measures how long it waits, in two threads of its own with a connection each.
/// Its functions are called from the thread that made it.
class GoodClient
{
public:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;

    /// What it waits for.
    enum Kind { Machine, Bus, Value, Message, Close, Alarm };
    static constexpr const char *names[] = {
        "a pause of its own",  "a reply of the bus itself",      "the reply to GetValue",
        "the reply to Notify", "the reply to CloseNotification", "an urgent sound to start"};
    static constexpr int kinds = Alarm + 1;

    struct Wait
    {
        Kind kind;
        Clock::time_point start;
        Clock::time_point end;
        std::string failure{}; ///< empty if it got what it waited for

        Milliseconds duration() const
        {
            return std::chrono::duration_cast<Milliseconds>(end - start);
        }
    };

    explicit GoodClient(const Setting &setting);
    ~GoodClient();

    /// Ends both threads.
    void stop();

    /// All waits. Those that are not over yet end now.
    std::vector<Wait> waits() const;

private:
    class Timed;

    void keepGoing(void (GoodClient::*measure)(Connection &));
    void measureCalls(Connection &connection);
    void measureSounds(Connection &connection);
    void measureSound(Connection &connection, const std::string &inbox);

    const Setting &m_setting;
    std::atomic<bool> m_stopped{false};
    mutable std::mutex m_mutex; ///< protects what follows
    std::vector<Wait> m_waits;
    std::map<Kind, Clock::time_point> m_waiting;
    std::thread m_calls;
    std::thread m_sounds;
};
