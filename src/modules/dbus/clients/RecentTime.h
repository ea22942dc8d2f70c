// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>

/// How long something took of late: half of it is forgotten in a second.
class RecentTime
{
public:
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;

    void add(Seconds more, Clock::time_point now);
    Seconds at(Clock::time_point now) const;

private:
    Seconds m_time{0};
    Clock::time_point m_until;
};
