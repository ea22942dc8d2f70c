// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "RecentTime.h"

#include <cmath>

void RecentTime::add(Seconds more, Clock::time_point now)
{
    m_time = at(now) + more;
    m_until = now;
}

RecentTime::Seconds RecentTime::at(Clock::time_point now) const
{
    constexpr std::chrono::seconds halfLife(1);
    return m_time * std::exp2(-Seconds(now - m_until) / halfLife);
}
